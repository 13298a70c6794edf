#pragma once
// The back office opened and attached to the business layer's class (so that the connector,
// which creates that class, is served this back office), the component loaded and one
// connector created through the class factory; all undone in reverse order. The commands
// that drive the connector work inside one.
#include <memory>
#include <string>
#include <vector>

#include "backoffice/BackOffice.h"
#include "backoffice/ConsoleServices.h"
#include "backoffice/cli/Command.h"
#include "backoffice/cli/ComponentLoader.h"
#include "backoffice/cli/TerminalNotifier.h"
#include "host/HostBusinessLayer.h"
#include "host/IConnector.h"

namespace kitra::backoffice::cli {

// Console message boxes: errors and critical messages on the error output, the others on the
// output; they also remember whether the end of a run was announced.
class RoutedMessageBoxes final : public host::IMessageBoxService {
public:
    RoutedMessageBoxes(std::istream* in, std::ostream& out, std::ostream& err)
        : out_(in, out), err_(in, err) {}
    host::MessageAnswer Show(const std::string& text, host::MessageStyle style,
                             host::MessageButtons buttons, const std::string& title) override;
    bool runEnded = false;
    // While set, every text is kept here instead of shown (the connector's validation tells
    // each failing rule in a box of its own).
    std::vector<std::string>* collected = nullptr;

private:
    ConsoleMessageBoxes out_;
    ConsoleMessageBoxes err_;
};

class ConnectorSession {
public:
    // `origin` is what the settings history says saved the settings: the command's name.
    // Message boxes go to the console, unless `windowBoxes` (a windowed host's) is given.
    ConnectorSession(CommandContext& context, const std::string& origin,
                     ProgressDetail detail = ProgressDetail::Normal,
                     host::IMessageBoxService* windowBoxes = nullptr);
    ~ConnectorSession();
    ConnectorSession(const ConnectorSession&) = delete;
    ConnectorSession& operator=(const ConnectorSession&) = delete;

    host::IConnector& Connector() { return *connector_.Get(); }
    BackOffice& Office() { return office_; }
    TerminalNotifier& Notifier() { return *notifier_; }
    bool RunEnded() const { return boxes_.runEnded; }
    // The connector's own validation of the stored settings (its settings dialog's rules): the
    // text of each rule that fails; empty when they pass.
    std::vector<std::string> ConnectorRefusals();

private:
    BackOffice office_;
    std::shared_ptr<TerminalNotifier> notifier_;
    RoutedMessageBoxes boxes_;
    host::HostServices services_;
    std::string modulePath_;
    std::unique_ptr<host::HostAttachment> attachment_;
    std::unique_ptr<ComponentModule> module_;
    host::ComPtr<host::IConnector> connector_;
};

}  // namespace kitra::backoffice::cli
