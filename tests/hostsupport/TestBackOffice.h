#pragma once
// A real back office in a fresh temporary folder for one test, with a notifier and message
// boxes that record what the engine tells the user. Tests of the connector component attach it
// to the business layer's class, as kitra-host does, so that the connector is served it.
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "backoffice/BackOffice.h"
#include "backoffice/RecordingServices.h"
#include "host/HostBusinessLayer.h"
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

    // Makes this back office the one the business layer's class serves in this process, until
    // the back office goes. `componentModule`: the connector module the test loads (the class's
    // module is looked for beside it, then the one built with the tests).
    void AttachAsHost(const std::string& componentModule = {});
    // Attaches another set of services (a test that swaps one service).
    void AttachServices(const host::HostServices& services);

    // Files in the log folder.
    std::vector<std::string> LogFiles() const;

private:
    TempFolder folder_;
    std::unique_ptr<backoffice::BackOffice> office_;
    host::HostServices services_;
    std::unique_ptr<host::HostAttachment> attachment_;
};

}  // namespace kitra::testing
