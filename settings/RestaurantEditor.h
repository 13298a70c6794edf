#pragma once
// The rules of the restaurant editor frmAddRestaurant, with no window system: what its lists
// hold, how a Restaurant fills the controls and comes back from them, the validation in its
// order, and the connection test. A view (Qt today) binds its widgets to a RestaurantForm.
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/DateTime.h"
#include "host/HostServices.h"
#include "settings/Restaurant.h"

namespace kitra {

// One entry of a two-column list: the host's code and what the list shows.
struct ListEntry {
    std::string code;
    std::string description;
    bool operator==(const ListEntry&) const = default;
};

// The editor's controls, as values.
struct RestaurantForm {
    std::string txtName, txtServerName, txtServerPort, txtServerDB, txtServerUser, txtServerPwd,
        txtItemIDPrefix;
    std::string cboTransSerial;                      // the selected series' text; empty: none
    std::optional<std::int16_t> cboDefaultWarehouseID;  // the selected entries' codes
    std::optional<std::int16_t> cboWasteWarehouseID;
    std::optional<std::int16_t> cboWorkstation;
    bool stockManagement = false;
    double numDefaultSupplierID = 0;
    // Each import moment as a date picker (its date part) and a time picker (its time part).
    DateTime dtpEntityImport, dtpEntityImportTime;
    DateTime dtpTransactionsImport, dtpTransactionsImportTime;
    bool operator==(const RestaurantForm&) const = default;
};

class RestaurantEditor {
public:
    // The import log table holds a restaurant's name in 25 characters.
    static constexpr std::size_t kNameLimit = 25;
    static constexpr const char* kDefaultPort = "3306";

    explicit RestaurantEditor(const host::HostServices& services) : services_(services) {}

    std::string Title() const;
    // cboTransSerial: the host's series codes.
    std::vector<std::string> SeriesList() const;
    std::vector<ListEntry> WarehouseList() const;
    // "Terminal " and the workstation's number.
    std::vector<ListEntry> WorkstationList() const;
    // The supplier's "OrganizationName", empty when there is no such supplier.
    std::string SupplierName(double supplierId) const;
    // Suppliers whose name or number contains `text` (letter case aside); all for an empty text.
    std::vector<host::Supplier> SearchSuppliers(const std::string& text) const;
    // A supplier as the search lists it: its number, " - " and its name.
    static std::string SupplierEntry(const host::Supplier& supplier);

    // The controls filled from the record; `now` stands in for a date that is not one.
    RestaurantForm Show(const Restaurant& record, const DateTime& now) const;
    // The first failing rule's message, in the dialog's order; nothing when all pass.
    std::optional<std::string> FirstFailure(const RestaurantForm& form) const;
    // OK: validates (the failure is shown, information icon, host text 4130010 as title, and
    // nothing is written), then copies the controls into the record. True when accepted.
    bool Accept(const RestaurantForm& form, Restaurant& record) const;
    // The controls into the record, without validation.
    static void Take(const RestaurantForm& form, Restaurant& record);
    // What the two pickers of an import moment hold: its date part (at midnight) and its time
    // part (on the zero date).
    static DateTime DatePart(const DateTime& moment);
    static DateTime TimePart(const DateTime& moment);

    // The test connection's text, exactly as the editor builds it (" User=", "port=").
    static std::string TestConnectionText(const RestaurantForm& form);
    // Opens and closes a connection with that text and says how it went. True when it opened.
    bool TestConnection(const RestaurantForm& form) const;

private:
    void Say(const std::string& text, const std::string& title) const;

    const host::HostServices& services_;
};

// The number of characters (not bytes) of a UTF-8 text.
std::size_t CharacterCount(const std::string& text);

}  // namespace kitra
