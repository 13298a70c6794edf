#pragma once
// What every command that drives the connector needs: the back office opened, its services
// installed for the process, the component loaded and one connector created through the class
// factory; all undone in reverse order.
#include <memory>

#include "backoffice/BackOffice.h"
#include "backoffice/ConsoleServices.h"
#include "backoffice/cli/Command.h"
#include "backoffice/cli/ComponentLoader.h"
#include "backoffice/cli/TerminalNotifier.h"

namespace kitra::backoffice::cli {

inline constexpr const char* kEndOfRun = "A importação chegou ao fim.";

// Console message boxes that also remember whether the end of a run was announced.
class WatchingMessageBoxes final : public host::IMessageBoxService {
public:
    WatchingMessageBoxes(std::istream* in, std::ostream& out) : console_(in, out) {}
    host::MessageAnswer Show(const std::string& text, host::MessageStyle style,
                             host::MessageButtons buttons, const std::string& title) override {
        if (text == kEndOfRun) runEnded = true;
        return console_.Show(text, style, buttons, title);
    }
    bool runEnded = false;

private:
    ConsoleMessageBoxes console_;
};

class ConnectorSession {
public:
    // Message boxes go to the console, unless `windowBoxes` (a windowed host's) is given.
    explicit ConnectorSession(CommandContext& context,
                              host::IMessageBoxService* windowBoxes = nullptr);
    ~ConnectorSession();
    ConnectorSession(const ConnectorSession&) = delete;
    ConnectorSession& operator=(const ConnectorSession&) = delete;

    host::IConnector& Connector() { return *connector_.Get(); }
    BackOffice& Office() { return office_; }
    bool RunEnded() const { return boxes_.runEnded; }

private:
    BackOffice office_;
    std::shared_ptr<TerminalNotifier> notifier_;
    WatchingMessageBoxes boxes_;
    host::HostServices services_;
    std::unique_ptr<ComponentModule> module_;
    host::ComPtr<host::IConnector> connector_;
};

}  // namespace kitra::backoffice::cli
