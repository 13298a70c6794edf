#include "tests/hostsupport/TestBackOffice.h"

#include <algorithm>

namespace kitra::testing {
namespace fs = std::filesystem;

TestBackOffice::TestBackOffice() {
    backoffice::BackOffice::Create(folder_.Path());
    office_ = std::make_unique<backoffice::BackOffice>(folder_.Path());
    services_ = office_->Services(notifier.get(), &boxes);
}

TestBackOffice::~TestBackOffice() {
    attachment_.reset();
    office_.reset();  // closed before its folder goes
}

void TestBackOffice::AttachAsHost(const std::string& componentModule) {
    attachment_ = std::make_unique<host::HostAttachment>(services_, componentModule);
}

void TestBackOffice::AttachServices(const host::HostServices& services) {
    attachment_->Attach(services);
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
