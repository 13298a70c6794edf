#include "settings/Restaurant.h"

#include "settings/SettingsXml.h"

namespace kitra {

using namespace settings_xml;

pugi::xml_node Restaurant::WriteXml(pugi::xml_document& document) const {
    pugi::xml_node element = document.append_child("Restaurant");
    if (!element) return element;
    WriteText(element, "Name", Name);
    WriteText(element, "ServerName", ServerName);
    WriteText(element, "ServerPort", ServerPort);
    WriteText(element, "ServerDBName", ServerDBName);
    WriteText(element, "ServerUser", ServerUser);
    WriteText(element, "ServerPassword", ServerPassword);
    WriteInteger(element, "WorkstationID", WorkstationID);
    WriteText(element, "ItemIDPrefix", ItemIDPrefix);
    WriteInteger(element, "DefaultWarehouseID", DefaultWarehouseID);
    WriteInteger(element, "WasteWarehouseID", WasteWarehouseID);
    WriteNumber(element, "DefaultSupplierID", DefaultSupplierID);
    WriteText(element, "TransSerial", TransSerial);
    WriteFlag(element, "StockManagement", StockManagement);
    WriteText(element, "ImportDateEntities", ImportDateEntities);
    WriteText(element, "ImportDateTransactions", ImportDateTransactions);
    return element;
}

void Restaurant::ReadXml(pugi::xml_node element, const host::IUtilityService& numbers) noexcept {
    ReadText(element, "Name", Name);
    ReadText(element, "ServerName", ServerName);
    ReadText(element, "ServerPort", ServerPort);
    ReadText(element, "ServerDBName", ServerDBName);
    ReadText(element, "ServerUser", ServerUser);
    ReadText(element, "ServerPassword", ServerPassword);
    ReadInt16(element, "WorkstationID", WorkstationID, numbers);
    ReadText(element, "ItemIDPrefix", ItemIDPrefix);
    ReadInt16(element, "DefaultWarehouseID", DefaultWarehouseID, numbers);
    ReadInt16(element, "WasteWarehouseID", WasteWarehouseID, numbers);
    ReadNumber(element, "DefaultSupplierID", DefaultSupplierID, numbers);
    ReadText(element, "TransSerial", TransSerial);
    ReadText(element, "ImportDateEntities", ImportDateEntities);
    ReadText(element, "ImportDateTransactions", ImportDateTransactions);
    ReadFlag(element, "StockManagement", StockManagement, numbers);
}

}  // namespace kitra
