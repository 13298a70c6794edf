#pragma once
// File names are UTF-8 text everywhere in the system. A path made from that text, and the text
// of a path, must say so: on Windows a narrow string is otherwise read in the system's code page,
// so that a restaurant named "Praça" would write its log under one name and look for it under
// another.
#include <filesystem>
#include <string>
#include <string_view>

namespace kitra {

inline std::filesystem::path PathFromUtf8(std::string_view text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

inline std::string Utf8FromPath(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

}  // namespace kitra
