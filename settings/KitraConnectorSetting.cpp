#include "settings/KitraConnectorSetting.h"

#include "settings/SettingsXml.h"

namespace kitra {

using namespace settings_xml;

KitraConnectorSetting::KitraConnectorSetting(const host::IUtilityService& numbers)
    : numbers_(&numbers) {}

std::string KitraConnectorSetting::Key1() const { return "Quarn.Mercatill.Connector"; }
std::string KitraConnectorSetting::Key2() const { return "Kitra"; }
bool KitraConnectorSetting::ExportToBranch() const { return false; }

std::string KitraConnectorSetting::ToXML() const {
    // Every step is guarded: what could be written is returned.
    pugi::xml_document document;
    if (!Load("<KitraConnectorSetting/>", document)) return {};
    pugi::xml_node root = document.document_element();

    WriteText(root, "InvoiceTransDocument", InvoiceTransDocument);
    WriteText(root, "CreditTransDocument", CreditTransDocument);
    WriteText(root, "StockTransDocument", StockTransDocument);
    WriteText(root, "CashEntranceTransDocument", CashEntranceTransDocument);
    WriteText(root, "CashWithdrawalTransDocument", CashWithdrawalTransDocument);
    WriteText(root, "CustomerPaymentTransDocument", CustomerPaymentTransDocument);
    WriteText(root, "CustomerPaymentAccountDocument", CustomerPaymentAccountDocument);
    WriteText(root, "SelfConsumptionTransDocument", SelfConsumptionTransDocument);
    WriteInteger(root, "DefaultTenderPayment", DefaultTenderPayment);
    WriteInteger(root, "DefaultTaxableGroup", DefaultTaxableGroup);

    Guarded([&] { MoveUnder(root, Restaurants.WriteXml(document)); });

    Guarded([&] {
        pugi::xml_node table = root.append_child("TenderEquivalence");
        for (const TenderMapping& row : TenderEquivalence) {
            pugi::xml_node tender = table.append_child("Tender");
            WriteInteger(tender, "POSTenderID", row.POSTenderID);
            WriteText(tender, "KitraTenderID", row.KitraTenderID);
        }
    });

    Guarded([&] {
        pugi::xml_node table = root.append_child("TaxableGroupEquivalence");
        for (const TaxableGroupMapping& row : TaxableGroupEquivalence) {
            pugi::xml_node group = table.append_child("TaxableGroup");
            WriteInteger(group, "TaxableGroupID", row.TaxableGroupID);
            // Normalised again on the way out, so a rate set in another form is still written
            // as "23" or ".5"; a rate that is not a number is left out of the row.
            Guarded([&] { WriteText(group, "KitraVAT", NormaliseVat(row.KitraVAT, *numbers_)); });
        }
    });

    try {
        return Render(document);
    } catch (...) {
        return {};
    }
}

void KitraConnectorSetting::FromXML(const std::string& xml) {
    Guarded([&] {
        pugi::xml_document document;
        if (!Load(xml, document)) return;  // a broken text changes nothing
        const pugi::xml_node root = document.document_element();
        const host::IUtilityService& numbers = *numbers_;

        ReadText(root, "InvoiceTransDocument", InvoiceTransDocument);
        ReadText(root, "CreditTransDocument", CreditTransDocument);
        ReadText(root, "StockTransDocument", StockTransDocument);
        ReadText(root, "CashEntranceTransDocument", CashEntranceTransDocument);
        ReadText(root, "CashWithdrawalTransDocument", CashWithdrawalTransDocument);
        ReadText(root, "CustomerPaymentTransDocument", CustomerPaymentTransDocument);
        ReadText(root, "CustomerPaymentAccountDocument", CustomerPaymentAccountDocument);
        ReadText(root, "SelfConsumptionTransDocument", SelfConsumptionTransDocument);
        ReadInt16(root, "DefaultTenderPayment", DefaultTenderPayment, numbers);
        ReadInt16(root, "DefaultTaxableGroup", DefaultTaxableGroup, numbers);

        // The restaurant list is always replaced, even when the text has none.
        Guarded([&] {
            Restaurants.Clear();
            if (const pugi::xml_node list = FindDescendant(root, "Restaurants")) {
                Restaurants.ReadXml(list, numbers);
            }
        });

        // The tables are replaced only when the text has them; rows are taken whatever the
        // element's name, and a row is kept with whatever of it could be read.
        Guarded([&] {
            const pugi::xml_node table = FindDescendant(root, "TenderEquivalence");
            if (!table) return;
            TenderEquivalence.clear();
            for (const pugi::xml_node element : table.children()) {
                if (element.type() != pugi::node_element) continue;
                TenderMapping row;
                ReadInt16(element, "POSTenderID", row.POSTenderID, numbers);
                ReadText(element, "KitraTenderID", row.KitraTenderID);
                Guarded([&] { TenderEquivalence.push_back(std::move(row)); });
            }
        });

        Guarded([&] {
            const pugi::xml_node table = FindDescendant(root, "TaxableGroupEquivalence");
            if (!table) return;
            TaxableGroupEquivalence.clear();
            for (const pugi::xml_node element : table.children()) {
                if (element.type() != pugi::node_element) continue;
                TaxableGroupMapping row;
                ReadInt16(element, "TaxableGroupID", row.TaxableGroupID, numbers);
                ReadVat(element, "KitraVAT", row.KitraVAT, numbers);
                Guarded([&] { TaxableGroupEquivalence.push_back(std::move(row)); });
            }
        });
    });
}

void KitraConnectorSetting::ReadFromXml(const std::string& xml) { FromXML(xml); }

}  // namespace kitra
