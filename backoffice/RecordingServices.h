#pragma once
// A notifier and message boxes that keep what they were given, for tests of the parts of the
// system that report to the user. Questions are answered from a queue (No when it is empty).
#include <deque>
#include <string>
#include <vector>

#include "host/IEventNotifier.h"
#include "host/IMessageBoxService.h"

namespace kitra::backoffice {

class RecordingEventNotifier final : public host::IEventNotifier {
public:
    struct Progress {
        long position;
        long total;
        std::string text;
        bool operator==(const Progress&) const = default;
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
        bool operator==(const Box&) const = default;
    };

    host::MessageAnswer Show(const std::string& text, host::MessageStyle style,
                             host::MessageButtons buttons, const std::string& title) override {
        shown.push_back({text, style, buttons, title});
        if (buttons == host::MessageButtons::Ok) return host::MessageAnswer::Ok;
        if (answers.empty()) return host::MessageAnswer::No;
        const host::MessageAnswer answer = answers.front();
        answers.pop_front();
        return answer;
    }

    std::vector<Box> shown;
    std::deque<host::MessageAnswer> answers;
};

}  // namespace kitra::backoffice
