#include "backoffice/StartingData.h"

#include "backoffice/BackOffice.h"

namespace kitra::backoffice {
namespace {

using namespace host;

void WriteTaxRegions(Database& database) {
    Statement region(database,
                     "INSERT INTO tax_regions (CountryID, TaxRegionID, Description) VALUES (?,?,?)");
    const struct {
        std::int32_t id;
        const char* description;
    } regions[] = {{1, "Continente"},
                   {2, "Região Autónoma dos Açores"},
                   {3, "Região Autónoma da Madeira"}};
    for (const auto& r : regions) {
        region.Reset();
        region.Bind({Variant("PT"), Variant(r.id), Variant(r.description)}).Run();
    }
}

void WriteCompany(Database& database) {
    Statement company(database,
                      "INSERT INTO company (CompanyID, Name, FederalTaxID, AddressLine1, "
                      "PostalCode, Locality, CountryID, TaxRegionID, CurrencyID, "
                      "DefaultUnitOfSaleID, DefaultSalesZoneID, DefaultCustomerTypeID, "
                      "DefaultPaymentTermID, DefaultTenderID, DefaultPriceLineID) "
                      "VALUES (1,?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
    // New customers refer to the "Geral" zone, customer type and payment term (key 1), which
    // the import creates before its first record, to cash (tender 1) and to price line 1.
    company
        .Bind({Variant("Restaurantes do Mondego, Lda."), Variant("509123457"),
               Variant("Rua Ferreira Borges, 45"), Variant("3000-180"), Variant("Coimbra"),
               Variant("PT"), Variant(std::int32_t{1}), Variant("EUR"), Variant("UN"),
               Variant(std::int32_t{1}), Variant(std::int32_t{1}), Variant(std::int32_t{1}),
               Variant(std::int32_t{1}), Variant(std::int32_t{1})})
        .Run();
}

void WriteTaxableGroups(ITaxableGroupService& groups) {
    // Mainland, Azores and Madeira rates of each class.
    const struct {
        std::int16_t id;
        const char* description;
        double mainland, azores, madeira;
    } classes[] = {{1, "Taxa normal", 23, 16, 22},
                   {2, "Taxa intermédia", 13, 9, 12},
                   {3, "Taxa reduzida", 6, 4, 5},
                   {4, "Isento", 0, 0, 0}};
    for (const auto& c : classes) {
        TaxableGroup group;
        group.Description = c.description;
        group.Rates = {{"PT", 1, c.mainland}, {"PT", 2, c.azores}, {"PT", 3, c.madeira}};
        groups.Save(group, c.id, true);
    }
}

void WriteTenders(ITenderService& tenders) {
    const Tender list[] = {
        {1, "Dinheiro", tender_type::kCash, true, 0, 0, true},
        {2, "Multibanco", tender_type::kCard, false, 0, 0, false},
        {3, "Cartão de crédito", tender_type::kCard, false, 0, 0, false},
        {4, "Cheque", tender_type::kCheque, false, 0, 0, true},
        {5, "Vale de refeição", tender_type::kVoucher, false, 0, 0, true},
        {6, "Conta corrente", tender_type::kOnAccount, false, 0, 0, false},
    };
    for (const auto& tender : list) tenders.Save(tender, tender.TenderID, true);
}

void WriteDocumentTypes(IDocumentTypeService& types) {
    const DocumentType list[] = {
        {"VB", "VENDA A BALCÃO", DocumentKind::Sale},
        {"FAC", "FACTURA", DocumentKind::CreditSale},
        {"DEV", "DEVOLUÇÃO", DocumentKind::Return},
        {"GT", "GUIA DE TRANSPORTE", DocumentKind::StockTransport},
        {"EC", "ENTRADA DE CAIXA", DocumentKind::CashEntrance},
        {"SC", "SAÍDA DE CAIXA", DocumentKind::CashWithdrawal},
        {"PCL", "PAGAMENTO DE CLIENTES", DocumentKind::CustomerPayment},
        {"ADC", "ADIANTAMENTO DE CLIENTES", DocumentKind::CustomerPaymentOnAccount},
        {"AC", "AUTOCONSUMO", DocumentKind::SelfConsumption},
    };
    for (const auto& type : list) types.Save(type, type.DocumentTypeID, true);
}

void WriteDocumentSeries(IDocumentSeriesService& series) {
    const DocumentSeries list[] = {
        {"A", "Série principal", SeriesKind::Signed, true},
        {"EXT", "Série externa dos restaurantes", SeriesKind::ExternalUnsigned, true},
    };
    for (const auto& s : list) series.Save(s, s.SeriesID, true);
}

}  // namespace

void WriteStartingData(BackOffice& backOffice) {
    Database& database = backOffice.GetDatabase();
    // The file only gets its real name once all of this is written (BackOffice::Create), so
    // the services' own one-record transactions are enough here.
    {
        Transaction transaction(database);
        WriteTaxRegions(database);
        WriteCompany(database);
        transaction.Commit();
    }
    WriteTaxableGroups(backOffice.taxableGroups);
    WriteTenders(backOffice.tenders);
    WriteDocumentTypes(backOffice.documentTypes);
    WriteDocumentSeries(backOffice.documentSeries);
    for (std::int16_t id : {1, 2}) {
        backOffice.warehouses.Save({id, id == 1 ? "Armazém principal" : "Armazém de quebras"}, id,
                                   true);
    }
    for (std::int16_t id : {1, 2, 3})
        backOffice.workstations.Save({id, "Posto " + std::to_string(id)}, id, true);
    backOffice.suppliers.Save({1, "Distribuidora Alimentar do Centro, Lda.", "508234565"}, 1.0,
                              true);
    backOffice.unitsOfSale.Save({"UN", "Unidade"}, "UN", true);
    backOffice.unitsOfSale.Save({"KG", "Quilograma"}, "KG", true);
}

}  // namespace kitra::backoffice
