// A minimal Linux host for the Windows suites' comparison: it runs one import of the back office
// in DATA through the connector module, created by class as any host creates it, and prints
// what the run told its notifier ("estado: ..." lines) and its message boxes ("mensagem: ..."),
// as the Windows clients record them.
//   kitra-statuses-host DATA
#include <iostream>

#include "backoffice/BackOffice.h"
#include "backoffice/RecordingServices.h"
#include "connector/Module.h"
#include "core/Error.h"
#include "host/CreateObject.h"
#include "host/HostBusinessLayer.h"
#include "host/IConnector.h"

int main(int argc, char** argv) {
    using namespace kitra;
    if (argc != 2) {
        std::cerr << "uso: kitra-statuses-host PASTA\n";
        return 2;
    }
    try {
        backoffice::BackOffice office(argv[1]);
        office.settingsStore.SetOrigin("execute");
        auto notifier = std::make_shared<backoffice::RecordingEventNotifier>();
        backoffice::RecordingMessageBoxes boxes;
        const host::HostServices services = office.Services(notifier.get(), &boxes);
        const host::HostAttachment attachment(services, KITRA_CONNECTOR_MODULE);
        {
            auto connector = host::CreateObject<host::IConnector>(
                {connector::kProgID_KitraConnector, connector::kCLSID_KitraConnector},
                host::kIID_IConnector, {KITRA_CONNECTOR_MODULE});
            connector->EventNotifier(notifier);
            connector->Execute();
            connector->Dispose();
        }
        for (const std::string& text : notifier->statuses) std::cout << "estado: " << text << "\n";
        for (const auto& box : boxes.shown) std::cout << "mensagem: " << box.text << "\n";
        return 0;
    } catch (const Error& error) {
        std::cerr << "kitra-statuses-host: " << error.Description() << "\n";
        return 1;
    }
}
