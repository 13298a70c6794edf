#pragma once
// A real back office in a fresh temporary folder for one test, with a notifier and message
// boxes that record what the engine tells the user, installed as the process's host services
// for the test's lifetime.
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "backoffice/BackOffice.h"
#include "host/HostServices.h"

namespace kitra::testing {

class RecordingNotifier final : public host::IEventNotifier {
public:
    struct Progress {
        long position;
        long total;
        std::string text;
    };
    void NotifyProgress(long position, long total, const std::string& text) override {
        progress.push_back({position, total, text});
    }
    void NotifyStatus(const std::string& text) override { statuses.push_back(text); }

    std::vector<Progress> progress;
    std::vector<std::string> statuses;
};

class RecordingMessageBoxes final : public host::IMessageBoxService {
public:
    struct Box {
        std::string text;
        host::MessageStyle style;
        host::MessageButtons buttons;
        std::string title;
    };
    host::MessageAnswer Show(const std::string& text, host::MessageStyle style,
                             host::MessageButtons buttons, const std::string& title) override {
        boxes.push_back({text, style, buttons, title});
        return buttons == host::MessageButtons::YesNo ? answer : host::MessageAnswer::Ok;
    }

    std::vector<Box> boxes;
    host::MessageAnswer answer = host::MessageAnswer::Yes;
};

class TestBackOffice {
public:
    // A new back office under a unique folder in the system's temporary directory.
    TestBackOffice();
    ~TestBackOffice();
    TestBackOffice(const TestBackOffice&) = delete;
    TestBackOffice& operator=(const TestBackOffice&) = delete;

    const std::filesystem::path& Folder() const { return folder_; }
    backoffice::BackOffice& Office() { return *office_; }
    const host::HostServices& Services() const { return services_; }
    std::shared_ptr<RecordingNotifier> notifier = std::make_shared<RecordingNotifier>();
    RecordingMessageBoxes boxes;

    // Files in the log folder.
    std::vector<std::string> LogFiles() const;

private:
    std::filesystem::path folder_;
    std::unique_ptr<backoffice::BackOffice> office_;
    host::HostServices services_;
};

}  // namespace kitra::testing
