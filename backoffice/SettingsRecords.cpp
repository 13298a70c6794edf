#include "backoffice/SettingsRecords.h"

#include <optional>

#include <fmt/format.h>

namespace kitra::backoffice {
namespace {

// The number the import reads from an attribute written only in digits (0 when it is missing);
// nothing for any other text, which the settings' own checks refuse.
std::optional<long> WholeNumber(const std::string& text) {
    if (text.empty()) return 0;
    if (text.size() > 10 || text.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
    return std::stol(text);
}

bool Exists(const Database& database, const char* sql, const Variant& key) {
    Statement found(database, sql);
    found.Bind({key});
    return found.Step();
}

struct Record {
    const char* attribute;
    const char* what;     // "o posto"
    const char* table;    // for the look-up
    const char* column;
    const char* command;  // the kitra-host command that lists and adds them
    const char* addArguments;
    const char* why;      // what an import would do with a record that is not there
    bool zeroIsNone;
};

constexpr Record kRecords[] = {
    {"WorkstationID", "o posto", "workstations", "WorkstationID", "workstation", "DESCRIÇÃO",
     "os documentos do restaurante ficariam num posto que a retaguarda não tem", false},
    {"DefaultWarehouseID", "o armazém", "warehouses", "WarehouseID", "warehouse", "DESCRIÇÃO",
     "as linhas e o stock dos documentos iriam para um armazém que a retaguarda não tem", false},
    {"WasteWarehouseID", "o armazém de quebras", "warehouses", "WarehouseID", "warehouse",
     "DESCRIÇÃO", "as quebras iriam para um armazém que a retaguarda não tem", true},
    {"DefaultSupplierID", "o fornecedor", "suppliers", "SupplierID", "supplier", "NOME",
     "os artigos do restaurante ficariam com um fornecedor que a retaguarda não tem", false},
};

std::string ValueOf(const RestaurantSettings& restaurant, const Record& record) {
    const std::string attribute = record.attribute;
    if (attribute == "WorkstationID") return restaurant.workstation;
    if (attribute == "DefaultWarehouseID") return restaurant.defaultWarehouse;
    if (attribute == "WasteWarehouseID") return restaurant.wasteWarehouse;
    return restaurant.supplier;
}

}  // namespace

std::vector<std::string> MissingRecordProblems(const Database& database,
                                               const std::vector<RestaurantSettings>& restaurants) {
    std::vector<std::string> problems;
    for (const RestaurantSettings& r : restaurants) {
        const std::string who = "Restaurante '" + r.name + "': ";
        if (r.series.empty()) {
            problems.push_back(who +
                               "não tem série de documentos (TransSerial); cada restaurante numera "
                               "os seus documentos numa série sua ('kitra-host series list', "
                               "'kitra-host series add CÓDIGO DESCRIÇÃO').");
        } else {
            Statement series(database, "SELECT Active FROM document_series WHERE SeriesID=?");
            series.Bind({Variant(r.series)});
            if (!series.Step()) {
                problems.push_back(fmt::format(
                    "{}a série de documentos (TransSerial) '{}' não existe na retaguarda: a "
                    "importação parava no primeiro documento. Crie-a ('kitra-host series add {} "
                    "DESCRIÇÃO') ou indique uma das que existem ('kitra-host series list').",
                    who, r.series, r.series));
            } else if (!series.Column(0).ToBool()) {
                problems.push_back(fmt::format(
                    "{}a série de documentos (TransSerial) '{}' está inactiva na retaguarda: a "
                    "importação parava no primeiro documento.",
                    who, r.series));
            }
        }
        for (const Record& record : kRecords) {
            const std::string text = ValueOf(r, record);
            const std::optional<long> number = WholeNumber(text);
            if (!number) continue;  // not a number: the settings' own checks say so
            if (*number == 0 && record.zeroIsNone) continue;
            const std::string sql =
                fmt::format("SELECT 1 FROM {} WHERE {}=?", record.table, record.column);
            if (*number != 0 && Exists(database, sql.c_str(), Variant(static_cast<double>(*number))))
                continue;
            problems.push_back(fmt::format(
                "{}{} ({}) {} não existe na retaguarda: {}. Crie-o ('kitra-host {} add {} {}') ou "
                "indique um dos que existem ('kitra-host {} list').",
                who, record.what, record.attribute, *number, record.why, record.command,
                *number == 0 ? std::string("CÓDIGO") : std::to_string(*number),
                record.addArguments, record.command));
        }
    }
    return problems;
}

}  // namespace kitra::backoffice
