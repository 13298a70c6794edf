#include "settings/RestaurantEditor.h"

#include <algorithm>

#include "ado/Connection.h"
#include "core/Error.h"
#include "core/Numbers.h"
#include "core/Text.h"
#include "settings/DialogTexts.h"

namespace kitra {
namespace texts = dialog_texts;

std::size_t CharacterCount(const std::string& text) { return DecodeUtf8(text).size(); }

namespace {

DateTime Joined(const DateTime& date, const DateTime& time) {
    return {date.year, date.month, date.day, time.hour, time.minute, time.second};
}

std::string ImportDateText(const DateTime& date, const DateTime& time) {
    return FormatIsoDateTime(Joined(date, time));
}

}  // namespace

DateTime RestaurantEditor::DatePart(const DateTime& moment) {
    return {moment.year, moment.month, moment.day, 0, 0, 0};
}

DateTime RestaurantEditor::TimePart(const DateTime& moment) {
    DateTime time;
    time.hour = moment.hour;
    time.minute = moment.minute;
    time.second = moment.second;
    return time;
}

std::string RestaurantEditor::SupplierEntry(const host::Supplier& supplier) {
    return FormatHostNumber(supplier.SupplierID) + " - " + supplier.OrganizationName;
}

std::string RestaurantEditor::Title() const {
    return services_.application->Text(texts::kRestaurantTitle);
}

std::vector<std::string> RestaurantEditor::SeriesList() const {
    std::vector<std::string> codes;
    for (const host::DocumentSeries& series : services_.documentSeries->List()) {
        codes.push_back(series.SeriesID);
    }
    return codes;
}

std::vector<ListEntry> RestaurantEditor::WarehouseList() const {
    std::vector<ListEntry> entries;
    for (const host::Warehouse& warehouse : services_.warehouses->List()) {
        entries.push_back({std::to_string(warehouse.WarehouseID), warehouse.Description});
    }
    return entries;
}

std::vector<ListEntry> RestaurantEditor::WorkstationList() const {
    std::vector<ListEntry> entries;
    for (const host::Workstation& workstation : services_.workstations->List()) {
        entries.push_back({std::to_string(workstation.WorkstationID),
                           "Terminal " + std::to_string(workstation.WorkstationID)});
    }
    return entries;
}

std::string RestaurantEditor::SupplierName(double supplierId) const {
    if (supplierId <= 0) return {};
    const auto supplier = services_.suppliers->Get(supplierId);
    return supplier ? supplier->OrganizationName : std::string();
}

std::vector<host::Supplier> RestaurantEditor::SearchSuppliers(const std::string& text) const {
    const std::string wanted = FoldCase(Trim(text));
    std::vector<host::Supplier> found;
    for (const host::Supplier& supplier : services_.suppliers->List()) {
        const std::string number = FormatHostNumber(supplier.SupplierID);
        if (wanted.empty() || FoldCase(supplier.OrganizationName).find(wanted) != std::string::npos ||
            number.find(wanted) != std::string::npos) {
            found.push_back(supplier);
        }
    }
    return found;
}

RestaurantForm RestaurantEditor::Show(const Restaurant& record, const DateTime& now) const {
    RestaurantForm form;
    form.txtName = record.Name;
    form.txtServerName = record.ServerName;
    form.txtServerDB = record.ServerDBName;
    form.txtServerUser = record.ServerUser;
    form.txtServerPwd = record.ServerPassword;
    form.txtItemIDPrefix = record.ItemIDPrefix;
    form.txtServerPort = record.ServerPort.empty() ? kDefaultPort : record.ServerPort;

    // The series entry whose text equals the stored one, letter case aside; the first that does.
    const std::string stored = FoldCase(record.TransSerial);
    for (const std::string& code : SeriesList()) {
        if (FoldCase(code) == stored) {
            form.cboTransSerial = code;
            break;
        }
    }
    const auto selectIn = [](const std::vector<ListEntry>& entries, std::int16_t id) {
        const std::string code = std::to_string(id);
        const bool listed = std::any_of(entries.begin(), entries.end(),
                                        [&](const ListEntry& e) { return e.code == code; });
        return listed ? std::optional<std::int16_t>(id) : std::nullopt;
    };
    const std::vector<ListEntry> warehouses = WarehouseList();
    form.cboDefaultWarehouseID = selectIn(warehouses, record.DefaultWarehouseID);
    form.cboWasteWarehouseID = selectIn(warehouses, record.WasteWarehouseID);
    form.cboWorkstation = selectIn(WorkstationList(), record.WorkstationID);

    form.stockManagement = record.StockManagement;
    form.numDefaultSupplierID = record.DefaultSupplierID;

    const DateTime entities = ParseIsoDateTime(record.ImportDateEntities).value_or(now);
    const DateTime transactions = ParseIsoDateTime(record.ImportDateTransactions).value_or(now);
    form.dtpEntityImport = DatePart(entities);
    form.dtpEntityImportTime = TimePart(entities);
    form.dtpTransactionsImport = DatePart(transactions);
    form.dtpTransactionsImportTime = TimePart(transactions);
    return form;
}

std::optional<std::string> RestaurantEditor::FirstFailure(const RestaurantForm& form) const {
    const host::IApplication& application = *services_.application;
    // Only the name is trimmed: a server name of blanks is a server name.
    const std::string name = Trim(form.txtName);
    if (name.empty()) return application.Text(texts::kNameMissing);
    if (CharacterCount(form.txtName) > kNameLimit) {
        return "O nome do restaurante não pode ter mais de " + std::to_string(kNameLimit) +
               " caracteres: é com ele que o log de importações guarda cada importação.";
    }
    if (form.txtServerName.empty()) return texts::kServerNameMissing;
    if (form.txtServerPort.empty()) return texts::kServerPortMissing;
    if (form.txtServerDB.empty()) return texts::kDatabaseMissing;
    if (form.txtServerUser.empty()) return texts::kUserMissing;
    if (!(form.numDefaultSupplierID > 0)) return application.Text(texts::kSupplierMissing);
    if (form.cboTransSerial.empty()) return application.Text(texts::kSeriesMissing);
    if (!Joined(form.dtpEntityImport, form.dtpEntityImportTime).IsValid()) return texts::kEntityDateWrong;
    if (!Joined(form.dtpTransactionsImport, form.dtpTransactionsImportTime).IsValid()) {
        return texts::kTransactionsDateWrong;
    }
    return std::nullopt;
}

bool RestaurantEditor::Accept(const RestaurantForm& form, Restaurant& record) const {
    if (const auto failure = FirstFailure(form)) {
        Say(*failure, services_.application->Text(texts::kFormTitle));
        return false;
    }
    Take(form, record);
    return true;
}

void RestaurantEditor::Take(const RestaurantForm& form, Restaurant& record) {
    record.Name = form.txtName;
    record.ServerName = form.txtServerName;
    record.ServerPort = form.txtServerPort;
    record.ServerDBName = form.txtServerDB;
    record.ServerUser = form.txtServerUser;
    record.ServerPassword = form.txtServerPwd;
    record.ItemIDPrefix = form.txtItemIDPrefix;
    record.TransSerial = form.cboTransSerial;
    record.DefaultWarehouseID = form.cboDefaultWarehouseID.value_or(0);
    record.WasteWarehouseID = form.cboWasteWarehouseID.value_or(0);
    record.WorkstationID = form.cboWorkstation.value_or(0);
    record.StockManagement = form.stockManagement;
    record.DefaultSupplierID = form.numDefaultSupplierID;
    record.ImportDateEntities = ImportDateText(form.dtpEntityImport, form.dtpEntityImportTime);
    record.ImportDateTransactions =
        ImportDateText(form.dtpTransactionsImport, form.dtpTransactionsImportTime);
}

std::string RestaurantEditor::TestConnectionText(const RestaurantForm& form) {
    // The blank before "User=" and the lower-case "port=" are this test's own; the import writes
    // "Port=". The driver accepts both.
    return "Driver={MySQL ODBC 5.1 Driver};Server=" + form.txtServerName +
           ";Database=" + form.txtServerDB + "; User=" + form.txtServerUser +
           ";Password=" + form.txtServerPwd + ";Option=3;port=" + form.txtServerPort;
}

bool RestaurantEditor::TestConnection(const RestaurantForm& form) const {
    try {
        ado::Connection connection(TestConnectionText(form));
        connection.Open();
        connection.Close();
    } catch (const std::exception& error) {
        Say(texts::kConnectionFailed + DescriptionOf(error), "Error");
        return false;
    }
    Say(texts::kConnectionMade, Title());
    return true;
}

void RestaurantEditor::Say(const std::string& text, const std::string& title) const {
    if (services_.messageBoxes == nullptr) return;
    services_.messageBoxes->Show(text, host::MessageStyle::Information, host::MessageButtons::Ok, title);
}

}  // namespace kitra
