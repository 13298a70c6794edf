#include "ado/Recordset.h"

#include "core/Error.h"
#include "core/Text.h"

namespace kitra::ado {
namespace {
// The descriptions the host's data layer gives for these two mistakes.
Error NoCurrentRecord() {
    return Error(
        "Either BOF or EOF is True, or the current record has been deleted. Requested operation "
        "requires a current record.",
        3021);
}
Error ItemNotFound() {
    return Error(
        "Item cannot be found in the collection corresponding to the requested name or ordinal.",
        3265);
}
}  // namespace

Recordset::Recordset(std::vector<std::string> columns, std::vector<std::vector<Variant>> rows)
    : columns_(std::move(columns)), rows_(std::move(rows)), position_(0), open_(true) {
    for (auto& row : rows_) row.resize(columns_.size());
}

void Recordset::Close() {
    columns_.clear();
    lookedUp_.clear();
    rows_.clear();
    position_ = 0;
    open_ = false;
}

bool Recordset::Eof() const { return position_ >= rows_.size(); }

// A client-side cursor only moves forwards here, so BOF holds only for an empty result.
bool Recordset::Bof() const { return rows_.empty(); }

void Recordset::MoveNext() {
    if (Eof()) throw NoCurrentRecord();
    ++position_;
}

void Recordset::MoveFirst() { position_ = 0; }

std::size_t Recordset::IndexOf(std::string_view name) const {
    for (const auto& [asked, index] : lookedUp_) {
        if (asked == name) return index;
    }
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        if (EqualsNoCase(columns_[i], name)) {
            lookedUp_.emplace_back(std::string(name), i);
            return i;
        }
    }
    throw ItemNotFound();
}

bool Recordset::HasField(std::string_view name) const {
    for (const auto& column : columns_) {
        if (EqualsNoCase(column, name)) return true;
    }
    return false;
}

const Variant& Recordset::Field(std::string_view name) const { return Field(IndexOf(name)); }

const Variant& Recordset::Field(std::size_t index) const {
    if (index >= columns_.size()) throw ItemNotFound();
    if (Eof()) throw NoCurrentRecord();
    return rows_[position_][index];
}

}  // namespace kitra::ado
