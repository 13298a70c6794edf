#pragma once
// The dates kitra-host's commands take on their command line (state set, report): a moment
// "yyyy-mm-dd hh:mm:ss", or a day "yyyy-mm-dd", which is its 00:00:00.
#include <optional>
#include <string>

#include "core/DateTime.h"

namespace kitra::backoffice::cli {

// How the forms are named in messages.
inline constexpr const char* kDateArgumentForms = "\"aaaa-mm-dd hh:mm:ss\" ou aaaa-mm-dd";

// The moment as "yyyy-mm-dd hh:mm:ss"; nothing when the text is neither form.
inline std::optional<std::string> ParseDateArgument(const std::string& text) {
    if (IsIsoDateTime(text)) return text;
    if (text.size() == 10 && IsIsoDateTime(text + " 00:00:00")) return text + " 00:00:00";
    return std::nullopt;
}

}  // namespace kitra::backoffice::cli
