// kitra-host document-type, tender, taxable-group, warehouse, workstation and supplier: the back
// office's own records that the connector's settings name. Each has list (--json), add, set and
// remove, shaped like `series`: the code first, then the description, then what the record is.
// What is wrong on the command line exits 2; what the back office refuses (a code already
// there, a record that does not exist, a record still referred to) exits 1.
#include <algorithm>
#include <cctype>
#include <map>
#include <ostream>

#include <fmt/format.h>

#include "backoffice/BackOffice.h"
#include "backoffice/cli/Command.h"
#include "backoffice/cli/JsonText.h"
#include "backoffice/cli/RecordText.h"
#include "core/Error.h"

namespace kitra::backoffice::cli {
namespace {

constexpr std::int32_t kLargestShortCode = 32767;  // the 16-bit keys of these records
constexpr std::int32_t kLargestLongCode = 2147483647;
constexpr std::size_t kDocumentTypeCodeLimit = 10;

const std::vector<NamedCode>& DocumentKinds() {
    static const std::vector<NamedCode> kinds = {
        {1, "venda", "venda"},
        {2, "venda-a-crédito", "venda-a-credito"},
        {3, "devolução", "devolucao"},
        {4, "transporte", "transporte"},
        {5, "entrada-de-caixa", "entrada-de-caixa"},
        {6, "saída-de-caixa", "saida-de-caixa"},
        {7, "recibo", "recibo"},
        {8, "adiantamento", "adiantamento"},
        {9, "autoconsumo", "autoconsumo"},
    };
    return kinds;
}

const std::vector<NamedCode>& TenderTypes() {
    static const std::vector<NamedCode> types = {
        {host::tender_type::kCash, "dinheiro", "dinheiro"},
        {host::tender_type::kCheque, "cheque", "cheque"},
        {host::tender_type::kTransfer, "transferência", "transferencia"},
        {host::tender_type::kCard, "cartão", "cartao"},
        {host::tender_type::kVoucher, "vale", "vale"},
        {host::tender_type::kOnAccount, "conta-corrente", "conta-corrente"},
    };
    return types;
}

std::string Description(const std::string& text) {
    return RecordText(text, "A descrição não pode ficar vazia.");
}

// The connector's settings name a record in these attributes.
const std::vector<std::pair<std::string, std::string>> kDocumentTypeAttributes = {
    {"KitraConnectorSetting", "InvoiceTransDocument"},
    {"KitraConnectorSetting", "CreditTransDocument"},
    {"KitraConnectorSetting", "StockTransDocument"},
    {"KitraConnectorSetting", "CashEntranceTransDocument"},
    {"KitraConnectorSetting", "CashWithdrawalTransDocument"},
    {"KitraConnectorSetting", "CustomerPaymentTransDocument"},
    {"KitraConnectorSetting", "CustomerPaymentAccountDocument"},
    {"KitraConnectorSetting", "SelfConsumptionTransDocument"}};
const std::vector<std::pair<std::string, std::string>> kTenderAttributes = {
    {"KitraConnectorSetting", "DefaultTenderPayment"}, {"Tender", "POSTenderID"}};
const std::vector<std::pair<std::string, std::string>> kTaxableGroupAttributes = {
    {"KitraConnectorSetting", "DefaultTaxableGroup"}, {"TaxableGroup", "TaxableGroupID"}};
const std::vector<std::pair<std::string, std::string>> kWarehouseAttributes = {
    {"Restaurant", "DefaultWarehouseID"}, {"Restaurant", "WasteWarehouseID"}};
const std::vector<std::pair<std::string, std::string>> kWorkstationAttributes = {
    {"Restaurant", "WorkstationID"}};
const std::vector<std::pair<std::string, std::string>> kSupplierAttributes = {
    {"Restaurant", "DefaultSupplierID"}};

std::function<bool(const std::string&)> NumberIs(std::int32_t code) {
    return [code](const std::string& value) { return SettingsNumberIs(value, code); };
}

// Adds "N what" to the references when the count is not 0.
void AddCount(std::vector<std::string>& references, long long count, const std::string& one,
              const std::string& many) {
    if (count > 0) references.push_back(Counted(count, one, many));
}

void Append(std::vector<std::string>& to, const std::vector<std::string>& more) {
    to.insert(to.end(), more.begin(), more.end());
}

template <class Service, class Key>
void RequireExisting(const Service& service, const Key& key, const std::string& code) {
    if (!service.Exists(key))
        throw Error(fmt::format("Não existe {} com o código {}.", service.RecordName(), code));
}

template <class Service, class Key>
void RequireNew(const Service& service, const Key& key, const std::string& code) {
    if (service.Exists(key))
        throw Error(fmt::format("Já existe {} com o código {}.", service.RecordName(), code));
}

// A set with nothing to change is a mistake of the command line.
void RequireSomething(bool something, const std::string& usage) {
    if (!something) throw UsageError("Diga o que muda. Uso: kitra-host " + usage);
}

// ---- document types ----

constexpr const char* kDocumentTypeUsage =
    "document-type list [--json] | add CÓDIGO DESCRIÇÃO NATUREZA | "
    "set CÓDIGO [--description TEXTO] [--kind NATUREZA] | remove CÓDIGO";

std::string DocumentTypeCode(const std::string& code) {
    if (code.empty() || code.size() > kDocumentTypeCodeLimit ||
        code.find_first_of(" \t;'\"") != std::string::npos ||
        std::any_of(code.begin(), code.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; })) {
        throw UsageError(fmt::format(
            "O código do tipo de documento deve ter de 1 a {} caracteres, sem espaços nem aspas.",
            kDocumentTypeCodeLimit));
    }
    return code;
}

bool SameAsciiText(const std::string& a, const std::string& b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [&](char x, char y) { return lower(x) == lower(y); });
}

host::DocumentKind DocumentKindOf(const std::string& text) {
    return static_cast<host::DocumentKind>(PickNamed(DocumentKinds(), text, "Natureza de documento"));
}

}  // namespace

int RunDocumentType(CommandContext& context) {
    const std::string action = TakeAction(context, kDocumentTypeUsage);
    if (action == "list") {
        const bool json = context.TakeFlag("--json");
        ExpectArguments(context, 0, kDocumentTypeUsage);
        BackOffice office(context.dataFolder);
        std::string list;
        for (const host::DocumentType& type : office.documentTypes.List()) {
            const int kind = static_cast<int>(type.Kind);
            if (json) {
                list += fmt::format("{}{{\"code\":{},\"description\":{},\"kind\":{},\"kindName\":{}}}",
                                    list.empty() ? "" : ",", Json(type.DocumentTypeID),
                                    Json(type.Description), kind, Json(NameOf(DocumentKinds(), kind)));
            } else {
                context.out << fmt::format("{}\t{}\t{}\n", type.DocumentTypeID,
                                           NameOf(DocumentKinds(), kind), type.Description);
            }
        }
        if (json) context.out << "[" << list << "]\n";
        return kExitOk;
    }
    if (action == "add") {
        ExpectArguments(context, 3, kDocumentTypeUsage);
        const std::string code = DocumentTypeCode(context.arguments[0]);
        const host::DocumentType type{code, Description(context.arguments[1]),
                                      DocumentKindOf(context.arguments[2])};
        BackOffice office(context.dataFolder);
        if (const auto existing = office.documentTypes.Get(code)) {
            throw Error(fmt::format("Já existe o tipo de documento com o código {}.",
                                    existing->DocumentTypeID));
        }
        office.documentTypes.Save(type, code, true);
        context.out << "Tipo de documento '" << code << "' criado.\n";
        return kExitOk;
    }
    if (action == "set") {
        const auto description = context.TakeOption("--description");
        const auto kind = context.TakeOption("--kind");
        ExpectArguments(context, 1, kDocumentTypeUsage);
        RequireSomething(description || kind, kDocumentTypeUsage);
        const std::string code = DocumentTypeCode(context.arguments[0]);
        BackOffice office(context.dataFolder);
        auto type = office.documentTypes.Get(code);
        if (!type) RequireExisting(office.documentTypes, code, code);
        if (description) type->Description = Description(*description);
        if (kind) type->Kind = DocumentKindOf(*kind);
        office.documentTypes.Save(*type, type->DocumentTypeID, false);
        context.out << "Tipo de documento '" << type->DocumentTypeID << "' alterado.\n";
        return kExitOk;
    }
    if (action == "remove") {
        ExpectArguments(context, 1, kDocumentTypeUsage);
        const std::string code = DocumentTypeCode(context.arguments[0]);
        BackOffice office(context.dataFolder);
        const auto type = office.documentTypes.Get(code);
        if (!type) RequireExisting(office.documentTypes, code, code);
        std::vector<std::string> references;
        AddCount(references,
                 CountRows(office, "SELECT COUNT(*) FROM documents WHERE DocumentTypeID = ?", Variant(code)),
                 "documento", "documentos");
        // Codes compare as the back office keeps them: ASCII letters without regard to case.
        Append(references, SettingsUses(office, kDocumentTypeAttributes, [&](const std::string& value) {
                   return SameAsciiText(value, code);
               }));
        RefuseWhileReferred("o tipo de documento " + type->DocumentTypeID, references);
        office.documentTypes.Remove(code);
        context.out << "Tipo de documento '" << type->DocumentTypeID << "' apagado.\n";
        return kExitOk;
    }
    throw UsageError(std::string("Uso: kitra-host ") + kDocumentTypeUsage);
}

namespace {

// ---- tenders ----

constexpr const char* kTenderUsage =
    "tender list [--json] | add CÓDIGO DESCRIÇÃO TIPO | "
    "set CÓDIGO [--description TEXTO] [--type TIPO] | remove CÓDIGO";

std::int16_t TenderCode(const std::string& text) {
    return static_cast<std::int16_t>(NumericCode(text, "da modalidade de pagamento", kLargestShortCode));
}

std::int16_t TenderTypeOf(const std::string& text) {
    return static_cast<std::int16_t>(PickNamed(TenderTypes(), text, "Tipo de modalidade de pagamento"));
}

// What a tender of the type does at the till: cash gives change; cash, cheques and vouchers go
// into the drawer.
void ApplyTenderType(host::Tender& tender, std::int16_t type) {
    tender.TenderType = type;
    tender.GivesChange = type == host::tender_type::kCash;
    tender.OpensCashDrawer = type == host::tender_type::kCash || type == host::tender_type::kCheque ||
                             type == host::tender_type::kVoucher;
}

}  // namespace

int RunTender(CommandContext& context) {
    const std::string action = TakeAction(context, kTenderUsage);
    if (action == "list") {
        const bool json = context.TakeFlag("--json");
        ExpectArguments(context, 0, kTenderUsage);
        BackOffice office(context.dataFolder);
        std::string list;
        for (const host::Tender& tender : office.tenders.List()) {
            const char* type = NameOf(TenderTypes(), tender.TenderType);
            if (json) {
                list += fmt::format(
                    "{}{{\"code\":{},\"description\":{},\"type\":{},\"typeName\":{},"
                    "\"givesChange\":{},\"opensCashDrawer\":{}}}",
                    list.empty() ? "" : ",", tender.TenderID, Json(tender.Description),
                    tender.TenderType, Json(type), tender.GivesChange, tender.OpensCashDrawer);
            } else {
                context.out << fmt::format("{}\t{}\t{}\n", tender.TenderID, type, tender.Description);
            }
        }
        if (json) context.out << "[" << list << "]\n";
        return kExitOk;
    }
    if (action == "add") {
        ExpectArguments(context, 3, kTenderUsage);
        host::Tender tender;
        tender.TenderID = TenderCode(context.arguments[0]);
        tender.Description = Description(context.arguments[1]);
        ApplyTenderType(tender, TenderTypeOf(context.arguments[2]));
        BackOffice office(context.dataFolder);
        RequireNew(office.tenders, tender.TenderID, std::to_string(tender.TenderID));
        office.tenders.Save(tender, tender.TenderID, true);
        context.out << "Modalidade de pagamento " << tender.TenderID << " criada.\n";
        return kExitOk;
    }
    if (action == "set") {
        const auto description = context.TakeOption("--description");
        const auto type = context.TakeOption("--type");
        ExpectArguments(context, 1, kTenderUsage);
        RequireSomething(description || type, kTenderUsage);
        const std::int16_t code = TenderCode(context.arguments[0]);
        const std::int16_t newType = type ? TenderTypeOf(*type) : 0;  // 0: the type stays
        BackOffice office(context.dataFolder);
        auto tender = office.tenders.Get(code);
        if (!tender) RequireExisting(office.tenders, code, std::to_string(code));
        if (description) tender->Description = Description(*description);
        if (newType != 0 && newType != tender->TenderType) {
            // The connector refuses a voucher as a restaurant's tender or as the default one.
            if (newType == host::tender_type::kVoucher) {
                const auto uses = SettingsUses(office, kTenderAttributes, NumberIs(code));
                if (!uses.empty()) {
                    throw Error(fmt::format(
                        "A modalidade de pagamento {} não pode passar a vale: o conector não "
                        "aceita vales onde a usa ({}).",
                        code, uses.front()));
                }
            }
            ApplyTenderType(*tender, newType);
        }
        office.tenders.Save(*tender, code, false);
        context.out << "Modalidade de pagamento " << code << " alterada.\n";
        return kExitOk;
    }
    if (action == "remove") {
        ExpectArguments(context, 1, kTenderUsage);
        const std::int16_t code = TenderCode(context.arguments[0]);
        BackOffice office(context.dataFolder);
        RequireExisting(office.tenders, code, std::to_string(code));
        const Variant key(static_cast<std::int32_t>(code));
        std::vector<std::string> references;
        AddCount(references,
                 CountRows(office, "SELECT COUNT(DISTINCT DocumentKey) FROM document_payments WHERE TenderID = ?", key),
                 "documento pago com ela", "documentos pagos com ela");
        AddCount(references, CountRows(office, "SELECT COUNT(*) FROM cash_movements WHERE TenderID = ?", key),
                 "movimento de caixa", "movimentos de caixa");
        AddCount(references, CountRows(office, "SELECT COUNT(*) FROM customers WHERE TenderID = ?", key),
                 "cliente que a tem como habitual", "clientes que a têm como habitual");
        if (CountRows(office, "SELECT COUNT(*) FROM company WHERE DefaultTenderID = ?", key) > 0)
            references.push_back("a empresa, como modalidade dos clientes novos (DefaultTenderID)");
        Append(references, SettingsUses(office, kTenderAttributes, NumberIs(code)));
        RefuseWhileReferred(fmt::format("a modalidade de pagamento {}", code), references);
        office.tenders.Remove(code);
        context.out << "Modalidade de pagamento " << code << " apagada.\n";
        return kExitOk;
    }
    throw UsageError(std::string("Uso: kitra-host ") + kTenderUsage);
}

namespace {

// ---- taxable groups ----

constexpr const char* kTaxableGroupUsage =
    "taxable-group list [--json] | add CÓDIGO DESCRIÇÃO --rate REGIÃO=TAXA... | "
    "set CÓDIGO [--description TEXTO] [--rate REGIÃO=TAXA]... | remove CÓDIGO";

std::int16_t TaxableGroupCode(const std::string& text) {
    return static_cast<std::int16_t>(NumericCode(text, "da taxa de IVA", kLargestShortCode));
}

// Every "--rate REGIÃO=TAXA" of the command line, by region: the tax regions of the company's
// country, by number.
std::map<std::int32_t, double> TakeRates(CommandContext& context) {
    std::map<std::int32_t, double> rates;
    while (const auto rate = context.TakeOption("--rate")) {
        const std::size_t equals = rate->find('=');
        if (equals == std::string::npos) {
            throw UsageError(fmt::format(
                "'--rate {}' deve ser REGIÃO=TAXA: o número da região fiscal e a taxa (1=23).", *rate));
        }
        const std::int32_t region =
            NumericCode(rate->substr(0, equals), "da região fiscal", kLargestLongCode);
        if (rates.count(region) != 0)
            throw UsageError(fmt::format("A região fiscal {} tem mais de uma taxa.", region));
        rates[region] = VatRate(rate->substr(equals + 1));
    }
    return rates;
}

// Sets the rates in the company's country, refusing a region the back office does not have.
void SetRates(BackOffice& office, host::TaxableGroup& group, const std::map<std::int32_t, double>& rates) {
    const std::string country = office.company.GetTaxContext().CountryID;
    for (const auto& [region, rate] : rates) {
        Statement known(office.GetDatabase(),
                        "SELECT 1 FROM tax_regions WHERE CountryID = ? AND TaxRegionID = ?");
        if (!known.Bind({Variant(country), Variant(region)}).Step()) {
            throw Error(fmt::format("Não existe a região fiscal {} {}.", country, region));
        }
        const auto found = std::find_if(group.Rates.begin(), group.Rates.end(), [&](const auto& r) {
            return r.CountryID == country && r.TaxRegionID == region;
        });
        if (found != group.Rates.end()) {
            found->Rate = rate;
        } else {
            group.Rates.push_back({country, region, rate});
        }
    }
}

std::string RatesText(const host::TaxableGroup& group) {
    std::string text;
    for (const host::TaxableGroupRate& rate : group.Rates)
        text += fmt::format("{}{}={}", text.empty() ? "" : " ", rate.TaxRegionID, RateText(rate.Rate));
    return text;
}

}  // namespace

int RunTaxableGroup(CommandContext& context) {
    const std::string action = TakeAction(context, kTaxableGroupUsage);
    if (action == "list") {
        const bool json = context.TakeFlag("--json");
        ExpectArguments(context, 0, kTaxableGroupUsage);
        BackOffice office(context.dataFolder);
        std::string list;
        for (const host::TaxableGroup& group : office.taxableGroups.List()) {
            if (json) {
                std::string rates;
                for (const host::TaxableGroupRate& rate : group.Rates) {
                    rates += fmt::format("{}{{\"country\":{},\"region\":{},\"rate\":{}}}",
                                         rates.empty() ? "" : ",", Json(rate.CountryID),
                                         rate.TaxRegionID, rate.Rate);
                }
                list += fmt::format("{}{{\"code\":{},\"description\":{},\"rates\":[{}]}}",
                                    list.empty() ? "" : ",", group.TaxableGroupID,
                                    Json(group.Description), rates);
            } else {
                context.out << fmt::format("{}\t{}\t{}\n", group.TaxableGroupID, RatesText(group),
                                           group.Description);
            }
        }
        if (json) context.out << "[" << list << "]\n";
        return kExitOk;
    }
    if (action == "add") {
        const auto rates = TakeRates(context);
        ExpectArguments(context, 2, kTaxableGroupUsage);
        host::TaxableGroup group;
        group.TaxableGroupID = TaxableGroupCode(context.arguments[0]);
        group.Description = Description(context.arguments[1]);
        BackOffice office(context.dataFolder);
        RequireNew(office.taxableGroups, group.TaxableGroupID, std::to_string(group.TaxableGroupID));
        SetRates(office, group, rates);
        // Documents and items take a group's rate in the company's region.
        const host::TaxContext company = office.company.GetTaxContext();
        if (!group.RateIn(company)) {
            throw Error(fmt::format(
                "A taxa de IVA {} precisa de uma taxa na região fiscal da empresa ({} {}): dê-a "
                "com --rate {}=TAXA.",
                group.TaxableGroupID, company.CountryID, company.TaxRegionID, company.TaxRegionID));
        }
        office.taxableGroups.Save(group, group.TaxableGroupID, true);
        context.out << "Taxa de IVA " << group.TaxableGroupID << " criada.\n";
        return kExitOk;
    }
    if (action == "set") {
        const auto description = context.TakeOption("--description");
        const auto rates = TakeRates(context);
        ExpectArguments(context, 1, kTaxableGroupUsage);
        RequireSomething(description || !rates.empty(), kTaxableGroupUsage);
        const std::int16_t code = TaxableGroupCode(context.arguments[0]);
        BackOffice office(context.dataFolder);
        auto group = office.taxableGroups.Get(code);
        if (!group) RequireExisting(office.taxableGroups, code, std::to_string(code));
        if (description) group->Description = Description(*description);
        SetRates(office, *group, rates);
        office.taxableGroups.Save(*group, code, false);
        context.out << "Taxa de IVA " << code << " alterada.\n";
        return kExitOk;
    }
    if (action == "remove") {
        ExpectArguments(context, 1, kTaxableGroupUsage);
        const std::int16_t code = TaxableGroupCode(context.arguments[0]);
        BackOffice office(context.dataFolder);
        RequireExisting(office.taxableGroups, code, std::to_string(code));
        const Variant key(static_cast<std::int32_t>(code));
        std::vector<std::string> references;
        AddCount(references, CountRows(office, "SELECT COUNT(*) FROM items WHERE TaxableGroupID = ?", key),
                 "artigo", "artigos");
        AddCount(references,
                 CountRows(office, "SELECT COUNT(*) FROM document_lines WHERE TaxableGroupID = ?", key),
                 "linha de documento", "linhas de documentos");
        Append(references, SettingsUses(office, kTaxableGroupAttributes, NumberIs(code)));
        RefuseWhileReferred(fmt::format("a taxa de IVA {}", code), references);
        office.taxableGroups.Remove(code);
        context.out << "Taxa de IVA " << code << " apagada.\n";
        return kExitOk;
    }
    throw UsageError(std::string("Uso: kitra-host ") + kTaxableGroupUsage);
}

namespace {

// ---- warehouses and workstations ----

constexpr const char* kWarehouseUsage =
    "warehouse list [--json] | add CÓDIGO DESCRIÇÃO | set CÓDIGO --description TEXTO | "
    "remove CÓDIGO";
constexpr const char* kWorkstationUsage =
    "workstation list [--json] | add CÓDIGO DESCRIÇÃO [--warehouse ARMAZÉM] | "
    "set CÓDIGO [--description TEXTO] [--warehouse ARMAZÉM] | remove CÓDIGO";

std::int16_t WarehouseCode(const std::string& text) {
    return static_cast<std::int16_t>(NumericCode(text, "do armazém", kLargestShortCode));
}

std::int16_t WorkstationCode(const std::string& text) {
    return static_cast<std::int16_t>(NumericCode(text, "do posto", kLargestShortCode));
}

}  // namespace

int RunWarehouse(CommandContext& context) {
    const std::string action = TakeAction(context, kWarehouseUsage);
    if (action == "list") {
        const bool json = context.TakeFlag("--json");
        ExpectArguments(context, 0, kWarehouseUsage);
        BackOffice office(context.dataFolder);
        std::string list;
        for (const host::Warehouse& warehouse : office.warehouses.List()) {
            if (json) {
                list += fmt::format("{}{{\"code\":{},\"description\":{}}}", list.empty() ? "" : ",",
                                    warehouse.WarehouseID, Json(warehouse.Description));
            } else {
                context.out << fmt::format("{}\t{}\n", warehouse.WarehouseID, warehouse.Description);
            }
        }
        if (json) context.out << "[" << list << "]\n";
        return kExitOk;
    }
    if (action == "add") {
        ExpectArguments(context, 2, kWarehouseUsage);
        const host::Warehouse warehouse{WarehouseCode(context.arguments[0]),
                                        Description(context.arguments[1])};
        BackOffice office(context.dataFolder);
        RequireNew(office.warehouses, warehouse.WarehouseID, std::to_string(warehouse.WarehouseID));
        office.warehouses.Save(warehouse, warehouse.WarehouseID, true);
        context.out << "Armazém " << warehouse.WarehouseID << " criado.\n";
        return kExitOk;
    }
    if (action == "set") {
        const auto description = context.TakeOption("--description");
        ExpectArguments(context, 1, kWarehouseUsage);
        RequireSomething(description.has_value(), kWarehouseUsage);
        const std::int16_t code = WarehouseCode(context.arguments[0]);
        BackOffice office(context.dataFolder);
        auto warehouse = office.warehouses.Get(code);
        if (!warehouse) RequireExisting(office.warehouses, code, std::to_string(code));
        warehouse->Description = Description(*description);
        office.warehouses.Save(*warehouse, code, false);
        context.out << "Armazém " << code << " alterado.\n";
        return kExitOk;
    }
    if (action == "remove") {
        ExpectArguments(context, 1, kWarehouseUsage);
        const std::int16_t code = WarehouseCode(context.arguments[0]);
        BackOffice office(context.dataFolder);
        RequireExisting(office.warehouses, code, std::to_string(code));
        const Variant key(static_cast<std::int32_t>(code));
        std::vector<std::string> references;
        std::string workstations;
        for (const host::Workstation& workstation : office.workstations.List()) {
            if (workstation.WarehouseID == code)
                workstations += (workstations.empty() ? "" : ", ") + std::to_string(workstation.WorkstationID);
        }
        if (!workstations.empty())
            references.push_back((workstations.find(',') == std::string::npos ? "o posto " : "os postos ") + workstations);
        AddCount(references, CountRows(office, "SELECT COUNT(*) FROM documents WHERE WarehouseID = ?", key),
                 "documento", "documentos");
        AddCount(references,
                 CountRows(office,
                           "SELECT COUNT(*) FROM document_lines WHERE ?1 IN (WarehouseID, TargetWarehouseID)",
                           key),
                 "linha de documento", "linhas de documentos");
        AddCount(references, CountRows(office, "SELECT COUNT(*) FROM stock_movements WHERE WarehouseID = ?", key),
                 "movimento de stock", "movimentos de stock");
        Append(references, SettingsUses(office, kWarehouseAttributes, NumberIs(code)));
        RefuseWhileReferred(fmt::format("o armazém {}", code), references);
        office.warehouses.Remove(code);
        context.out << "Armazém " << code << " apagado.\n";
        return kExitOk;
    }
    throw UsageError(std::string("Uso: kitra-host ") + kWarehouseUsage);
}

int RunWorkstation(CommandContext& context) {
    const std::string action = TakeAction(context, kWorkstationUsage);
    if (action == "list") {
        const bool json = context.TakeFlag("--json");
        ExpectArguments(context, 0, kWorkstationUsage);
        BackOffice office(context.dataFolder);
        std::string list;
        for (const host::Workstation& workstation : office.workstations.List()) {
            if (json) {
                list += fmt::format("{}{{\"code\":{},\"description\":{},\"warehouse\":{}}}",
                                    list.empty() ? "" : ",", workstation.WorkstationID,
                                    Json(workstation.Description), workstation.WarehouseID);
            } else {
                context.out << fmt::format("{}\t{}\t{}\n", workstation.WorkstationID,
                                           workstation.WarehouseID, workstation.Description);
            }
        }
        if (json) context.out << "[" << list << "]\n";
        return kExitOk;
    }
    if (action == "add" || action == "set") {
        const auto description = action == "set" ? context.TakeOption("--description") : std::nullopt;
        const auto warehouseText = context.TakeOption("--warehouse");
        ExpectArguments(context, action == "add" ? 2 : 1, kWorkstationUsage);
        if (action == "set") RequireSomething(description || warehouseText, kWorkstationUsage);
        const std::int16_t code = WorkstationCode(context.arguments[0]);
        const std::int16_t warehouse = warehouseText ? WarehouseCode(*warehouseText) : 0;  // 0: not given
        host::Workstation workstation;
        if (action == "add") workstation = {code, Description(context.arguments[1]), 1};
        if (description) workstation.Description = Description(*description);
        BackOffice office(context.dataFolder);
        if (action == "add") {
            RequireNew(office.workstations, code, std::to_string(code));
        } else {
            const auto stored = office.workstations.Get(code);
            if (!stored) RequireExisting(office.workstations, code, std::to_string(code));
            if (!description) workstation.Description = stored->Description;
            workstation.WorkstationID = code;
            workstation.WarehouseID = stored->WarehouseID;
        }
        if (warehouse != 0) workstation.WarehouseID = warehouse;
        // A workstation's documents move stock in its warehouse, which must exist.
        if (!office.warehouses.Exists(workstation.WarehouseID)) {
            throw Error(fmt::format("Não existe o armazém com o código {}; crie-o com 'kitra-host "
                                    "warehouse add {} DESCRIÇÃO' ou escolha outro.",
                                    workstation.WarehouseID, workstation.WarehouseID));
        }
        office.workstations.Save(workstation, code, action == "add");
        context.out << "Posto " << code << (action == "add" ? " criado.\n" : " alterado.\n");
        return kExitOk;
    }
    if (action == "remove") {
        ExpectArguments(context, 1, kWorkstationUsage);
        const std::int16_t code = WorkstationCode(context.arguments[0]);
        BackOffice office(context.dataFolder);
        RequireExisting(office.workstations, code, std::to_string(code));
        const Variant key(static_cast<std::int32_t>(code));
        std::vector<std::string> references;
        AddCount(references, CountRows(office, "SELECT COUNT(*) FROM documents WHERE WorkstationID = ?", key),
                 "documento", "documentos");
        AddCount(references, CountRows(office, "SELECT COUNT(*) FROM cash_movements WHERE WorkstationID = ?", key),
                 "movimento de caixa", "movimentos de caixa");
        Append(references, SettingsUses(office, kWorkstationAttributes, NumberIs(code)));
        RefuseWhileReferred(fmt::format("o posto {}", code), references);
        office.workstations.Remove(code);
        context.out << "Posto " << code << " apagado.\n";
        return kExitOk;
    }
    throw UsageError(std::string("Uso: kitra-host ") + kWorkstationUsage);
}

namespace {

// ---- suppliers ----

constexpr const char* kSupplierUsage =
    "supplier list [--json] | add CÓDIGO NOME [--tax-number NIF] | "
    "set CÓDIGO [--name NOME] [--tax-number NIF] | remove CÓDIGO";

std::int32_t SupplierCode(const std::string& text) {
    return NumericCode(text, "do fornecedor", kLargestLongCode);
}

// A supplier's tax number: empty, a Portuguese NIF, or a foreign one after its country's two
// letters (ESB12345678).
std::string SupplierTaxNumber(const std::string& text) {
    if (text.empty() || IsPortugueseTaxNumber(text)) return text;
    const bool foreign = text.size() >= 4 && text.size() <= 20 && std::isupper(static_cast<unsigned char>(text[0])) &&
                         std::isupper(static_cast<unsigned char>(text[1])) &&
                         std::all_of(text.begin() + 2, text.end(), [](char c) {
                             return std::isalnum(static_cast<unsigned char>(c)) != 0;
                         });
    if (!foreign) {
        throw UsageError(fmt::format(
            "O número de contribuinte '{}' não é válido: um NIF português tem 9 algarismos e o "
            "último confere com os outros; um número estrangeiro começa pelas duas letras do "
            "país (ESB12345678).",
            text));
    }
    return text;
}

}  // namespace

int RunSupplier(CommandContext& context) {
    const std::string action = TakeAction(context, kSupplierUsage);
    if (action == "list") {
        const bool json = context.TakeFlag("--json");
        ExpectArguments(context, 0, kSupplierUsage);
        BackOffice office(context.dataFolder);
        std::string list;
        for (const host::Supplier& supplier : office.suppliers.List()) {
            const std::string code = FormatHostNumber(supplier.SupplierID);
            if (json) {
                list += fmt::format("{}{{\"code\":{},\"name\":{},\"taxNumber\":{}}}",
                                    list.empty() ? "" : ",", code, Json(supplier.OrganizationName),
                                    Json(supplier.FederalTaxID));
            } else {
                context.out << fmt::format("{}\t{}\t{}\n", code, supplier.FederalTaxID,
                                           supplier.OrganizationName);
            }
        }
        if (json) context.out << "[" << list << "]\n";
        return kExitOk;
    }
    if (action == "add" || action == "set") {
        const auto name = action == "set" ? context.TakeOption("--name") : std::nullopt;
        const auto taxNumber = context.TakeOption("--tax-number");
        ExpectArguments(context, action == "add" ? 2 : 1, kSupplierUsage);
        if (action == "set") RequireSomething(name || taxNumber, kSupplierUsage);
        const std::int32_t code = SupplierCode(context.arguments[0]);
        host::Supplier supplier;
        supplier.SupplierID = code;
        if (action == "add") supplier.OrganizationName = RecordText(context.arguments[1], "O nome não pode ficar vazio.");
        if (name) supplier.OrganizationName = RecordText(*name, "O nome não pode ficar vazio.");
        if (taxNumber) supplier.FederalTaxID = SupplierTaxNumber(*taxNumber);
        BackOffice office(context.dataFolder);
        if (action == "add") {
            RequireNew(office.suppliers, static_cast<double>(code), std::to_string(code));
        } else {
            const auto stored = office.suppliers.Get(code);
            if (!stored) RequireExisting(office.suppliers, static_cast<double>(code), std::to_string(code));
            if (!name) supplier.OrganizationName = stored->OrganizationName;
            if (!taxNumber) supplier.FederalTaxID = stored->FederalTaxID;
        }
        office.suppliers.Save(supplier, code, action == "add");
        context.out << "Fornecedor " << code << (action == "add" ? " criado.\n" : " alterado.\n");
        return kExitOk;
    }
    if (action == "remove") {
        ExpectArguments(context, 1, kSupplierUsage);
        const std::int32_t code = SupplierCode(context.arguments[0]);
        BackOffice office(context.dataFolder);
        RequireExisting(office.suppliers, static_cast<double>(code), std::to_string(code));
        std::vector<std::string> references;
        AddCount(references, CountRows(office, "SELECT COUNT(*) FROM items WHERE SupplierID = ?", Variant(code)),
                 "artigo", "artigos");
        Append(references, SettingsUses(office, kSupplierAttributes, NumberIs(code)));
        RefuseWhileReferred(fmt::format("o fornecedor {}", code), references);
        office.suppliers.Remove(code);
        context.out << "Fornecedor " << code << " apagado.\n";
        return kExitOk;
    }
    throw UsageError(std::string("Uso: kitra-host ") + kSupplierUsage);
}

}  // namespace kitra::backoffice::cli
