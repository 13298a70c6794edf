#pragma once
// The command-line host's notifier for an import run. Progress is one bar redrawn in place on a
// terminal, or, when the output is not a terminal, a plain line whenever the task changes and at
// every tenth of the way. How much of the status texts shows depends on the detail asked for:
// - Normal: every status text except the one an importer gives for each record (the status that
//   comes right after a progress step); on a terminal that text is shown at the end of the bar.
// - Verbose: every status text on a line of its own, except the record's own text of a record
//   that is then left out: its reason ("Não foi possível adicionar ...") shows instead. So a
//   document's, cash movement's or receipt's own line shows once the next one starts.
// - Quiet: only the summary of each restaurant; no progress.
#include <functional>
#include <ostream>
#include <string>

#include "host/IEventNotifier.h"

namespace kitra::backoffice::cli {

enum class ProgressDetail { Quiet, Normal, Verbose };

class TerminalNotifier final : public host::IEventNotifier {
public:
    TerminalNotifier(std::ostream& out, bool terminal, ProgressDetail detail = ProgressDetail::Verbose)
        : out_(out), terminal_(terminal), detail_(detail) {}
    ~TerminalNotifier() override {
        ShowPendingRecord();
        EndBar();
    }

    void NotifyProgress(long position, long total, const std::string& text) override;
    void NotifyStatus(const std::string& text) override;

    // Shown every status text as it comes, before it is printed (the host notes when each
    // restaurant's import begins).
    std::function<void(const std::string&)> statusSeen;

private:
    void EndBar();
    void DrawBar(const std::string& suffix);
    void ShowPendingRecord();

    std::ostream& out_;
    bool terminal_;
    ProgressDetail detail_;
    bool barShown_ = false;
    bool afterProgress_ = false;
    std::string lastText_;
    long lastTenth_ = -1;
    long done_ = 0;
    long whole_ = 0;
    std::string barText_;
    // Verbose: the record's own text, held until it is known that the record was not left out.
    std::string pendingRecord_;
};

}  // namespace kitra::backoffice::cli
