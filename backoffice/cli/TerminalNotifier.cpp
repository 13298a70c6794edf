#include "backoffice/cli/TerminalNotifier.h"

#include <algorithm>

namespace kitra::backoffice::cli {
namespace {
constexpr int kBarWidth = 30;

// The lines of a restaurant's summary, the only status texts a quiet run shows.
bool IsSummaryLine(const std::string& text) {
    return text.starts_with("----------------") ||
           text.starts_with("Resumo Importação Restaurante: ") || text.starts_with(" - ");
}

// The status text of a record that an importer leaves out, which follows the record's own.
bool IsLeftOut(const std::string& text) { return text.starts_with("Não foi possível adicionar"); }

// The records an importer names before it knows whether it can import them: a document, a cash
// movement or a receipt may still be left out after its own status text. (Master data is named
// only once it is to be saved.)
bool MayStillBeLeftOut(const std::string& text) {
    return text.starts_with("Documento: ") || text.starts_with("Mov.Caixa UID: ") ||
           text.starts_with("Recibo: ");
}
}  // namespace

void TerminalNotifier::ShowPendingRecord() {
    if (pendingRecord_.empty()) return;
    EndBar();
    out_ << pendingRecord_ << "\n" << std::flush;
    pendingRecord_.clear();
}

void TerminalNotifier::EndBar() {
    if (barShown_) {
        out_ << "\n";
        barShown_ = false;
    }
}

void TerminalNotifier::DrawBar(const std::string& suffix) {
    const double fraction = whole_ > 0 ? static_cast<double>(done_) / whole_ : 1.0;
    const int filled = static_cast<int>(fraction * kBarWidth);
    out_ << "\r\033[K[" << std::string(filled, '#') << std::string(kBarWidth - filled, ' ') << "] "
         << done_ << "/" << whole_ << " " << barText_ << suffix << std::flush;
    barShown_ = true;
}

void TerminalNotifier::NotifyProgress(long position, long total, const std::string& text) {
    afterProgress_ = true;
    if (detail_ == ProgressDetail::Quiet) return;
    ShowPendingRecord();
    // Importers count rows from 1 and give the record count less one as the total.
    done_ = std::max(0L, position);
    whole_ = std::max(done_, total + 1);
    barText_ = text;
    if (terminal_) {
        DrawBar("");
        return;
    }
    const double fraction = whole_ > 0 ? static_cast<double>(done_) / whole_ : 1.0;
    const long tenth = static_cast<long>(fraction * 10);
    if (text != lastText_ || tenth != lastTenth_) {
        // Flushed at once, so that a program or a person reading a pipe sees the run as it goes.
        out_ << text << ": " << done_ << "/" << whole_ << "\n" << std::flush;
        lastText_ = text;
        lastTenth_ = tenth;
    }
}

void TerminalNotifier::NotifyStatus(const std::string& text) {
    if (statusSeen) statusSeen(text);
    const bool perRecord = afterProgress_ && !IsSummaryLine(text);
    afterProgress_ = false;
    if (detail_ == ProgressDetail::Quiet) {
        if (IsSummaryLine(text)) out_ << text << "\n" << std::flush;
        return;
    }
    if (detail_ == ProgressDetail::Normal && perRecord) {
        if (terminal_ && barShown_) DrawBar(" - " + text);
        return;
    }
    if (detail_ == ProgressDetail::Verbose) {
        if (IsLeftOut(text)) {
            pendingRecord_.clear();  // not imported: its reason says so instead
        } else {
            ShowPendingRecord();
            if (perRecord && MayStillBeLeftOut(text)) {
                pendingRecord_ = text;
                return;
            }
        }
    }
    EndBar();
    out_ << text << "\n" << std::flush;
}

}  // namespace kitra::backoffice::cli
