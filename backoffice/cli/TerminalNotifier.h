#pragma once
// The command-line host's notifier for an import run: each status text on a line of its own;
// progress as one bar redrawn in place on a terminal, or, when the output is not a terminal,
// as a plain line whenever the task changes and at every tenth of the way.
#include <ostream>
#include <string>

#include "host/IEventNotifier.h"

namespace kitra::backoffice::cli {

class TerminalNotifier final : public host::IEventNotifier {
public:
    TerminalNotifier(std::ostream& out, bool terminal) : out_(out), terminal_(terminal) {}
    ~TerminalNotifier() override { EndBar(); }

    void NotifyProgress(long position, long total, const std::string& text) override;
    void NotifyStatus(const std::string& text) override;

private:
    void EndBar();

    std::ostream& out_;
    bool terminal_;
    bool barShown_ = false;
    std::string lastText_;
    long lastTenth_ = -1;
};

}  // namespace kitra::backoffice::cli
