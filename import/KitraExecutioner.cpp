#include "import/KitraExecutioner.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "core/Paths.h"
#include "import/Importers.h"
#include "import/LogFileName.h"

namespace kitra {
namespace fs = std::filesystem;

namespace {

constexpr const char* kRunSection = "Restaurantes";

}  // namespace

const Clock& KitraExecutioner::DefaultClock() {
    static const SystemClock clock;
    return clock;
}

KitraExecutioner::KitraExecutioner(const host::HostServices& services, const Clock& clock)
    : services_(services), clock_(clock) {}

KitraExecutioner::~KitraExecutioner() = default;

std::string KitraExecutioner::GeneralDate(const DateTime& moment) const {
    return FormatDatePattern(moment, services_.application->GeneralDateForm());
}

void KitraExecutioner::ShowBox(const std::string& text, host::MessageStyle style,
                               const std::string& title) {
    if (services_.messageBoxes != nullptr) {
        services_.messageBoxes->Show(text, style, host::MessageButtons::Ok, title);
    }
}

void KitraExecutioner::StartImport() {
    settings_ = std::make_unique<KitraConnectorSetting>(*services_.utility);
    if (!services_.settingsStore->Load(*settings_)) return;  // nothing configured: say nothing

    logService_.emplace(services_);
    if (!logService_->CheckOrCreateKitraLogTable()) {
        ShowBox("Ocorreu um erro ao criar/abrir a tabela de Log para este conector.",
                host::MessageStyle::Plain, services_.application->Title());
        return;
    }
    // The host business objects the importers share are the host's installed services; the
    // engine keeps its reference to them for the whole run.
    ImportRestaurants();
}

void KitraExecutioner::ImportRestaurants() {
    try {
        showErrorMessageBoxs = false;
        bool entityFailure = false;
        bool transactionFailure = false;
        for (Restaurant& restaurant : settings_->Restaurants) {
            ImportRestaurant(restaurant, entityFailure, transactionFailure);
        }
        // The failure flags are kept but deliberately not consulted: dates move regardless.
        (void)entityFailure;
        (void)transactionFailure;

        services_.settingsStore->Save(*settings_);  // keeps every restaurant's new dates
        NotifyStatus(" ");
        NotifyStatus("Vai-se proceder à compactação da base de dados. ");
        NotifyStatus("Este processo poderá demorar alguns minutos. Por favor aguarde...");
        services_.compaction->CompactDatabase();
        ShowBox("A importação chegou ao fim.", host::MessageStyle::Information,
                services_.application->Title());
    } catch (const std::exception& e) {
        // The run ends here: no further restaurant, no saved settings, no compaction.
        statusText_ =
            "## Erro ## Ocorreu um erro na importação no módulo de importação de restaurantes." +
            std::string(" - ") + DescriptionOf(e);
        try {
            WriteLog(kRunSection, statusText_);
        } catch (...) {
            // The log file itself may be what failed; the box below still tells the user.
        }
        ShowBox(statusText_, host::MessageStyle::Information, "Error");
    }
}

void KitraExecutioner::BeginRestaurant(const std::string& restaurantName) {
    counters_.fill(0);
    warningCount_ = 0;
    logFileName_ = LogFileName(restaurantName, clock_.Now());
}

void KitraExecutioner::SetConnectionTimeouts(long connectionSeconds, long commandSeconds) {
    if (!connection_) connection_ = std::make_unique<ado::Connection>();
    connection_->SetConnectionTimeout(connectionSeconds);
    connection_->SetCommandTimeout(commandSeconds);
}

void KitraExecutioner::ImportRestaurant(Restaurant& restaurant, bool& entityFailure,
                                        bool& transactionFailure) {
    BeginRestaurant(restaurant.Name);

    WriteLog("", "# START # " + GeneralDate(clock_.Now()) + " #");
    statusText_ = "A integrar Restaurante: " + restaurant.Name;
    NotifyStatus(statusText_);
    WriteLog(kRunSection, statusText_);
    WriteLog(kRunSection, "Last entity date import: '" + restaurant.ImportDateEntities + "'");
    WriteLog(kRunSection,
             "Last transactions date import: '" + restaurant.ImportDateTransactions + "'");

    if (!connection_) connection_ = std::make_unique<ado::Connection>();
    // An importer that ends through its error handler leaves the connection open; the next
    // restaurant needs it closed to take its own connection string.
    if (connection_->State() == ado::StateOpen) connection_->Close();
    connection_->SetConnectionString(
        "Driver={MySQL ODBC 5.1 Driver};Server=" + restaurant.ServerName +
        ";Database=" + restaurant.ServerDBName + "; User=" + restaurant.ServerUser +
        ";Password=" + restaurant.ServerPassword + ";Option=3;Port=" + restaurant.ServerPort);
    connection_->SetCursorLocation(ado::CursorLocationEnum::UseClient);

    // Documents refer to the host's default records, so they exist before the first import.
    if (!hostDefaultsEnsured_) {
        EnsureHostDefaults();
        hostDefaultsEnsured_ = true;
    }

    for (const ImporterStep& step : ImporterOrder()) {
        if (!step.run(*this, *connection_, restaurant)) {
            (step.masterData ? entityFailure : transactionFailure) = true;
        }
    }

    // Two separate readings of the clock, as two separate moments are recorded.
    restaurant.ImportDateEntities = FormatIsoDateTime(clock_.Now());
    restaurant.ImportDateTransactions = FormatIsoDateTime(clock_.Now());

    WriteLog("", "# END # " + GeneralDate(clock_.Now()) + " #");

    const std::string path = LogFilePath();
    std::error_code ec;
    if (fs::exists(PathFromUtf8(path), ec)) {
        std::ifstream in(PathFromUtf8(path), std::ios::binary);
        logContents_.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        in.close();
        fs::remove(PathFromUtf8(path), ec);
    } else {
        logContents_ = "Erro na leitura do ficheiro de log '" + path + "'";
    }

    KitraLog record;
    record.IsNew = true;
    record.RestaurantID = restaurant.Name;
    record.ImportDate = clock_.Now();  // whole seconds already
    record.Contents = logContents_;
    logService_->Save(record);  // a clash in the same second fails here and the run goes on

    ReportSummary(restaurant);
    if (warningCount_ > 0) {
        statusText_ +=
            "\rOcorreram algumas situações imprevistas na importação que podem ser verificadas "
            "no log.";
    }
}

void KitraExecutioner::ReportSummary(const Restaurant& restaurant) {
    const auto count = [this](Counter c) { return std::to_string(CountOf(c)); };
    NotifyStatus("----------------");
    NotifyStatus("Resumo Importação Restaurante: " + restaurant.Name);
    NotifyStatus("----------------");
    NotifyStatus(" - Clientes: " + count(Counter::Customers));
    NotifyStatus(" - Vendedores: " + count(Counter::Salesmen));
    NotifyStatus(" - Famílias: " + count(Counter::Families));
    NotifyStatus(" - SubFamílias: " + count(Counter::Subfamilies));
    NotifyStatus(" - Artigos: " + count(Counter::Items));
    NotifyStatus(" - Transacções: " + count(Counter::Transactions));
    NotifyStatus(" - Mov.Caixa: " + count(Counter::CashMovements));
    NotifyStatus(" - Recibos: " + count(Counter::Receipts));
}

std::string KitraExecutioner::LogFilePath() const {
    if (logFileName_.empty()) return {};
    return Utf8FromPath(PathFromUtf8(services_.application->LogFolder()) / PathFromUtf8(logFileName_));
}

void KitraExecutioner::WriteLog(const std::string& section, const std::string& text) {
    const std::string path = LogFilePath();
    if (path.empty()) throw Error("Não há ficheiro de log aberto.");
    // Opened and closed for every line, so a failure leaves every earlier line on disk.
    std::ofstream out(PathFromUtf8(path), std::ios::binary | std::ios::app);
    if (!out) throw Error("Não foi possível escrever no ficheiro de log '" + path + "'");
    out << section << " - " << text << "\r\n";
    out.close();
    if (!out) throw Error("Não foi possível escrever no ficheiro de log '" + path + "'");
}

void KitraExecutioner::NotifyStatus(const std::string& text) {
    if (eventNotifier_) eventNotifier_->NotifyStatus(text);
}

void KitraExecutioner::NotifyProgress(long position, long total, const std::string& text) {
    if (eventNotifier_) eventNotifier_->NotifyProgress(position, total, text);
}

bool KitraExecutioner::ItemSoldByWeight(const std::string& itemCode) {
    if (auto known = soldByWeight_.find(itemCode); known != soldByWeight_.end()) return known->second;
    const std::optional<host::Item> item = services_.items->Get(itemCode);
    const bool byWeight = item && item->ReadQuantityFromScale;
    soldByWeight_.emplace(itemCode, byWeight);
    return byWeight;
}

}  // namespace kitra
