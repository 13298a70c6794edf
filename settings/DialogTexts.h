#pragma once
// The fixed texts of the two settings dialogs that their rules build messages from: the labels'
// captions as the dialogs show them, the host texts they take by number, and their own messages.
namespace kitra::dialog_texts {

// Host texts (by number).
inline constexpr long kChooseAValueIn = 4130001;     // followed by a label's caption
inline constexpr long kIncompleteRowsIn = 4130002;   // followed by a grid label's caption
inline constexpr long kAtLeastOneIn = 4130004;       // followed by a list label's caption
inline constexpr long kNameMissing = 4130005;
inline constexpr long kSupplierMissing = 4130008;
inline constexpr long kSeriesMissing = 4130009;
inline constexpr long kFormTitle = 4130010;          // title of the restaurant editor's boxes
inline constexpr long kSettingsTitle = 4130014;      // the settings dialog's caption
inline constexpr long kRestaurantTitle = 4130015;    // the restaurant editor's caption

// frmSettings' labels.
inline constexpr const char* lblInvoiceTransDocument = "Documento de Vendas:";
inline constexpr const char* lblCreditSales = "Documento de Vendas a Crédito:";
inline constexpr const char* lblStockDocument = "Documento de Guia de Transporte:";
inline constexpr const char* lblCashEntranceTransDocument = "Documento de Entrada de Caixa:";
inline constexpr const char* lblCashWithdrawalTransDocument = "Documento de Saída de Caixa:";
inline constexpr const char* lblCustumerPaymentTransDocument = "Documento de Pagamento de Clientes:";
inline constexpr const char* lblCustumerPaymentAccountDocument = "Documento de Adiantamento de Clientes:";
inline constexpr const char* lblDefaultTenderPayment = "Modalidade de Pagamento por Omissão:";
inline constexpr const char* lblDefaultTaxableGroup = "Taxa de IVA por Omissão:";
inline constexpr const char* lblPayments = "Equivalência de Modalidades de Pagamento:";
inline constexpr const char* lblTaxableGroups = "Equivalência de Taxas de IVA:";
inline constexpr const char* lblRestaurants = "Restaurantes:";

// frmSettings' own messages.
inline constexpr const char* kZoneFailure =
    "Foi encontrado um erro na leitura da configuração na zona '";
inline constexpr const char* kSeriesNotExternalUnsigned =
    "As séries usadas na integração de dados têm que ser do tipo 'Não assinadas externas'";
inline constexpr const char* kVoucherMappedIn = "Não pode mapear modalidades do tipo vale na ";
inline constexpr const char* kVoucherAsDefault = " que nao seja do tipo vale.";
inline constexpr const char* kVoucherPicked = "Não pode mapear modalidades do tipo vale!";

// frmAddRestaurant's own messages.
inline constexpr const char* kServerNameMissing = "Preencha o nome do servidor de dados.";
inline constexpr const char* kServerPortMissing = "Preencha a porta do servidor de dados.";
inline constexpr const char* kDatabaseMissing = "Preencha o nome da base de dados.";
inline constexpr const char* kUserMissing = "Preencha o nome de utilizador.";
// In the dialog's message set, though no rule shows it: the password is not required.
inline constexpr const char* kPasswordMissing = "Preencha a palavra-passe.";
inline constexpr const char* kEntityDateWrong =
    "Formato da data da última importação de entidades está errado.";
inline constexpr const char* kTransactionsDateWrong =
    "Formato da data da última importação de transacções está errado.";
inline constexpr const char* kConnectionMade = "Ligação estabelecida com sucesso.";
inline constexpr const char* kConnectionFailed = "Erro ao estabelecer a ligação: ";

// frmSettings' grid headings and button captions, the same in every view of it.
namespace settings_captions {
inline constexpr const char* kPaymentsHeadings[] = {"No restaurante", "Modalidade", "Descrição"};
inline constexpr const char* kTaxableGroupsHeadings[] = {"Taxa de IVA", "Taxa", "Descrição"};
inline constexpr const char* kRestaurantsHeadings[] = {"Restaurante", "Servidor"};
inline constexpr const char* kAdd = "Adicionar";
inline constexpr const char* kEdit = "Alterar";
inline constexpr const char* kDelete = "Apagar";
inline constexpr const char* kDefaults = "Valores por omissão";
inline constexpr const char* kCancel = "Cancelar";
}  // namespace settings_captions

// frmAddRestaurant's captions, the same in every view of it.
namespace restaurant_captions {
inline constexpr const char* kName = "Nome:";
inline constexpr const char* kServer = "Servidor:";
inline constexpr const char* kPort = "Porta:";
inline constexpr const char* kDatabase = "Base de dados:";
inline constexpr const char* kUser = "Utilizador:";
inline constexpr const char* kPassword = "Palavra-passe:";
inline constexpr const char* kTestConnection = "Testar ligação";
inline constexpr const char* kItemPrefix = "Prefixo dos artigos:";
inline constexpr const char* kWarehouse = "Armazém:";
inline constexpr const char* kWasteWarehouse = "Armazém de quebras:";
inline constexpr const char* kWorkstation = "Posto:";
inline constexpr const char* kSupplier = "Fornecedor:";
inline constexpr const char* kSeries = "Série:";
inline constexpr const char* kStockManagement = "Gerir stocks";
inline constexpr const char* kEntitiesImport = "Última importação de entidades:";
inline constexpr const char* kTransactionsImport = "Última importação de transacções:";
// The supplier search's caption.
inline constexpr const char* kSuppliers = "Fornecedores";
}  // namespace restaurant_captions

}  // namespace kitra::dialog_texts
