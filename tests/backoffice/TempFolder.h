#pragma once
// A fresh, empty folder under the system's temporary folder for one test, removed afterwards
// (kept when KITRA_KEEP_TEST_DATA is set, to look at what a failing test left).
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "backoffice/BackOffice.h"

namespace kitra::backoffice::testing {

class TempFolder {
public:
    TempFolder() {
        static std::atomic<int> sequence{0};
        path_ = std::filesystem::temp_directory_path() /
                ("kitra-backoffice-test-" + std::to_string(::getpid()) + "-" +
                 std::to_string(++sequence));
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

// A new back office (made by BackOffice::Create) in a temporary folder, opened.
class TempBackOffice {
public:
    TempBackOffice() : data_(folder_.Path() / "data") {
        BackOffice::Create(data_);
        office_ = std::make_unique<BackOffice>(data_);
    }
    BackOffice& operator*() { return *office_; }
    BackOffice* operator->() { return office_.get(); }
    const std::filesystem::path& DataFolder() const { return data_; }
    std::filesystem::path File() const { return BackOffice::FileIn(data_); }
    // Closes and opens the back office again, as a new program would.
    void Reopen() {
        office_.reset();
        office_ = std::make_unique<BackOffice>(data_);
    }

private:
    TempFolder folder_;
    std::filesystem::path data_;
    std::unique_ptr<BackOffice> office_;
};

// A salesman with only a number and a name, the least a test needs.
inline host::Salesman NamedSalesman(double id, std::string name) {
    host::Salesman salesman;
    salesman.SalesmanID = id;
    salesman.Name = std::move(name);
    return salesman;
}

}  // namespace kitra::backoffice::testing
