#include "ado/ResultColumn.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace kitra::ado {
namespace {

// A date-time in one number: 16 bits of year and 8 of each other part. A date whose parts do
// not fit (which no valid date has) keeps the column general.
bool FitsPacked(const DateTime& date) {
    const auto within = [](int value, int most) { return value >= 0 && value <= most; };
    return within(date.year, 0xFFFF) && within(date.month, 0xFF) && within(date.day, 0xFF) &&
           within(date.hour, 0xFF) && within(date.minute, 0xFF) && within(date.second, 0xFF);
}

std::uint64_t Pack(const DateTime& date) {
    return static_cast<std::uint64_t>(date.year) << 40 | static_cast<std::uint64_t>(date.month) << 32 |
           static_cast<std::uint64_t>(date.day) << 24 | static_cast<std::uint64_t>(date.hour) << 16 |
           static_cast<std::uint64_t>(date.minute) << 8 | static_cast<std::uint64_t>(date.second);
}

DateTime Unpack(std::uint64_t packed) {
    DateTime date;
    date.year = static_cast<int>(packed >> 40 & 0xFFFF);
    date.month = static_cast<int>(packed >> 32 & 0xFF);
    date.day = static_cast<int>(packed >> 24 & 0xFF);
    date.hour = static_cast<int>(packed >> 16 & 0xFF);
    date.minute = static_cast<int>(packed >> 8 & 0xFF);
    date.second = static_cast<int>(packed & 0xFF);
    return date;
}

template <class Vector>
void TrimVector(Vector& vector) {
    // Growing doubles the room; a quarter left unused is worth one more copy to give back.
    if (vector.capacity() - vector.size() > vector.size() / 4) vector.shrink_to_fit();
}

}  // namespace

ResultColumn::Storage ResultColumn::StorageOf(Variant::Type type) {
    switch (type) {
        case Variant::Type::Integer: return Storage::Int16;
        case Variant::Type::Long: return Storage::Int32;
        case Variant::Type::Boolean: return Storage::Boolean;
        case Variant::Type::Double: return Storage::Double;
        case Variant::Type::Date: return Storage::Date;
        case Variant::Type::String: return Storage::Text;
        case Variant::Type::Empty:
        case Variant::Type::Null: break;
    }
    return Storage::Values;
}

void ResultColumn::Reserve(std::size_t rows) {
    reserved_ = rows;
    if (storage_ != Storage::Undecided) Decide(storage_);
}

void ResultColumn::Decide(Storage storage) {
    storage_ = storage;
    const std::size_t room = std::max(reserved_, size_);
    switch (storage_) {
        case Storage::Undecided: return;
        case Storage::Int16:
        case Storage::Int32:
        case Storage::Boolean:
            whole_.reserve(room);
            whole_.resize(size_);
            return;
        case Storage::Double:
        case Storage::Date:
            wide_.reserve(room);
            wide_.resize(size_);
            return;
        case Storage::Text:
            textEnds_.reserve(room);
            textEnds_.resize(size_);
            return;
        case Storage::Values:
            values_.reserve(room);
            values_.resize(size_, Variant::Null());
            nulls_.clear();
            return;
    }
}

void ResultColumn::MakeGeneral() {
    std::vector<Variant> values;
    values.reserve(std::max(reserved_, size_ + 1));
    for (std::size_t row = 0; row < size_; ++row) values.push_back(At(row));
    nulls_ = {};
    whole_ = {};
    wide_ = {};
    textEnds_ = {};
    texts_ = {};
    values_ = std::move(values);
    storage_ = Storage::Values;
}

void ResultColumn::MarkNull() {
    if (nulls_.size() <= size_) {
        if (nulls_.capacity() == 0) nulls_.reserve(std::max(reserved_, size_ + 1));
        nulls_.resize(size_ + 1, false);
    }
    nulls_[size_] = true;
}

void ResultColumn::AppendNull() {
    switch (storage_) {
        case Storage::Values:
            values_.push_back(Variant::Null());
            break;
        case Storage::Undecided:
            MarkNull();
            break;
        case Storage::Int16:
        case Storage::Int32:
        case Storage::Boolean:
            MarkNull();
            whole_.push_back(0);
            break;
        case Storage::Double:
        case Storage::Date:
            MarkNull();
            wide_.push_back(0);
            break;
        case Storage::Text:
            MarkNull();
            textEnds_.push_back(static_cast<std::uint32_t>(texts_.size()));
            break;
    }
    ++size_;
}

void ResultColumn::AppendText(std::string_view text) {
    if (storage_ == Storage::Undecided) Decide(Storage::Text);
    if (storage_ != Storage::Text ||
        texts_.size() + text.size() > std::numeric_limits<std::uint32_t>::max()) {
        if (storage_ != Storage::Values) MakeGeneral();
        values_.emplace_back(std::string(text));
        ++size_;
        return;
    }
    texts_.append(text);
    textEnds_.push_back(static_cast<std::uint32_t>(texts_.size()));
    ++size_;
}

void ResultColumn::Append(const Variant& value) {
    const Variant::Type type = value.GetType();
    if (type == Variant::Type::Null) {
        AppendNull();
        return;
    }
    if (type == Variant::Type::String) {
        AppendText(*value.AsString());
        return;
    }
    const Storage storage = StorageOf(type);
    if (storage_ == Storage::Undecided) Decide(storage);
    const bool fits = storage_ == storage &&
                      (storage != Storage::Date || FitsPacked(value.ToDate()));
    if (!fits) {
        if (storage_ != Storage::Values) MakeGeneral();
        values_.push_back(value);
        ++size_;
        return;
    }
    switch (storage_) {
        case Storage::Int16: whole_.push_back(value.ToInt16()); break;
        case Storage::Int32: whole_.push_back(value.ToInt32()); break;
        case Storage::Boolean: whole_.push_back(value.ToBool() ? 1 : 0); break;
        case Storage::Double: wide_.push_back(std::bit_cast<std::uint64_t>(value.ToDouble())); break;
        case Storage::Date: wide_.push_back(Pack(value.ToDate())); break;
        case Storage::Values: values_.push_back(value); break;
        case Storage::Undecided:
        case Storage::Text: break;  // decided above; texts are appended as texts
    }
    ++size_;
}

Variant ResultColumn::At(std::size_t row) const {
    if (storage_ == Storage::Values) return values_[row];
    if (storage_ == Storage::Undecided || IsNullAt(row)) return Variant::Null();
    switch (storage_) {
        case Storage::Int16: return Variant(static_cast<std::int16_t>(whole_[row]));
        case Storage::Int32: return Variant(whole_[row]);
        case Storage::Boolean: return Variant(whole_[row] != 0);
        case Storage::Double: return Variant(std::bit_cast<double>(wide_[row]));
        case Storage::Date: return Variant(Unpack(wide_[row]));
        case Storage::Text: {
            const std::size_t begin = row == 0 ? 0 : textEnds_[row - 1];
            return Variant(texts_.substr(begin, textEnds_[row] - begin));
        }
        case Storage::Undecided:
        case Storage::Values: break;
    }
    return Variant::Null();
}

void ResultColumn::Trim() {
    TrimVector(whole_);
    TrimVector(wide_);
    TrimVector(textEnds_);
    TrimVector(texts_);
    TrimVector(values_);
    reserved_ = 0;
}

std::size_t ResultColumn::HeapBytes() const {
    return nulls_.capacity() / 8 + whole_.capacity() * sizeof(std::int32_t) +
           wide_.capacity() * sizeof(std::uint64_t) + textEnds_.capacity() * sizeof(std::uint32_t) +
           texts_.capacity() + values_.capacity() * sizeof(Variant);
}

}  // namespace kitra::ado
