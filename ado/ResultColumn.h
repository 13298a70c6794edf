#pragma once
// One column of a result held compactly: the column takes the type of its first value that is
// not null, and keeps every value of that type in one typed array (whole numbers, reals, dates
// packed into one number, texts one after another in a single block), with the nulls as bits.
// A value of another type turns the column into a list of general values, so any mix of types
// reads back exactly as it went in. A result of a million rows then costs a few bytes per cell
// rather than a general value and an allocation each.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/Variant.h"

namespace kitra::ado {

class ResultColumn {
public:
    std::size_t Size() const { return size_; }
    void Reserve(std::size_t rows);

    void Append(const Variant& value);
    void AppendNull();
    // A text value from a buffer the caller reuses (the same as Append(Variant(text))).
    void AppendText(std::string_view text);

    // The value at `row` (< Size()), as it was appended.
    Variant At(std::size_t row) const;

    // Gives back what growing left unused; once the last row is in.
    void Trim();

    // Bytes the column holds on the heap, for measuring.
    std::size_t HeapBytes() const;

private:
    enum class Storage : std::uint8_t { Undecided, Int16, Int32, Boolean, Double, Date, Text, Values };

    static Storage StorageOf(Variant::Type type);
    // Turns a typed column into general values (a value of another type arrived).
    void MakeGeneral();
    // Starts the typed storage with the nulls appended so far as placeholders.
    void Decide(Storage storage);
    bool IsNullAt(std::size_t row) const { return row < nulls_.size() && nulls_[row]; }
    void MarkNull();

    Storage storage_ = Storage::Undecided;
    std::size_t size_ = 0;
    std::size_t reserved_ = 0;  // rows expected, for the typed array once it is chosen
    // A bit per row once any null arrived (rows past its end are not null).
    std::vector<bool> nulls_;
    std::vector<std::int32_t> whole_;  // Int16, Int32, Boolean
    std::vector<std::uint64_t> wide_;  // Double (its bits), Date (packed)
    std::vector<std::uint32_t> textEnds_;
    std::string texts_;
    std::vector<Variant> values_;
};

}  // namespace kitra::ado
