#include "backoffice/cli/ConnectorSession.h"

#include <unistd.h>

namespace kitra::backoffice::cli {

ConnectorSession::ConnectorSession(CommandContext& context, host::IMessageBoxService* windowBoxes)
    : office_(context.dataFolder),
      notifier_(std::make_shared<TerminalNotifier>(context.out, ::isatty(STDOUT_FILENO) == 1)),
      boxes_(context.in, context.out),
      services_(office_.Services(notifier_.get(),
                                 windowBoxes != nullptr ? windowBoxes : &boxes_)) {
    host::InstallHostServices(&services_);
    try {
        module_ = std::make_unique<ComponentModule>(ConnectorModulePath());
        connector_ = module_->CreateConnector(ConnectorClassId());
        connector_->EventNotifier(notifier_);
        connector_->Init();
    } catch (...) {
        host::InstallHostServices(nullptr);
        throw;
    }
}

ConnectorSession::~ConnectorSession() {
    if (connector_) connector_->Dispose();
    connector_.Reset();
    module_.reset();
    host::InstallHostServices(nullptr);
}

}  // namespace kitra::backoffice::cli
