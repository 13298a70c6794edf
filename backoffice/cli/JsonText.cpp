#include "backoffice/cli/JsonText.h"

#include <fmt/format.h>

namespace kitra::backoffice::cli {

std::string Json(const std::string& text) {
    std::string quoted = "\"";
    for (unsigned char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += static_cast<char>(c);
        } else if (c < 0x20) {
            quoted += fmt::format("\\u{:04x}", c);
        } else {
            quoted += static_cast<char>(c);
        }
    }
    return quoted + "\"";
}

}  // namespace kitra::backoffice::cli
