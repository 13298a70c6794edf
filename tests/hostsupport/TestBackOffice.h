#pragma once
// A real back office in a fresh temporary folder for one test, with a notifier and message
// boxes that record what the engine tells the user, installed as the process's host services
// for the test's lifetime.
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "backoffice/BackOffice.h"
#include "backoffice/RecordingServices.h"
#include "host/HostServices.h"
#include "tests/hostsupport/TempFolder.h"

namespace kitra::testing {

using RecordingNotifier = backoffice::RecordingEventNotifier;
using RecordingMessageBoxes = backoffice::RecordingMessageBoxes;

class TestBackOffice {
public:
    // A new back office under a unique folder in the system's temporary directory.
    TestBackOffice();
    ~TestBackOffice();
    TestBackOffice(const TestBackOffice&) = delete;
    TestBackOffice& operator=(const TestBackOffice&) = delete;

    const std::filesystem::path& Folder() const { return folder_.Path(); }
    backoffice::BackOffice& Office() { return *office_; }
    const host::HostServices& Services() const { return services_; }
    std::shared_ptr<RecordingNotifier> notifier = std::make_shared<RecordingNotifier>();
    RecordingMessageBoxes boxes;

    // Files in the log folder.
    std::vector<std::string> LogFiles() const;

private:
    TempFolder folder_;
    std::unique_ptr<backoffice::BackOffice> office_;
    host::HostServices services_;
};

}  // namespace kitra::testing
