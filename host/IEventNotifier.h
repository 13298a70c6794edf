#pragma once
// The host's event notifier: where a component reports the progress and status of a long task
// (an import run) while the host's thread is busy with it.
#include <string>

namespace kitra::host {

class IEventNotifier {
public:
    virtual ~IEventNotifier() = default;
    // Position within a total (both counts of rows or steps) and the text that goes with them.
    virtual void NotifyProgress(long position, long total, const std::string& text) = 0;
    // One line of status text.
    virtual void NotifyStatus(const std::string& text) = 0;
};

}  // namespace kitra::host
