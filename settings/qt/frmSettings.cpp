#include "settings/qt/frmSettings.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QStyleOptionButton>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <functional>

#include "settings/DialogTexts.h"
#include "settings/qt/DropDownListCell.h"
#include "settings/qt/TwoColumnCombo.h"
#include "settings/qt/frmAddRestaurant.h"

namespace kitra {
namespace texts = dialog_texts;
namespace {

QString Q(const std::string& text) { return QString::fromStdString(text); }
std::string S(const QString& text) { return text.toStdString(); }

QLabel* Label(const char* name, const char* caption, QWidget* parent) {
    auto* label = new QLabel(QString::fromUtf8(caption), parent);
    label->setObjectName(QString::fromLatin1(name));
    return label;
}

QPushButton* Button(const char* name, const char* caption, QWidget* parent) {
    auto* button = new QPushButton(QString::fromUtf8(caption), parent);
    button->setObjectName(QString::fromLatin1(name));
    button->setAutoDefault(false);
    return button;
}

QTableWidget* Grid(const char* name, const QStringList& headings, QWidget* parent) {
    auto* grid = new QTableWidget(0, static_cast<int>(headings.size()), parent);
    grid->setObjectName(QString::fromLatin1(name));
    grid->setHorizontalHeaderLabels(headings);  // the one fixed header row
    grid->verticalHeader()->hide();
    grid->horizontalHeader()->setStretchLastSection(true);
    grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    return grid;
}

std::string Cell(const QTableWidget& grid, int row, int column) {
    const QTableWidgetItem* item = grid.item(row, column);
    return item == nullptr ? std::string() : S(item->text());
}

void SetCell(QTableWidget& grid, int row, int column, const std::string& text, bool editable) {
    auto* item = new QTableWidgetItem(Q(text));
    if (!editable) item->setFlags(item->flags() & ~Qt::ItemIsEditable);
    grid.setItem(row, column, item);
}

// The keys typed into a VAT cell go through the settings rules' filter.
class VatKeyFilter final : public QObject {
public:
    VatKeyFilter(const SettingsEditor& editor, QLineEdit& box) : QObject(&box), editor_(editor), box_(box) {}

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() != QEvent::KeyPress) return false;
        auto* key = static_cast<QKeyEvent*>(event);
        const QString typed = key->text();
        if (typed.size() != 1) return false;  // keys without a character (arrows, ...) pass
        const QChar c = typed.front();
        if (c.unicode() > 0x7f) return true;
        const auto kept = editor_.FilterVatKey(static_cast<char>(c.unicode()), S(box_.text()));
        if (!kept) return true;
        if (*kept != c.toLatin1()) {
            box_.insert(QString(QChar::fromLatin1(*kept)));
            return true;
        }
        return false;
    }

private:
    const SettingsEditor& editor_;
    QLineEdit& box_;
};

// The editors of an equivalence grid: column 0 typed (its own acceptance rule, and for the VAT
// grid the key filter and "##0.00" display), column 1 the host's entries in a "..." drop-down
// list whose pick goes through the rules. The current cell of column 1 shows the "..." button;
// a click on it opens the cell's list at once.
class EquivalenceDelegate final : public QStyledItemDelegate {
public:
    EquivalenceDelegate(QTableWidget& grid, std::vector<ListEntry> hostEntries,
                        std::function<bool(const std::string&)> accepted,
                        std::function<void(int row, std::int16_t code)> picked,
                        const SettingsEditor* vatFilter)
        : QStyledItemDelegate(&grid),
          grid_(grid),
          hostEntries_(std::move(hostEntries)),
          accepted_(std::move(accepted)),
          picked_(std::move(picked)),
          vatFilter_(vatFilter) {}

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override {
        if (index.column() == frmSettings::kHostCode) {
            // A pick ends the edit through the delegate's own signals, which Qt's const
            // createEditor cannot emit directly.
            auto* self = const_cast<EquivalenceDelegate*>(this);
            auto* cell = new DropDownListCell(hostEntries_, frmSettings::kListColumnWidths,
                                              [self](DropDownListCell& picked) {
                                                  emit self->commitData(&picked);
                                                  emit self->closeEditor(&picked);
                                              },
                                              parent);
            if (dropDownOnOpen_) {
                dropDownOnOpen_ = false;
                QTimer::singleShot(0, cell, [cell] { cell->DropDown(); });
            }
            return cell;
        }
        auto* box = qobject_cast<QLineEdit*>(QStyledItemDelegate::createEditor(parent, option, index));
        if (box != nullptr && vatFilter_ != nullptr) box->installEventFilter(new VatKeyFilter(*vatFilter_, *box));
        return box;
    }
    void setEditorData(QWidget* editor, const QModelIndex& index) const override {
        if (auto* cell = dynamic_cast<DropDownListCell*>(editor)) {
            cell->SetCode(index.data(Qt::EditRole).toString());
            return;
        }
        QStyledItemDelegate::setEditorData(editor, index);
    }
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override {
        if (auto* cell = dynamic_cast<DropDownListCell*>(editor)) {
            // Only a pick changes the row; leaving the cell without one keeps it as it was.
            if (cell->Picked()) picked_(index.row(), static_cast<std::int16_t>(cell->Code().toInt()));
            return;
        }
        const QString text = static_cast<QLineEdit*>(editor)->text();
        if (!accepted_(S(text))) return;  // refused: the cell keeps what it held
        model->setData(index, text);
    }
    QString displayText(const QVariant& value, const QLocale& locale) const override {
        if (vatFilter_ == nullptr) return QStyledItemDelegate::displayText(value, locale);
        return Q(vatFilter_->VatShown(S(value.toString())));
    }

    // Where the "..." button of a list cell is drawn: the cell's right end, as wide as it is high.
    static QRect ButtonRect(const QRect& cell) {
        const int side = std::min(cell.height(), cell.width());
        return QRect(cell.right() - side + 1, cell.top(), side, cell.height());
    }
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        QStyledItemDelegate::paint(painter, option, index);
        if (index.column() != frmSettings::kHostCode || index != grid_.currentIndex()) return;
        QStyleOptionButton button;
        button.rect = ButtonRect(option.rect);
        button.text = QStringLiteral("...");
        button.state = QStyle::State_Enabled | QStyle::State_Raised;
        grid_.style()->drawControl(QStyle::CE_PushButton, &button, painter, &grid_);
    }
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override {
        const bool mouse = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonRelease;
        if (mouse && index.column() == frmSettings::kHostCode && index == grid_.currentIndex() &&
            ButtonRect(option.rect).contains(static_cast<QMouseEvent*>(event)->position().toPoint())) {
            if (event->type() == QEvent::MouseButtonRelease) {
                const QPersistentModelIndex cell(index);
                QTimer::singleShot(0, &grid_, [this, cell] {
                    if (!cell.isValid()) return;
                    dropDownOnOpen_ = true;
                    grid_.edit(cell);
                    dropDownOnOpen_ = false;
                });
            }
            return true;
        }
        return QStyledItemDelegate::editorEvent(event, model, option, index);
    }

private:
    QTableWidget& grid_;
    std::vector<ListEntry> hostEntries_;
    std::function<bool(const std::string&)> accepted_;
    std::function<void(int, std::int16_t)> picked_;
    const SettingsEditor* vatFilter_;
    mutable bool dropDownOnOpen_ = false;
};

}  // namespace

frmSettings::frmSettings(const host::HostServices& services, QWidget* parent)
    : QDialog(parent),
      services_(services),
      editor_(services),
      cboDefaultTenderPayment_(new TwoColumnCombo("cboDefaultTenderPayment", {0, 150}, this)),
      cboDefaultTaxableGroup_(new TwoColumnCombo("cboDefaultTaxableGroup", {20, 150}, this)),
      vsfPayments_(Grid("vsfPayments", {QStringLiteral("No restaurante"),
                                        QStringLiteral("Modalidade"), QStringLiteral("Descrição")}, this)),
      vsfTaxableGroups_(Grid("vsfTaxableGroups", {QStringLiteral("Taxa de IVA"), QStringLiteral("Taxa"),
                                                  QStringLiteral("Descrição")}, this)),
      vsfRestaurant_(Grid("vsfRestaurant", {QStringLiteral("Restaurante"), QStringLiteral("Servidor")}, this)),
      cmdOk_(Button("cmdOk", "OK", this)),
      cmdCancel_(Button("cmdCancel", "Cancelar", this)),
      cmdDefaults_(Button("cmdDefaults", "Valores por omissão", this)) {
    setObjectName(QStringLiteral("frmSettings"));
    setWindowTitle(Q(editor_.Title()));
    const char* comboNames[kDocumentCombos] = {
        "cboInvoiceTransDocument", "cboCreditSales", "cboStockDocument",
        "cboCashEntranceTransDocument", "cboCashWithdrawalTransDocument",
        "cboCustomerPaymentTransDocument", "cboCustomerPaymentAccountDocument"};
    const char* labelNames[kDocumentCombos] = {
        "lblInvoiceTransDocument", "lblCreditSales", "lblStockDocument",
        "lblCashEntranceTransDocument", "lblCashWithdrawalTransDocument",
        "lblCustumerPaymentTransDocument", "lblCustumerPaymentAccountDocument"};
    auto* combos = new QGridLayout;
    for (int combo = 0; combo < kDocumentCombos; ++combo) {
        documents_[combo] = new TwoColumnCombo(comboNames[combo], {35, 150}, this);
        documentLabels_[combo] = Label(labelNames[combo], SettingsEditor::DocumentLabel(DocumentCombo(combo)), this);
        combos->addWidget(documentLabels_[combo], combo, 0);
        combos->addWidget(documents_[combo], combo, 1);
    }
    combos->addWidget(Label("lblDefaultTenderPayment", texts::lblDefaultTenderPayment, this), kDocumentCombos, 0);
    combos->addWidget(cboDefaultTenderPayment_, kDocumentCombos, 1);
    combos->addWidget(Label("lblDefaultTaxableGroup", texts::lblDefaultTaxableGroup, this), kDocumentCombos + 1, 0);
    combos->addWidget(cboDefaultTaxableGroup_, kDocumentCombos + 1, 1);

    // A grid with its label above and its buttons beside it.
    const auto gridBox = [this](const char* labelName, const char* caption, QTableWidget* grid,
                                std::vector<QPushButton*> buttons) {
        auto* box = new QVBoxLayout;
        box->addWidget(Label(labelName, caption, this));
        auto* row = new QHBoxLayout;
        row->addWidget(grid, 1);
        auto* column = new QVBoxLayout;
        for (QPushButton* button : buttons) column->addWidget(button);
        column->addStretch();
        row->addLayout(column);
        box->addLayout(row);
        return box;
    };
    auto* btnAddPayment = Button("btnAddPayment", "Adicionar", this);
    auto* btnDeletePayment = Button("btnDeletePayment", "Apagar", this);
    auto* btnAddTaxableGroup = Button("btnAddTaxableGroup", "Adicionar", this);
    auto* btnDeleteTaxableGroup = Button("btnDeleteTaxableGroup", "Apagar", this);
    auto* btnAddRestaurant = Button("btnAddRestaurant", "Adicionar", this);
    auto* btnEditRestaurant = Button("btnEditRestaurant", "Alterar", this);
    auto* btnDeleteRestaurant = Button("btnDeleteRestaurant", "Apagar", this);

    auto* top = new QHBoxLayout;
    top->addLayout(combos);
    auto* grids = new QVBoxLayout;
    grids->addLayout(gridBox("lblPayments", texts::lblPayments, vsfPayments_, {btnAddPayment, btnDeletePayment}));
    grids->addLayout(gridBox("lblTaxableGroups", texts::lblTaxableGroups, vsfTaxableGroups_,
                             {btnAddTaxableGroup, btnDeleteTaxableGroup}));
    top->addLayout(grids, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(cmdDefaults_);
    buttons->addStretch();
    buttons->addWidget(cmdOk_);
    buttons->addWidget(cmdCancel_);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addLayout(gridBox("lblRestaurants", texts::lblRestaurants, vsfRestaurant_,
                              {btnAddRestaurant, btnEditRestaurant, btnDeleteRestaurant}));
    layout->addLayout(buttons);
    resize(1000, 640);

    // vsfRestaurant is never edited in place; double click and Enter open the editor.
    vsfRestaurant_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    vsfRestaurant_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    vsfRestaurant_->installEventFilter(this);
    connect(vsfRestaurant_, &QTableWidget::cellDoubleClicked, this, [this](int, int) { EditRestaurant(); });

    FillLists();

    const auto addRow = [](QTableWidget* grid) {
        const int row = grid->rowCount();
        grid->insertRow(row);
        for (int column = 0; column < grid->columnCount(); ++column) {
            SetCell(*grid, row, column, "", column != kDescription);
        }
        grid->setCurrentCell(row, kRestaurantValue);
    };
    const auto deleteRow = [](QTableWidget* grid) {
        if (grid->currentRow() >= 0) grid->removeRow(grid->currentRow());
    };
    connect(btnAddPayment, &QPushButton::clicked, this, [this, addRow] { addRow(vsfPayments_); });
    connect(btnDeletePayment, &QPushButton::clicked, this, [this, deleteRow] { deleteRow(vsfPayments_); });
    connect(btnAddTaxableGroup, &QPushButton::clicked, this, [this, addRow] { addRow(vsfTaxableGroups_); });
    connect(btnDeleteTaxableGroup, &QPushButton::clicked, this, [this, deleteRow] { deleteRow(vsfTaxableGroups_); });
    connect(btnAddRestaurant, &QPushButton::clicked, this, [this] { AddRestaurant(); });
    connect(btnEditRestaurant, &QPushButton::clicked, this, [this] { EditRestaurant(); });
    connect(btnDeleteRestaurant, &QPushButton::clicked, this, [this] { DeleteRestaurants(); });
    connect(cmdOk_, &QPushButton::clicked, this, [this] { Ok(); });
    connect(cmdCancel_, &QPushButton::clicked, this, &QDialog::reject);
    connect(cmdDefaults_, &QPushButton::clicked, this, [this] {
        const SettingsForm defaults = editor_.Defaults(Form());
        FillLists();  // the defaults may have made document types
        Fill(defaults);
    });
}

void frmSettings::FillLists() {
    const std::vector<ListEntry> documentTypes = editor_.DocumentTypeList();
    for (TwoColumnCombo* combo : documents_) combo->SetEntries(documentTypes);
    const std::vector<ListEntry> tenders = editor_.TenderList();
    const std::vector<ListEntry> groups = editor_.TaxableGroupList();
    cboDefaultTenderPayment_->SetEntries(tenders);
    cboDefaultTaxableGroup_->SetEntries(groups);

    vsfPayments_->setItemDelegate(new EquivalenceDelegate(
        *vsfPayments_, tenders, &SettingsEditor::TenderIdAccepted,
        [this](int row, std::int16_t code) {
            TenderRow values{Cell(*vsfPayments_, row, 0), Cell(*vsfPayments_, row, 1), Cell(*vsfPayments_, row, 2)};
            editor_.TenderPicked(values, code);
            SetCell(*vsfPayments_, row, 0, values.kitraTenderId, true);
            SetCell(*vsfPayments_, row, 1, values.posTender, true);
            SetCell(*vsfPayments_, row, 2, values.description, false);
        },
        nullptr));
    // The VAT column has the key filter and the "##0.00" display; the others do not.
    const auto taxableDelegate = [this, groups](const SettingsEditor* vat) {
        return new EquivalenceDelegate(
            *vsfTaxableGroups_, groups, [this](const std::string& text) { return editor_.VatAccepted(text); },
            [this](int row, std::int16_t code) {
                TaxableGroupRow values{Cell(*vsfTaxableGroups_, row, 0), "", ""};
                editor_.TaxableGroupPicked(values, code);
                SetCell(*vsfTaxableGroups_, row, 1, values.taxableGroup, true);
                SetCell(*vsfTaxableGroups_, row, 2, values.description, false);
            },
            vat);
    };
    vsfTaxableGroups_->setItemDelegate(taxableDelegate(nullptr));
    vsfTaxableGroups_->setItemDelegateForColumn(kRestaurantValue, taxableDelegate(&editor_));
}

bool frmSettings::eventFilter(QObject* watched, QEvent* event) {
    if (watched == vsfRestaurant_ && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            EditRestaurant();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void frmSettings::Fill(const SettingsForm& form) {
    for (int combo = 0; combo < kDocumentCombos; ++combo) documents_[combo]->SelectCode(form.documents[combo]);
    cboDefaultTenderPayment_->SelectNumber(form.cboDefaultTenderPayment);
    cboDefaultTaxableGroup_->SelectNumber(form.cboDefaultTaxableGroup);
    vsfPayments_->setRowCount(0);
    for (const TenderRow& values : form.vsfPayments) {
        const int row = vsfPayments_->rowCount();
        vsfPayments_->insertRow(row);
        SetCell(*vsfPayments_, row, 0, values.kitraTenderId, true);
        SetCell(*vsfPayments_, row, 1, values.posTender, true);
        SetCell(*vsfPayments_, row, 2, values.description, false);
    }
    vsfTaxableGroups_->setRowCount(0);
    for (const TaxableGroupRow& values : form.vsfTaxableGroups) {
        const int row = vsfTaxableGroups_->rowCount();
        vsfTaxableGroups_->insertRow(row);
        SetCell(*vsfTaxableGroups_, row, 0, values.vat, true);
        SetCell(*vsfTaxableGroups_, row, 1, values.taxableGroup, true);
        SetCell(*vsfTaxableGroups_, row, 2, values.description, false);
    }
    restaurants_ = form.vsfRestaurant;
    vsfRestaurant_->setRowCount(static_cast<int>(restaurants_.size()));
    for (int row = 0; row < static_cast<int>(restaurants_.size()); ++row) FillRestaurantRow(row);
}

void frmSettings::FillRestaurantRow(int row) {
    SetCell(*vsfRestaurant_, row, 0, restaurants_.at(row).Name, false);
    SetCell(*vsfRestaurant_, row, 1, restaurants_.at(row).ServerName, false);
}

SettingsForm frmSettings::Form() const {
    SettingsForm form;
    for (int combo = 0; combo < kDocumentCombos; ++combo) form.documents[combo] = documents_[combo]->Code();
    form.cboDefaultTenderPayment = cboDefaultTenderPayment_->Number();
    form.cboDefaultTaxableGroup = cboDefaultTaxableGroup_->Number();
    for (int row = 0; row < vsfPayments_->rowCount(); ++row) {
        form.vsfPayments.push_back({Cell(*vsfPayments_, row, 0), Cell(*vsfPayments_, row, 1),
                                    Cell(*vsfPayments_, row, 2)});
    }
    for (int row = 0; row < vsfTaxableGroups_->rowCount(); ++row) {
        form.vsfTaxableGroups.push_back({Cell(*vsfTaxableGroups_, row, 0),
                                         Cell(*vsfTaxableGroups_, row, 1),
                                         Cell(*vsfTaxableGroups_, row, 2)});
    }
    form.vsfRestaurant = restaurants_;
    return form;
}

void frmSettings::Open(const KitraConnectorSetting& setting) { Fill(editor_.Open(setting)); }

bool frmSettings::Edit(KitraConnectorSetting& setting) {
    Open(setting);
    setting_ = &setting;
    const bool accepted = exec() == QDialog::Accepted;
    setting_ = nullptr;
    return accepted;
}

void frmSettings::Ok() {
    // Shown without Edit, the dialog still checks its controls; there is nothing to write into.
    KitraConnectorSetting scratch(*services_.utility);
    if (editor_.Accept(Form(), setting_ != nullptr ? *setting_ : scratch)) accept();
}

void frmSettings::AddRestaurant() {
    Restaurant record;
    frmAddRestaurant dialog(services_, this);
    if (!dialog.Edit(record)) return;
    restaurants_.push_back(record);
    vsfRestaurant_->insertRow(vsfRestaurant_->rowCount());
    FillRestaurantRow(vsfRestaurant_->rowCount() - 1);
}

void frmSettings::EditRestaurant() {
    const int row = vsfRestaurant_->currentRow();
    if (row < 0 || row >= static_cast<int>(restaurants_.size())) return;
    Restaurant record = restaurants_[row];
    frmAddRestaurant dialog(services_, this);
    if (!dialog.Edit(record)) return;
    restaurants_[row] = record;
    FillRestaurantRow(row);
}

void frmSettings::DeleteRestaurants() {
    std::vector<int> rows;
    for (const QModelIndex& index : vsfRestaurant_->selectionModel()->selectedRows()) rows.push_back(index.row());
    std::sort(rows.rbegin(), rows.rend());
    for (int row : rows) {
        restaurants_.erase(restaurants_.begin() + row);
        vsfRestaurant_->removeRow(row);
    }
}

}  // namespace kitra
