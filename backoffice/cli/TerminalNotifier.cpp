#include "backoffice/cli/TerminalNotifier.h"

#include <algorithm>

namespace kitra::backoffice::cli {
namespace {
constexpr int kBarWidth = 30;
}

void TerminalNotifier::EndBar() {
    if (barShown_) {
        out_ << "\n";
        barShown_ = false;
    }
}

void TerminalNotifier::NotifyProgress(long position, long total, const std::string& text) {
    // Importers count rows from 1 and give the record count less one as the total.
    const long done = std::max(0L, position);
    const long whole = std::max(done, total + 1);
    const double fraction = whole > 0 ? static_cast<double>(done) / whole : 1.0;
    if (terminal_) {
        const int filled = static_cast<int>(fraction * kBarWidth);
        out_ << "\r\033[K[" << std::string(filled, '#') << std::string(kBarWidth - filled, ' ')
             << "] " << done << "/" << whole << " " << text << std::flush;
        barShown_ = true;
        return;
    }
    const long tenth = static_cast<long>(fraction * 10);
    if (text != lastText_ || tenth != lastTenth_) {
        out_ << text << ": " << done << "/" << whole << "\n";
        lastText_ = text;
        lastTenth_ = tenth;
    }
}

void TerminalNotifier::NotifyStatus(const std::string& text) {
    EndBar();
    out_ << text << "\n";
}

}  // namespace kitra::backoffice::cli
