#pragma once
// The JSON that the commands' --json output is made of: a text as a JSON string.
#include <string>

namespace kitra::backoffice::cli {

// The text in double quotes, with quotes, backslashes and control characters escaped; other
// bytes (UTF-8 included) as they are.
std::string Json(const std::string& text);

}  // namespace kitra::backoffice::cli
