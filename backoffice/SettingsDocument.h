#pragma once
// The connector's settings text as the back office sees it: the host never interprets the
// connector's settings beyond what its own commands need, which is the list of restaurants with
// their connection data and import dates. It checks a text before storing it (well-formed and
// strict XML, the expected root, restaurants the import can use), shows it with the passwords
// masked, and moves a restaurant's import dates, changing nothing else in the text.
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

namespace kitra::backoffice {

inline constexpr const char* kSettingsKey1 = "Quarn.Mercatill.Connector";
inline constexpr const char* kSettingsKey2 = "Kitra";
// What a shown settings text has in place of each password.
inline constexpr const char* kMaskedPassword = "********";
// The import log table keeps a restaurant's name in 25 characters.
inline constexpr std::size_t kRestaurantNameLimit = 25;

struct RestaurantSettings {
    std::string name;
    std::string server;
    std::string port;
    std::string database;
    std::string user;
    std::string password;
    std::string importDateEntities;
    std::string importDateTransactions;
    std::string series;  // TransSerial: the back-office document series of its documents
    // The back office's records its documents, lines and items are given, as written (empty
    // when the attribute is missing: the connector then reads 0).
    std::string workstation;       // WorkstationID
    std::string defaultWarehouse;  // DefaultWarehouseID
    std::string wasteWarehouse;    // WasteWarehouseID
    std::string supplier;          // DefaultSupplierID
};

// A restaurant's name as the import and the log tell restaurants apart: without the blanks
// around it and without letter case.
std::string RestaurantNameKey(std::string_view name);

// The problems of restaurants that share a document series: a series belongs to one
// restaurant, whose documents it numbers; a second restaurant in it would replace the first
// one's documents of the same numbers. Series compare without letter case, as the back office
// keeps them. One text per series shared; empty when there is none.
std::vector<std::string> SharedSeriesProblems(const std::vector<RestaurantSettings>& restaurants);

class SettingsDocument {
public:
    // Parses a settings text; fails with an Error that says what is wrong (and where: line and
    // column) when it is empty, not UTF-8 text, not well-formed or not strict XML, or has
    // another root element than KitraConnectorSetting.
    static SettingsDocument Parse(std::string_view text);

    std::vector<RestaurantSettings> Restaurants() const;
    // An attribute of the root (a document type key, say); empty when it is not there.
    std::string RootAttribute(const char* name) const { return Root().attribute(name).value(); }

    // What the host refuses to store: a restaurant without a name or valid import dates, a
    // name longer than the log table holds, a connection value that would change the
    // connection string. One text per problem; empty when there is none.
    std::vector<std::string> Problems() const;
    // What is suspicious but stored: attributes and elements the connector does not know.
    std::vector<std::string> Warnings() const;

    // Sets the restaurant's import dates (those given), the restaurant named as the import
    // compares names (without letter case or blanks around); returns its name as stored.
    // Fails when there is no such restaurant.
    std::string SetImportDates(const std::string& restaurant,
                               const std::optional<std::string>& entities,
                               const std::optional<std::string>& transactions);

    // What loading this text over the `stored` one keeps of it, for each restaurant both texts
    // have (names compared as the import compares them): the stored import dates, unless
    // `datesFromFile` (a file edited for a password must not send a restaurant back to an old
    // date), and the stored password where this text has the mask that `MaskedText` puts (a
    // shown text loaded back). Returns one line per date that this changes or that the file
    // changes, for the user. Fails with an Error when a masked password has no stored one.
    std::vector<std::string> KeepFromStored(const SettingsDocument& stored, bool datesFromFile);

    // Sets one attribute of the restaurant (names compared as the import compares them); fails
    // when there is no such restaurant or the attribute is not one a restaurant has.
    void SetRestaurantAttribute(const std::string& restaurant, const std::string& attribute,
                                const std::string& value);

    std::string Text() const;
    // The text with every password replaced by kMaskedPassword.
    std::string MaskedText() const;

private:
    SettingsDocument() = default;
    pugi::xml_node Root() const { return document_.document_element(); }

    pugi::xml_document document_;
};

// Why a server, database, user or password cannot go into the connection string the import
// builds (it holds ";", "{" or "}"); nothing when it can.
std::optional<std::string> ConnectionValueProblem(const std::string& what, const std::string& value);

// The restaurants of a stored settings text; nothing when the text cannot be read.
std::vector<RestaurantSettings> StoredRestaurants(const std::optional<std::string>& text);

}  // namespace kitra::backoffice
