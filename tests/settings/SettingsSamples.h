#pragma once
// Settings used by several test files: a fully filled settings object and its exact XML text.
#include <string>

#include "settings/KitraConnectorSetting.h"

namespace kitra::test {

inline Restaurant SampleRestaurant(const std::string& name, std::int16_t workstation) {
    Restaurant r;
    r.Name = name;
    r.ServerName = "srv-" + name;
    r.ServerPort = "3306";
    r.ServerDBName = "kitrana";
    r.ServerUser = "importer";
    r.ServerPassword = "s3cret";
    r.WorkstationID = workstation;
    r.ItemIDPrefix = name.substr(0, 2);
    r.DefaultWarehouseID = 1;
    r.WasteWarehouseID = 9;
    r.DefaultSupplierID = 12.5;
    r.TransSerial = "2024";
    r.StockManagement = workstation % 2 == 1;
    r.ImportDateEntities = "2024-03-01 08:30:00";
    r.ImportDateTransactions = "2024-03-02 23:59:59";
    return r;
}

inline void FillSample(KitraConnectorSetting& s) {
    s.InvoiceTransDocument = "FS";
    s.CreditTransDocument = "FC";
    s.StockTransDocument = "GT";
    s.CashEntranceTransDocument = "ENT";
    s.CashWithdrawalTransDocument = "SAI";
    s.CustomerPaymentTransDocument = "RE";
    s.CustomerPaymentAccountDocument = "RA";
    s.SelfConsumptionTransDocument = "AC";
    s.DefaultTenderPayment = 1;
    s.DefaultTaxableGroup = 4;
    s.Restaurants.Add(SampleRestaurant("Lisboa", 3));
    s.Restaurants.Add(SampleRestaurant("Porto", 4));
    s.Restaurants.Add(SampleRestaurant("Braga", 5));
    s.TenderEquivalence = {{1, "NUM"}, {3, "MB"}, {5, "CC"}};
    s.TaxableGroupEquivalence = {{1, "23"}, {2, "13"}, {3, "6"}, {4, "0"}, {5, ".5"}};
}

inline std::string SampleRestaurantXml(const std::string& name, const std::string& prefix,
                                       int workstation, const std::string& stock) {
    return "<Restaurant Name=\"" + name + "\" ServerName=\"srv-" + name +
           "\" ServerPort=\"3306\" ServerDBName=\"kitrana\" ServerUser=\"importer\""
           " ServerPassword=\"s3cret\" WorkstationID=\"" +
           std::to_string(workstation) + "\" ItemIDPrefix=\"" + prefix +
           "\" DefaultWarehouseID=\"1\" WasteWarehouseID=\"9\" DefaultSupplierID=\"12,5\""
           " TransSerial=\"2024\" StockManagement=\"" +
           stock +
           "\" ImportDateEntities=\"2024-03-01 08:30:00\""
           " ImportDateTransactions=\"2024-03-02 23:59:59\"/>";
}

// The exact text of FillSample's settings, attributes in their fixed order.
inline std::string SampleXml() {
    return "<KitraConnectorSetting InvoiceTransDocument=\"FS\" CreditTransDocument=\"FC\""
           " StockTransDocument=\"GT\" CashEntranceTransDocument=\"ENT\""
           " CashWithdrawalTransDocument=\"SAI\" CustomerPaymentTransDocument=\"RE\""
           " CustomerPaymentAccountDocument=\"RA\" SelfConsumptionTransDocument=\"AC\""
           " DefaultTenderPayment=\"1\" DefaultTaxableGroup=\"4\">"
           "<Restaurants>" +
           SampleRestaurantXml("Lisboa", "Li", 3, "1") + SampleRestaurantXml("Porto", "Po", 4, "0") +
           SampleRestaurantXml("Braga", "Br", 5, "1") +
           "</Restaurants>"
           "<TenderEquivalence>"
           "<Tender POSTenderID=\"1\" KitraTenderID=\"NUM\"/>"
           "<Tender POSTenderID=\"3\" KitraTenderID=\"MB\"/>"
           "<Tender POSTenderID=\"5\" KitraTenderID=\"CC\"/>"
           "</TenderEquivalence>"
           "<TaxableGroupEquivalence>"
           "<TaxableGroup TaxableGroupID=\"1\" KitraVAT=\"23\"/>"
           "<TaxableGroup TaxableGroupID=\"2\" KitraVAT=\"13\"/>"
           "<TaxableGroup TaxableGroupID=\"3\" KitraVAT=\"6\"/>"
           "<TaxableGroup TaxableGroupID=\"4\" KitraVAT=\"0\"/>"
           "<TaxableGroup TaxableGroupID=\"5\" KitraVAT=\".5\"/>"
           "</TaxableGroupEquivalence>"
           "</KitraConnectorSetting>";
}

}  // namespace kitra::test
