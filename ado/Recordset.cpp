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
    : columns_(std::move(columns)), values_(columns_.size()), rowCount_(rows.size()),
      current_(columns_.size()), currentRowOf_(columns_.size(), 0), open_(true) {
    for (ResultColumn& column : values_) column.Reserve(rows.size());
    for (auto& row : rows) {
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            // A short row reads as empty fields past its end.
            values_[i].Append(i < row.size() ? row[i] : Variant());
        }
        row = {};
    }
    for (ResultColumn& column : values_) column.Trim();
}

Recordset Recordset::FromColumns(std::vector<std::string> columns, std::vector<ResultColumn> values) {
    Recordset recordset;
    recordset.columns_ = std::move(columns);
    recordset.values_ = std::move(values);
    recordset.rowCount_ = recordset.values_.empty() ? 0 : recordset.values_.front().Size();
    recordset.values_.resize(recordset.columns_.size());
    for (ResultColumn& column : recordset.values_) {
        while (column.Size() < recordset.rowCount_) column.AppendNull();
    }
    recordset.current_.resize(recordset.columns_.size());
    recordset.currentRowOf_.assign(recordset.columns_.size(), 0);
    recordset.open_ = true;
    return recordset;
}

void Recordset::Close() {
    columns_.clear();
    lookedUp_.clear();
    values_.clear();
    current_.clear();
    currentRowOf_.clear();
    rowCount_ = 0;
    position_ = 0;
    open_ = false;
}

std::size_t Recordset::HeapBytes() const {
    std::size_t bytes = 0;
    for (const ResultColumn& column : values_) bytes += column.HeapBytes();
    return bytes;
}

bool Recordset::Eof() const { return position_ >= rowCount_; }

// A client-side cursor only moves forwards here, so BOF holds only for an empty result.
bool Recordset::Bof() const { return rowCount_ == 0; }

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
    if (currentRowOf_[index] != position_ + 1) {
        current_[index] = values_[index].At(position_);
        currentRowOf_[index] = position_ + 1;
    }
    return current_[index];
}

}  // namespace kitra::ado
