#include "import/LogFileName.h"

#include <string_view>

#include "core/Text.h"

namespace kitra {
namespace {
constexpr std::size_t kMaxNameBytes = 200;

bool Refused(char32_t c) {
    return c < 32 || c == 127 || c == U'/' || c == U'\\' || c == U':' || c == U'*' || c == U'?' ||
           c == U'"' || c == U'<' || c == U'>' || c == U'|';
}
}  // namespace

std::string LogFileName(const std::string& restaurantName, const DateTime& moment) {
    std::string safe;
    for (char32_t c : DecodeUtf8(restaurantName)) {
        std::string piece;
        AppendUtf8(piece, Refused(c) ? U'_' : c);
        if (safe.size() + piece.size() > kMaxNameBytes) break;
        safe += piece;
    }
    return safe + FormatFileStamp(moment) + ".txt";
}

}  // namespace kitra
