// kitra-dialog-screenshots: pictures of the connector's dialogs over a back office, taken on the
// offscreen platform (no display needed), for the project's documentation.
//   kitra-dialog-screenshots --data DIR --out DIR
// writes log-list.png (the import log list), log-contents.png (the newest log's contents),
// settings.png (the settings dialog on the stored settings) and restaurant.png (the editor on
// the first restaurant).
#include <QApplication>
#include <QPixmap>
#include <QTableWidget>
#include <filesystem>
#include <iostream>
#include <string>

#include "backoffice/BackOffice.h"
#include "backoffice/RecordingServices.h"
#include "log/DSOKitraLog.h"
#include "log/qt/frmKitraLog.h"
#include "log/qt/frmKitraLogContents.h"
#include "settings/qt/frmAddRestaurant.h"
#include "settings/qt/frmSettings.h"

namespace {

bool Save(QWidget& dialog, const std::filesystem::path& file) {
    dialog.show();
    QApplication::processEvents();
    if (!dialog.grab().save(QString::fromStdString(file.string()))) {
        std::cerr << "kitra-dialog-screenshots: não foi possível gravar " << file << "\n";
        return false;
    }
    std::cout << file.string() << "\n";
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    std::filesystem::path data, out;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string option = argv[i];
        if (option == "--data") data = argv[i + 1];
        else if (option == "--out") out = argv[i + 1];
    }
    if (data.empty() || out.empty()) {
        std::cerr << "Uso: kitra-dialog-screenshots --data PASTA --out PASTA\n";
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    try {
        kitra::backoffice::BackOffice office(data);
        kitra::backoffice::RecordingMessageBoxes boxes;
        const kitra::host::HostServices services = office.Services(nullptr, &boxes);

        kitra::frmKitraLog list(services);
        auto* grid = list.findChild<QTableWidget*>(QStringLiteral("vsfImportLog"));
        if (grid == nullptr || grid->rowCount() == 0) {
            std::cerr << "kitra-dialog-screenshots: o log de importações está vazio.\n";
            return 1;
        }
        grid->selectRow(0);
        if (!Save(list, out / "log-list.png")) return 1;

        // The newest log: the list's first row.
        kitra::DSOKitraLog log(services);
        kitra::ado::Recordset newest = log.GetKitraLogRS();
        const auto record = log.GetLogInfo(newest["RestaurantID"].ToText(),
                                           newest["ImportDate"].ToDate(), true);
        if (!record) {
            std::cerr << "kitra-dialog-screenshots: não foi possível ler o log mais recente.\n";
            return 1;
        }
        kitra::frmKitraLogContents contents(services);
        contents.Fill(*record);
        contents.resize(900, 560);
        if (!Save(contents, out / "log-contents.png")) return 1;

        kitra::KitraConnectorSetting setting(*services.utility);
        if (!services.settingsStore->Load(setting) || setting.Restaurants.Count() == 0) {
            std::cerr << "kitra-dialog-screenshots: não há configurações com restaurantes.\n";
            return 1;
        }
        kitra::frmSettings settings(services);
        settings.Open(setting);
        // The tender grid's first host cell is current, so its "..." list button shows.
        if (auto* payments = settings.findChild<QTableWidget*>(QStringLiteral("vsfPayments"));
            payments != nullptr && payments->rowCount() > 0) {
            payments->setCurrentCell(0, kitra::frmSettings::kHostCode);
        }
        if (!Save(settings, out / "settings.png")) return 1;
        kitra::frmAddRestaurant restaurant(services);
        restaurant.ShowRecord(setting.Restaurants.Item(1));
        return Save(restaurant, out / "restaurant.png") ? 0 : 1;
    } catch (const std::exception& e) {
        std::cerr << "kitra-dialog-screenshots: " << e.what() << "\n";
        return 1;
    }
}
