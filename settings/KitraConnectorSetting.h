#pragma once
// The connector's settings: the host document types the import creates, the default tender and
// taxable group, the restaurants to import from and the two equivalence tables. The host files
// them as one XML text (ToXML / FromXML) under the keys "Quarn.Mercatill.Connector" and "Kitra".
//
// The host's number parser reads the numbers in that text, so it is given to the constructor;
// Restaurant::ReadXml and Restaurants::ReadXml take it as an extra argument for the same reason.
#include <cstdint>
#include <string>
#include <vector>

#include "host/IGenericSetting.h"
#include "host/IUtilityService.h"
#include "settings/EquivalenceMappings.h"
#include "settings/Restaurants.h"

namespace kitra {

class KitraConnectorSetting : public host::IGenericSetting {
public:
    // `numbers` must outlive the object.
    explicit KitraConnectorSetting(const host::IUtilityService& numbers);

    // Host document types, in the order callers address them.
    std::string InvoiceTransDocument;
    std::string CreditTransDocument;
    std::string StockTransDocument;
    // Never written to or read from the XML, so it always starts empty; it stays in this place
    // because callers address the fields in this order.
    std::string RefundTransDocument;
    std::string CashEntranceTransDocument;
    std::string CashWithdrawalTransDocument;
    std::string CustomerPaymentTransDocument;
    std::string CustomerPaymentAccountDocument;
    std::string SelfConsumptionTransDocument;
    std::int16_t DefaultTenderPayment = 0;  // host tender for a restaurant tender without equivalence
    std::int16_t DefaultTaxableGroup = 0;   // host taxable group for a VAT rate without equivalence
    kitra::Restaurants Restaurants;
    std::vector<TenderMapping> TenderEquivalence;              // in table order
    std::vector<TaxableGroupMapping> TaxableGroupEquivalence;  // in table order

    std::string Key1() const override;  // "Quarn.Mercatill.Connector"
    std::string Key2() const override;  // "Kitra"
    bool ExportToBranch() const override;  // false

    // Replaces the settings from `xml`. A text that is not well-formed changes nothing; an
    // absent or unreadable attribute leaves its field as it was; a table absent from the text
    // keeps its rows. Never throws.
    void FromXML(const std::string& xml) override;
    // The settings as one compact XML text without declaration.
    std::string ToXML() const override;

    // The same read as FromXML, for callers that hold this class rather than the interface.
    void ReadFromXml(const std::string& xml);

private:
    const host::IUtilityService* numbers_;
};

}  // namespace kitra
