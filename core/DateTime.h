#pragma once
// A calendar date and time to the second, and the text forms the system keeps dates in:
// "yyyy-mm-dd hh:mm:ss" for stored dates and SQL, "yyyymmdd_hhmmss" for log file names.
#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace kitra {

struct DateTime {
    int year = 1899, month = 12, day = 30;  // the zero date of the host's date numbers
    int hour = 0, minute = 0, second = 0;

    auto operator<=>(const DateTime&) const = default;

    // True when every part is in range (years 100 to 9999, real calendar days).
    bool IsValid() const;

    // Date as the host's date number: days since 1899-12-30, time as the fraction of a day.
    double ToSerial() const;
    // The inverse; fails with "Overflow" outside the years 100 to 9999.
    static DateTime FromSerial(double serial);
};

// "yyyy-mm-dd hh:mm:ss"
std::string FormatIsoDateTime(const DateTime& value);
// Parses exactly "yyyy-mm-dd hh:mm:ss" (19 characters, a real date); nothing otherwise.
std::optional<DateTime> ParseIsoDateTime(std::string_view text);
// True when the text is a valid "yyyy-mm-dd hh:mm:ss" date-time.
bool IsIsoDateTime(std::string_view text);

// "yyyymmdd_hhmmss", the stamp in log file names.
std::string FormatFileStamp(const DateTime& value);

// A date form given as a pattern of the tokens yyyy, mm, dd, hh, nn (minutes) and ss; any other
// character is copied. The reference host's general date form is "dd-mm-yyyy hh:nn:ss".
std::string FormatDatePattern(const DateTime& value, std::string_view pattern);
// Reads a text written with the same pattern; nothing when it does not match or is not a date.
std::optional<DateTime> ParseDatePattern(std::string_view text, std::string_view pattern);

}  // namespace kitra
