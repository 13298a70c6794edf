#include "core/DateTime.h"

#include <cmath>

#include <fmt/format.h>

#include "core/Error.h"

namespace kitra {
namespace {

bool IsLeap(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int DaysInMonth(int year, int month) {
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeap(year) ? 29 : kDays[month - 1];
}

// Days from 1970-01-01 to a civil date (proleptic Gregorian).
long DaysFromCivil(int y, int m, int d) {
    y -= m <= 2;
    const long era = (y >= 0 ? y : y - 399) / 400;
    const long yoe = y - era * 400;
    const long doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

void CivilFromDays(long z, int& y, int& m, int& d) {
    z += 719468;
    const long era = (z >= 0 ? z : z - 146096) / 146097;
    const long doe = z - era * 146097;
    const long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const long doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const long mp = (5 * doy + 2) / 153;
    d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    y = static_cast<int>(yoe + era * 400 + (m <= 2));
}

const long kSerialEpoch = DaysFromCivil(1899, 12, 30);

// Reads exactly `count` digits at `pos`.
bool ReadDigits(std::string_view text, std::size_t pos, std::size_t count, int& out) {
    if (pos + count > text.size()) return false;
    int value = 0;
    for (std::size_t i = pos; i < pos + count; ++i) {
        if (text[i] < '0' || text[i] > '9') return false;
        value = value * 10 + (text[i] - '0');
    }
    out = value;
    return true;
}

}  // namespace

bool DateTime::IsValid() const {
    return year >= 100 && year <= 9999 && month >= 1 && month <= 12 && day >= 1 &&
           day <= DaysInMonth(year, month) && hour >= 0 && hour <= 23 && minute >= 0 &&
           minute <= 59 && second >= 0 && second <= 59;
}

double DateTime::ToSerial() const {
    const double days = static_cast<double>(DaysFromCivil(year, month, day) - kSerialEpoch);
    const double fraction = (hour * 3600 + minute * 60 + second) / 86400.0;
    // Before the zero date the time still counts forwards from midnight of that day.
    return days >= 0 ? days + fraction : days - fraction;
}

DateTime DateTime::FromSerial(double serial) {
    if (!std::isfinite(serial)) throw errors::Overflow();
    double days = std::trunc(serial);
    double fraction = std::fabs(serial - days);
    long seconds = std::lround(fraction * 86400.0);
    if (seconds >= 86400) {
        seconds -= 86400;
        days += serial >= 0 ? 1 : -1;
    }
    DateTime value;
    CivilFromDays(static_cast<long>(days) + kSerialEpoch, value.year, value.month, value.day);
    value.hour = static_cast<int>(seconds / 3600);
    value.minute = static_cast<int>(seconds / 60 % 60);
    value.second = static_cast<int>(seconds % 60);
    if (value.year < 100 || value.year > 9999) throw errors::Overflow();
    return value;
}

std::string FormatIsoDateTime(const DateTime& v) {
    // Written digit by digit: the back office formats every moment it stores, several per
    // document, and a general formatter costs tens of times as much.
    if (v.year < 0 || v.year > 9999 || v.month < 0 || v.month > 99 || v.day < 0 || v.day > 99 ||
        v.hour < 0 || v.hour > 99 || v.minute < 0 || v.minute > 99 || v.second < 0 || v.second > 99) {
        return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", v.year, v.month, v.day, v.hour,
                           v.minute, v.second);
    }
    char text[19];
    const auto two = [](char* at, int value) {
        at[0] = static_cast<char>('0' + value / 10);
        at[1] = static_cast<char>('0' + value % 10);
    };
    two(text, v.year / 100);
    two(text + 2, v.year % 100);
    text[4] = '-';
    two(text + 5, v.month);
    text[7] = '-';
    two(text + 8, v.day);
    text[10] = ' ';
    two(text + 11, v.hour);
    text[13] = ':';
    two(text + 14, v.minute);
    text[16] = ':';
    two(text + 17, v.second);
    return std::string(text, sizeof text);
}

std::optional<DateTime> ParseIsoDateTime(std::string_view text) {
    return ParseDatePattern(text, "yyyy-mm-dd hh:nn:ss");
}

bool IsIsoDateTime(std::string_view text) { return ParseIsoDateTime(text).has_value(); }

std::string FormatFileStamp(const DateTime& v) {
    return fmt::format("{:04}{:02}{:02}_{:02}{:02}{:02}", v.year, v.month, v.day, v.hour, v.minute,
                       v.second);
}

std::string FormatDatePattern(const DateTime& v, std::string_view pattern) {
    std::string out;
    for (std::size_t i = 0; i < pattern.size();) {
        const std::string_view rest = pattern.substr(i);
        if (rest.starts_with("yyyy")) {
            out += fmt::format("{:04}", v.year), i += 4;
        } else if (rest.starts_with("mm")) {
            out += fmt::format("{:02}", v.month), i += 2;
        } else if (rest.starts_with("dd")) {
            out += fmt::format("{:02}", v.day), i += 2;
        } else if (rest.starts_with("hh")) {
            out += fmt::format("{:02}", v.hour), i += 2;
        } else if (rest.starts_with("nn")) {
            out += fmt::format("{:02}", v.minute), i += 2;
        } else if (rest.starts_with("ss")) {
            out += fmt::format("{:02}", v.second), i += 2;
        } else {
            out += pattern[i], i += 1;
        }
    }
    return out;
}

std::optional<DateTime> ParseDatePattern(std::string_view text, std::string_view pattern) {
    DateTime v;
    std::size_t pos = 0;
    for (std::size_t i = 0; i < pattern.size();) {
        const std::string_view rest = pattern.substr(i);
        int* target = nullptr;
        std::size_t width = 2;
        if (rest.starts_with("yyyy")) {
            target = &v.year, width = 4;
        } else if (rest.starts_with("mm")) {
            target = &v.month;
        } else if (rest.starts_with("dd")) {
            target = &v.day;
        } else if (rest.starts_with("hh")) {
            target = &v.hour;
        } else if (rest.starts_with("nn")) {
            target = &v.minute;
        } else if (rest.starts_with("ss")) {
            target = &v.second;
        }
        if (target != nullptr) {
            if (!ReadDigits(text, pos, width, *target)) return std::nullopt;
            pos += width;
            i += width;
        } else {
            if (pos >= text.size() || text[pos] != pattern[i]) return std::nullopt;
            ++pos;
            ++i;
        }
    }
    if (pos != text.size() || !v.IsValid()) return std::nullopt;
    return v;
}

}  // namespace kitra
