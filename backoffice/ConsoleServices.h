#pragma once
// The command-line host's notifier and message boxes: progress and status go to the output,
// a message box is printed with its title, and a Yes/No question is read from the input when
// one is attached (anything but "s"/"sim" is No; no input at all is No).
#include <iosfwd>

#include "host/IEventNotifier.h"
#include "host/IMessageBoxService.h"

namespace kitra::backoffice {

class ConsoleEventNotifier final : public host::IEventNotifier {
public:
    explicit ConsoleEventNotifier(std::ostream& out) : out_(out) {}
    void NotifyProgress(long position, long total, const std::string& text) override;
    void NotifyStatus(const std::string& text) override;

private:
    std::ostream& out_;
};

class ConsoleMessageBoxes final : public host::IMessageBoxService {
public:
    ConsoleMessageBoxes(std::istream* in, std::ostream& out) : in_(in), out_(out) {}
    host::MessageAnswer Show(const std::string& text, host::MessageStyle style,
                             host::MessageButtons buttons, const std::string& title) override;

private:
    std::istream* in_;  // null: nobody to ask
    std::ostream& out_;
};

}  // namespace kitra::backoffice
