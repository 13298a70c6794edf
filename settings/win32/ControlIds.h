#pragma once
// The control identifiers of the two settings dialogs on Windows, named after the controls they
// stand for; whoever drives the dialogs (a test, an accessibility tool) finds them by these.
namespace kitra::win32 {

enum RestaurantEditorControl : int {
    IDC_txtName = 1001, IDC_txtServerName, IDC_txtServerPort, IDC_txtServerDB, IDC_txtServerUser,
    IDC_txtServerPwd, IDC_txtItemIDPrefix, IDC_cboTransSerial, IDC_cboDefaultWarehouseID,
    IDC_cboWasteWarehouseID, IDC_cboWorkstation, IDC_numDefaultSupplierID,
    IDC_stfDefaultSupplierID, IDC_chkStockManagement, IDC_dtpEntityImport,
    IDC_dtpEntityImportTime, IDC_dtpTransactionsImport, IDC_dtpTransactionsImportTime,
    IDC_cmdTestConnection, IDC_cmdSearchSupplier, IDC_fraConnection, IDC_fraHost, IDC_fraDates,
    IDC_RestaurantLabel  // the first of the captions beside the controls
};

// The supplier search that cmdSearchSupplier opens.
enum SupplierSearchControl : int { IDC_txtSearch = 1101, IDC_lstSuppliers };

enum SettingsDialogControl : int {
    IDC_cboInvoiceTransDocument = 1201, IDC_cboCreditSales, IDC_cboStockDocument,
    IDC_cboCashEntranceTransDocument, IDC_cboCashWithdrawalTransDocument,
    IDC_cboCustomerPaymentTransDocument, IDC_cboCustomerPaymentAccountDocument,
    IDC_lblInvoiceTransDocument, IDC_lblCreditSales, IDC_lblStockDocument,
    IDC_lblCashEntranceTransDocument, IDC_lblCashWithdrawalTransDocument,
    IDC_lblCustumerPaymentTransDocument, IDC_lblCustumerPaymentAccountDocument,
    IDC_cboDefaultTenderPayment, IDC_lblDefaultTenderPayment, IDC_cboDefaultTaxableGroup,
    IDC_lblDefaultTaxableGroup, IDC_vsfPayments, IDC_lblPayments, IDC_btnAddPayment,
    IDC_btnDeletePayment, IDC_vsfTaxableGroups, IDC_lblTaxableGroups, IDC_btnAddTaxableGroup,
    IDC_btnDeleteTaxableGroup, IDC_vsfRestaurant, IDC_lblRestaurants, IDC_btnAddRestaurant,
    IDC_btnEditRestaurant, IDC_btnDeleteRestaurant, IDC_cmdDefaults,
    // The editor a grid cell opens in place: a text box for typed columns, a list for the host's
    // codes.
    IDC_CellText, IDC_CellList
};

// cmdOk and cmdCancel are the window system's own OK and Cancel, in every dialog.
inline constexpr int IDC_cmdOk = 1;      // IDOK
inline constexpr int IDC_cmdCancel = 2;  // IDCANCEL

}  // namespace kitra::win32
