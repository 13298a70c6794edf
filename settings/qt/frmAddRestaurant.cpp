#include "settings/qt/frmAddRestaurant.h"

#include <QCheckBox>
#include <QDateEdit>
#include <QDateTime>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTimeEdit>
#include <QVBoxLayout>

#include "core/Numbers.h"
#include "settings/DialogTexts.h"
#include "settings/qt/TwoColumnCombo.h"

namespace kitra {
namespace {

namespace captions = dialog_texts::restaurant_captions;

QString Q(const std::string& text) { return QString::fromStdString(text); }
QString Caption(const char* text) { return QString::fromUtf8(text); }
std::string S(const QString& text) { return text.toStdString(); }

QDate ToQDate(const DateTime& d) { return QDate(d.year, d.month, d.day); }
QTime ToQTime(const DateTime& t) { return QTime(t.hour, t.minute, t.second); }
DateTime FromQDate(const QDate& d) { return {d.year(), d.month(), d.day(), 0, 0, 0}; }
DateTime FromQTime(const QTime& t) {
    DateTime time;
    time.hour = t.hour();
    time.minute = t.minute();
    time.second = t.second();
    return time;
}

QLineEdit* Text(const char* name, QWidget* parent) {
    auto* box = new QLineEdit(parent);
    box->setObjectName(QString::fromLatin1(name));
    return box;
}

QPushButton* Button(const char* name, const char* caption, QWidget* parent) {
    auto* button = new QPushButton(QString::fromUtf8(caption), parent);
    button->setObjectName(QString::fromLatin1(name));
    button->setAutoDefault(false);
    return button;
}

DateTime Now() {
    const QDateTime now = QDateTime::currentDateTime();
    return {now.date().year(), now.date().month(), now.date().day(),
            now.time().hour(), now.time().minute(), now.time().second()};
}

}  // namespace

frmAddRestaurant::frmAddRestaurant(const host::HostServices& services, QWidget* parent)
    : QDialog(parent),
      editor_(services),
      txtName_(Text("txtName", this)),
      txtServerName_(Text("txtServerName", this)),
      txtServerPort_(Text("txtServerPort", this)),
      txtServerDB_(Text("txtServerDB", this)),
      txtServerUser_(Text("txtServerUser", this)),
      txtServerPwd_(Text("txtServerPwd", this)),
      txtItemIDPrefix_(Text("txtItemIDPrefix", this)),
      cboTransSerial_(new QComboBox(this)),
      cboDefaultWarehouseID_(new TwoColumnCombo("cboDefaultWarehouseID", {0, 150}, this)),
      cboWasteWarehouseID_(new TwoColumnCombo("cboWasteWarehouseID", {0, 150}, this)),
      cboWorkstation_(new TwoColumnCombo("cboWorkstation", {0, 150}, this)),
      numDefaultSupplierID_(new QDoubleSpinBox(this)),
      stfDefaultSupplierID_(new QLabel(this)),
      chkStockManagement_(new QCheckBox(Caption(captions::kStockManagement), this)),
      dtpEntityImport_(new QDateEdit(this)),
      dtpTransactionsImport_(new QDateEdit(this)),
      dtpEntityImportTime_(new QTimeEdit(this)),
      dtpTransactionsImportTime_(new QTimeEdit(this)),
      cmdOk_(Button("cmdOk", "OK", this)),
      cmdCancel_(Button("cmdCancel", "Cancelar", this)),
      cmdTestConnection_(Button("cmdTestConnection", captions::kTestConnection, this)),
      cmdSearchSupplier_(Button("cmdSearchSupplier", "...", this)) {
    setObjectName(QStringLiteral("frmAddRestaurant"));
    setWindowTitle(Q(editor_.Title()));
    cboTransSerial_->setObjectName(QStringLiteral("cboTransSerial"));
    numDefaultSupplierID_->setObjectName(QStringLiteral("numDefaultSupplierID"));
    stfDefaultSupplierID_->setObjectName(QStringLiteral("stfDefaultSupplierID"));
    chkStockManagement_->setObjectName(QStringLiteral("chkStockManagement"));
    dtpEntityImport_->setObjectName(QStringLiteral("dtpEntityImport"));
    dtpEntityImportTime_->setObjectName(QStringLiteral("dtpEntityImportTime"));
    dtpTransactionsImport_->setObjectName(QStringLiteral("dtpTransactionsImport"));
    dtpTransactionsImportTime_->setObjectName(QStringLiteral("dtpTransactionsImportTime"));
    txtServerPwd_->setEchoMode(QLineEdit::Password);
    numDefaultSupplierID_->setDecimals(0);
    numDefaultSupplierID_->setRange(0, 9999999999.0);
    numDefaultSupplierID_->setButtonSymbols(QAbstractSpinBox::NoButtons);
    for (QDateEdit* date : {dtpEntityImport_, dtpTransactionsImport_}) {
        date->setDisplayFormat(QStringLiteral("dd-MM-yyyy"));
        date->setCalendarPopup(true);
    }
    for (QTimeEdit* time : {dtpEntityImportTime_, dtpTransactionsImportTime_}) {
        time->setDisplayFormat(QStringLiteral("HH:mm:ss"));
    }
    cmdOk_->setDefault(true);

    // The lists, refilled each time the dialog is made.
    for (const std::string& code : editor_.SeriesList()) cboTransSerial_->addItem(Q(code));
    cboTransSerial_->setCurrentIndex(-1);
    cboDefaultWarehouseID_->SetEntries(editor_.WarehouseList());
    cboWasteWarehouseID_->SetEntries(editor_.WarehouseList());
    cboWorkstation_->SetEntries(editor_.WorkstationList());

    auto* form = new QFormLayout;
    form->addRow(Caption(captions::kName), txtName_);
    form->addRow(Caption(captions::kServer), txtServerName_);
    form->addRow(Caption(captions::kPort), txtServerPort_);
    form->addRow(Caption(captions::kDatabase), txtServerDB_);
    form->addRow(Caption(captions::kUser), txtServerUser_);
    form->addRow(Caption(captions::kPassword), txtServerPwd_);
    form->addRow(QString(), cmdTestConnection_);
    form->addRow(Caption(captions::kItemPrefix), txtItemIDPrefix_);
    form->addRow(Caption(captions::kWarehouse), cboDefaultWarehouseID_);
    form->addRow(Caption(captions::kWasteWarehouse), cboWasteWarehouseID_);
    form->addRow(Caption(captions::kWorkstation), cboWorkstation_);
    auto* supplier = new QHBoxLayout;
    supplier->addWidget(numDefaultSupplierID_);
    supplier->addWidget(cmdSearchSupplier_);
    supplier->addWidget(stfDefaultSupplierID_, 1);
    form->addRow(Caption(captions::kSupplier), supplier);
    form->addRow(Caption(captions::kSeries), cboTransSerial_);
    form->addRow(QString(), chkStockManagement_);
    auto* entities = new QHBoxLayout;
    entities->addWidget(dtpEntityImport_);
    entities->addWidget(dtpEntityImportTime_);
    form->addRow(Caption(captions::kEntitiesImport), entities);
    auto* transactions = new QHBoxLayout;
    transactions->addWidget(dtpTransactionsImport_);
    transactions->addWidget(dtpTransactionsImportTime_);
    form->addRow(Caption(captions::kTransactionsImport), transactions);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdOk_);
    buttons->addWidget(cmdCancel_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(buttons);

    txtName_->installEventFilter(this);
    txtItemIDPrefix_->installEventFilter(this);
    connect(cmdOk_, &QPushButton::clicked, this, [this] { Ok(); });
    connect(cmdCancel_, &QPushButton::clicked, this, &QDialog::reject);
    connect(cmdTestConnection_, &QPushButton::clicked, this, [this] { editor_.TestConnection(Form()); });
    connect(cmdSearchSupplier_, &QPushButton::clicked, this, [this] { SearchSupplier(); });
    connect(numDefaultSupplierID_, &QDoubleSpinBox::valueChanged, this, [this](double id) {
        stfDefaultSupplierID_->setText(Q(editor_.SupplierName(id)));
    });

    ShowRecord(Restaurant{});
}

bool frmAddRestaurant::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            // Enter is swallowed in the name, and moves on to the warehouse from the prefix.
            if (watched == txtItemIDPrefix_) cboDefaultWarehouseID_->setFocus();
            if (watched == txtName_ || watched == txtItemIDPrefix_) return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void frmAddRestaurant::ShowRecord(const Restaurant& record) { Fill(editor_.Show(record, Now())); }

void frmAddRestaurant::Fill(const RestaurantForm& form) {
    txtName_->setText(Q(form.txtName));
    txtServerName_->setText(Q(form.txtServerName));
    txtServerPort_->setText(Q(form.txtServerPort));
    txtServerDB_->setText(Q(form.txtServerDB));
    txtServerUser_->setText(Q(form.txtServerUser));
    txtServerPwd_->setText(Q(form.txtServerPwd));
    txtItemIDPrefix_->setText(Q(form.txtItemIDPrefix));
    cboTransSerial_->setCurrentIndex(cboTransSerial_->findText(Q(form.cboTransSerial), Qt::MatchExactly));
    if (form.cboTransSerial.empty()) cboTransSerial_->setCurrentIndex(-1);
    cboDefaultWarehouseID_->SelectNumber(form.cboDefaultWarehouseID);
    cboWasteWarehouseID_->SelectNumber(form.cboWasteWarehouseID);
    cboWorkstation_->SelectNumber(form.cboWorkstation);
    chkStockManagement_->setChecked(form.stockManagement);
    numDefaultSupplierID_->setValue(form.numDefaultSupplierID);
    stfDefaultSupplierID_->setText(Q(editor_.SupplierName(form.numDefaultSupplierID)));
    dtpEntityImport_->setDate(ToQDate(form.dtpEntityImport));
    dtpEntityImportTime_->setTime(ToQTime(form.dtpEntityImportTime));
    dtpTransactionsImport_->setDate(ToQDate(form.dtpTransactionsImport));
    dtpTransactionsImportTime_->setTime(ToQTime(form.dtpTransactionsImportTime));
}

RestaurantForm frmAddRestaurant::Form() const {
    RestaurantForm form;
    form.txtName = S(txtName_->text());
    form.txtServerName = S(txtServerName_->text());
    form.txtServerPort = S(txtServerPort_->text());
    form.txtServerDB = S(txtServerDB_->text());
    form.txtServerUser = S(txtServerUser_->text());
    form.txtServerPwd = S(txtServerPwd_->text());
    form.txtItemIDPrefix = S(txtItemIDPrefix_->text());
    form.cboTransSerial = cboTransSerial_->currentIndex() < 0 ? std::string() : S(cboTransSerial_->currentText());
    form.cboDefaultWarehouseID = cboDefaultWarehouseID_->Number();
    form.cboWasteWarehouseID = cboWasteWarehouseID_->Number();
    form.cboWorkstation = cboWorkstation_->Number();
    form.stockManagement = chkStockManagement_->isChecked();
    form.numDefaultSupplierID = numDefaultSupplierID_->value();
    form.dtpEntityImport = FromQDate(dtpEntityImport_->date());
    form.dtpEntityImportTime = FromQTime(dtpEntityImportTime_->time());
    form.dtpTransactionsImport = FromQDate(dtpTransactionsImport_->date());
    form.dtpTransactionsImportTime = FromQTime(dtpTransactionsImportTime_->time());
    return form;
}

bool frmAddRestaurant::Edit(Restaurant& record) {
    ShowRecord(record);
    record_ = &record;
    const bool accepted = exec() == QDialog::Accepted;
    record_ = nullptr;
    return accepted;
}

void frmAddRestaurant::Ok() {
    Restaurant taken = record_ != nullptr ? *record_ : Restaurant{};
    if (!editor_.Accept(Form(), taken)) return;  // the rule said why; the dialog stays open
    if (record_ != nullptr) *record_ = taken;
    accept();
}

void frmAddRestaurant::SearchSupplier() {
    QDialog search(this);
    search.setObjectName(QStringLiteral("frmSearchSupplier"));
    search.setWindowTitle(Caption(captions::kSuppliers));
    auto* text = new QLineEdit(&search);
    text->setObjectName(QStringLiteral("txtSearch"));
    auto* list = new QListWidget(&search);
    list->setObjectName(QStringLiteral("lstSuppliers"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &search);
    auto* layout = new QVBoxLayout(&search);
    layout->addWidget(text);
    layout->addWidget(list);
    layout->addWidget(buttons);
    const auto refill = [this, list](const QString& wanted) {
        list->clear();
        for (const host::Supplier& supplier : editor_.SearchSuppliers(S(wanted))) {
            auto* item = new QListWidgetItem(
                Q(RestaurantEditor::SupplierEntry(supplier)), list);
            item->setData(Qt::UserRole, supplier.SupplierID);
        }
        if (list->count() > 0) list->setCurrentRow(0);
    };
    refill(QString());
    connect(text, &QLineEdit::textChanged, &search, refill);
    connect(buttons, &QDialogButtonBox::accepted, &search, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, &search, &QDialog::reject);
    connect(list, &QListWidget::itemDoubleClicked, &search, &QDialog::accept);
    if (search.exec() == QDialog::Accepted && list->currentItem() != nullptr) {
        numDefaultSupplierID_->setValue(list->currentItem()->data(Qt::UserRole).toDouble());
    }
}

}  // namespace kitra
