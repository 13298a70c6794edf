#include "backoffice/ConsoleServices.h"

#include <istream>
#include <ostream>
#include <string>

#include "core/Text.h"

namespace kitra::backoffice {

void ConsoleEventNotifier::NotifyProgress(long position, long total, const std::string& text) {
    out_ << "[" << position << "/" << total << "] " << text << "\n";
}

void ConsoleEventNotifier::NotifyStatus(const std::string& text) { out_ << text << "\n"; }

host::MessageAnswer ConsoleMessageBoxes::Show(const std::string& text, host::MessageStyle style,
                                              host::MessageButtons buttons,
                                              const std::string& title) {
    const char* mark = "";
    switch (style) {
        case host::MessageStyle::Plain: mark = ""; break;
        case host::MessageStyle::Information: mark = "(i) "; break;
        case host::MessageStyle::Critical: mark = "(X) "; break;
        case host::MessageStyle::Exclamation: mark = "(!) "; break;
        case host::MessageStyle::Question: mark = "(?) "; break;
    }
    out_ << mark << (title.empty() ? "" : "[" + title + "] ") << text << "\n";
    if (buttons == host::MessageButtons::Ok) return host::MessageAnswer::Ok;

    out_ << "Sim/Não? " << std::flush;
    std::string answer;
    if (in_ == nullptr || !std::getline(*in_, answer)) {
        out_ << "Não\n";
        return host::MessageAnswer::No;
    }
    const std::string folded = FoldCase(Trim(answer));
    return folded == "S" || folded == "SIM" ? host::MessageAnswer::Yes : host::MessageAnswer::No;
}

}  // namespace kitra::backoffice
