#pragma once
// A fresh, empty folder under the system's temporary folder for one test, removed afterwards
// (kept when KITRA_KEEP_TEST_DATA is set, to look at what a failing test left).
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace kitra::testing {

class TempFolder {
public:
    TempFolder() {
        static std::atomic<int> sequence{0};
        path_ = std::filesystem::temp_directory_path() /
                ("kitra-test-" + std::to_string(::getpid()) + "-" + std::to_string(++sequence));
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~TempFolder() {
        std::error_code ignored;
        if (std::getenv("KITRA_KEEP_TEST_DATA") == nullptr) std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }

private:
    std::filesystem::path path_;
};

}  // namespace kitra::testing
