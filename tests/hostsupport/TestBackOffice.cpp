#include "tests/hostsupport/TestBackOffice.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>

#include <unistd.h>

namespace kitra::testing {
namespace fs = std::filesystem;

TestBackOffice::TestBackOffice() {
    static std::atomic<int> sequence{0};
    folder_ = fs::temp_directory_path() /
              ("kitra-test-" + std::to_string(::getpid()) + "-" + std::to_string(++sequence));
    fs::remove_all(folder_);
    backoffice::BackOffice::Create(folder_);
    office_ = std::make_unique<backoffice::BackOffice>(folder_);
    services_ = office_->Services(notifier.get(), &boxes);
    host::InstallHostServices(&services_);
}

TestBackOffice::~TestBackOffice() {
    host::InstallHostServices(nullptr);
    office_.reset();
    std::error_code ec;
    if (std::getenv("KITRA_KEEP_TEST_DATA") == nullptr) fs::remove_all(folder_, ec);
}

std::vector<std::string> TestBackOffice::LogFiles() const {
    std::vector<std::string> names;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(services_.application->LogFolder(), ec)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace kitra::testing
