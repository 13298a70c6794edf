#pragma once
// One restaurant database the connector imports from: where its server is, how to log in, the
// host workstation, warehouses, supplier and document series its records get, and how far the
// import has got. Written to and read from one `Restaurant` element of the settings XML.
//
// Reading numbers needs the host's number parser, so ReadXml takes it as a second argument.
#include <cstdint>
#include <string>

#include <pugixml.hpp>

#include "host/IUtilityService.h"

namespace kitra {

class Restaurant {
public:
    std::string Name;  // display name; also the restaurant's key in `Restaurants`
    std::string ServerName;
    std::string ServerPort;  // kept as text, exactly as given
    std::string ServerDBName;
    std::string ServerUser;
    std::string ServerPassword;  // stored in clear text
    std::int16_t WorkstationID = 0;
    std::string ItemIDPrefix;  // put before item codes coming from this restaurant
    std::int16_t DefaultWarehouseID = 0;
    std::int16_t WasteWarehouseID = 0;
    std::int16_t DefaultFamilyID = 0;  // not part of the XML and not edited: stays 0
    double DefaultSupplierID = 0;
    std::string TransSerial;  // host document series of the imported documents
    bool StockManagement = false;
    std::string ImportDateEntities;      // "yyyy-mm-dd hh:mm:ss" of the last master-data import
    std::string ImportDateTransactions;  // "yyyy-mm-dd hh:mm:ss" of the last document import

    bool operator==(const Restaurant&) const = default;

    // Creates a `Restaurant` element in `document` with the fifteen attributes. The element is
    // left at the document's top level, not under the root: the caller moves it where it belongs
    // (xml_node::append_move).
    pugi::xml_node WriteXml(pugi::xml_document& document) const;

    // Reads the attributes of `element`; an absent or unreadable attribute leaves its field as
    // it was and the others are still read. Never throws.
    void ReadXml(pugi::xml_node element, const host::IUtilityService& numbers) noexcept;
};

}  // namespace kitra
