#include "backoffice/cli/ConnectorSession.h"

#include <unistd.h>

#include "core/Error.h"

namespace kitra::backoffice::cli {
namespace {
constexpr const char* kEndOfRun = "A importação chegou ao fim.";
}

host::MessageAnswer RoutedMessageBoxes::Show(const std::string& text, host::MessageStyle style,
                                             host::MessageButtons buttons,
                                             const std::string& title) {
    if (collected != nullptr) {
        collected->push_back(text);
        return host::MessageAnswer::Ok;
    }
    if (text == kEndOfRun) runEnded = true;
    // The importers report their errors in boxes captioned "Error"; the log's are "Erro".
    const bool error = style == host::MessageStyle::Critical ||
                       style == host::MessageStyle::Exclamation || title == "Error" ||
                       title == "Erro";
    return (error ? err_ : out_).Show(text, style, buttons, title);
}

ConnectorSession::ConnectorSession(CommandContext& context, const std::string& origin,
                                   ProgressDetail detail, host::IMessageBoxService* windowBoxes)
    : office_(context.dataFolder),
      notifier_(std::make_shared<TerminalNotifier>(context.out, ::isatty(STDOUT_FILENO) == 1, detail)),
      boxes_(context.in, context.out, context.err),
      services_(office_.Services(notifier_.get(),
                                 windowBoxes != nullptr ? windowBoxes : &boxes_)) {
    office_.settingsStore.SetOrigin(origin);
    try {
        modulePath_ = ConnectorModulePath();
        module_ = std::make_unique<ComponentModule>(modulePath_);
        connector_ = module_->CreateConnector(ConnectorClassId());
        // Attached before the connector's first call, which is the first that needs the host.
        attachment_ = std::make_unique<host::HostAttachment>(services_, modulePath_);
    } catch (const Error& error) {
        if (error.Description().find("KITRA_COMPONENT_REGISTRY") != std::string::npos) throw;
        throw Error(error.Description() + " " + ComponentHelp());
    }
    connector_->EventNotifier(notifier_);
    connector_->Init();
}

std::vector<std::string> ConnectorSession::ConnectorRefusals() {
    std::vector<std::string> said;
    boxes_.collected = &said;
    bool valid = false;
    try {
        valid = Connector().ValidateSettings();
    } catch (...) {
        boxes_.collected = nullptr;
        throw;
    }
    boxes_.collected = nullptr;
    if (!valid && said.empty())
        said.push_back("O conector não consegue ler as configurações guardadas.");
    if (valid) said.clear();
    return said;
}

ConnectorSession::~ConnectorSession() {
    if (connector_) connector_->Dispose();
    connector_.Reset();
    module_.reset();
    attachment_.reset();
}

}  // namespace kitra::backoffice::cli
