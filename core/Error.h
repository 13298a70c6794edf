#pragma once
// The error every layer of the system raises: a number and a description. The importers turn
// the description into their log line, so the standard descriptions below are kept exactly.
#include <stdexcept>
#include <string>

namespace kitra {

class Error : public std::runtime_error {
public:
    explicit Error(std::string description, long number = 0)
        : std::runtime_error(description), number_(number), description_(std::move(description)) {}

    long Number() const noexcept { return number_; }
    const std::string& Description() const noexcept { return description_; }

private:
    long number_;
    std::string description_;
};

// The conversion failures that the import log shows by their description.
namespace errors {
inline constexpr long kTypeMismatch = 13;
inline constexpr long kOverflow = 6;
inline constexpr long kInvalidUseOfNull = 94;

inline Error Overflow() { return Error("Overflow", kOverflow); }
inline Error InvalidUseOfNull() { return Error("Invalid use of Null", kInvalidUseOfNull); }
inline Error TypeMismatch() { return Error("Type mismatch", kTypeMismatch); }
}  // namespace errors

// The description an error handler reports: the system's own for an Error, the library's
// message for anything else.
inline std::string DescriptionOf(const std::exception& error) {
    if (const auto* own = dynamic_cast<const Error*>(&error)) return own->Description();
    return error.what();
}

}  // namespace kitra
