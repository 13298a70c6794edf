// kitra-host report: what the back office holds, read from its documents.
//   sales [--from] [--to]   a day-by-day table of the sales documents (sales, credit sales and
//                           returns), the same by document type and by tender, each adding up
//                           to the same total, and the stock of the ten items that sold most;
//   cash [--from] [--to]    the cash movements by document type and by workstation;
//   account CUSTOMER        a customer's current account: open entries, receipts, credits and
//                           the balance.
#include <algorithm>
#include <cmath>
#include <ostream>

#include <fmt/format.h>

#include "backoffice/BackOffice.h"
#include "backoffice/cli/Command.h"
#include "backoffice/cli/DateArgument.h"
#include "core/DateTime.h"
#include "core/Error.h"
#include "core/Numbers.h"
#include "core/Text.h"

namespace kitra::backoffice::cli {
namespace {

constexpr const char* kUsage =
    "Uso: kitra-host report sales|cash [--from DATA] [--to DATA] | report account CLIENTE";

// Sales, credit sales and returns: what the day table counts (returns as negative amounts).
constexpr const char* kSalesKinds = "1, 2, 3";

struct Period {
    std::string from = "0000-01-01 00:00:00";
    std::string to = "9999-12-31 23:59:59";
    bool fromGiven = false, toGiven = false;

    // As the report's heading says it.
    std::string Text() const {
        if (!fromGiven && !toGiven) return "todo o período";
        if (!toGiven) return "desde " + from;
        if (!fromGiven) return "até " + to;
        return from + " a " + to;
    }
};

// A date as 'state set' takes it ("yyyy-mm-dd hh:mm:ss", or "yyyy-mm-dd" for 00:00:00); as the
// end of a period, a date alone takes in its whole day.
std::string PeriodBound(const std::string& option, const std::string& text, bool endOfDay) {
    if (const auto moment = ParseDateArgument(text)) {
        if (endOfDay && text.size() == 10) return text + " 23:59:59";
        return *moment;
    }
    throw UsageError("A data de '" + option + "' deve ter a forma " + kDateArgumentForms + ": '" + text + "'.");
}

// "--from DATE", "--from=DATE", "--to DATE", "--to=DATE", after the report's name.
Period ParsePeriod(const std::vector<std::string>& arguments) {
    Period period;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        std::string option = arguments[i], value;
        if (const auto equals = option.find('='); equals != std::string::npos) {
            value = option.substr(equals + 1);
            option.resize(equals);
        } else if (i + 1 < arguments.size()) {
            value = arguments[++i];
        }
        if (option != "--from" && option != "--to") throw UsageError(kUsage);
        if (value.empty()) throw UsageError("Falta a data depois de '" + option + "'.");
        if (option == "--from") {
            period.from = PeriodBound(option, value, false);
            period.fromGiven = true;
        } else {
            period.to = PeriodBound(option, value, true);
            period.toGiven = true;
        }
    }
    if (period.from > period.to) throw UsageError("O período termina antes de começar.");
    return period;
}

std::string Money(double value) {
    std::string text = fmt::format("{:.2f}", value);
    std::replace(text.begin(), text.end(), '.', ',');
    return text == "-0,00" ? "0,00" : text;
}

// At most `width` characters of the text, cut between characters, not inside one.
std::string Cut(const std::string& text, std::size_t width) {
    const std::u32string characters = DecodeUtf8(text);
    return characters.size() <= width ? text : EncodeUtf8(characters.substr(0, width));
}

std::string Quantity(double value) {
    std::string text = fmt::format("{:.3f}", value);
    while (text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
    std::replace(text.begin(), text.end(), '.', ',');
    return text;
}

Statement& InPeriod(Statement& statement, const Period& period) {
    statement.Bind({Variant(period.from), Variant(period.to)});
    return statement;
}

void DayTable(Database& database, const Period& period, std::ostream& out) {
    Statement days(database,
                   fmt::format("SELECT substr(DocumentDate, 1, 10), COUNT(*), "
                               "SUM(CASE Kind WHEN 3 THEN -TotalNet ELSE TotalNet END), "
                               "SUM(CASE Kind WHEN 3 THEN -TotalTax ELSE TotalTax END), "
                               "SUM(CASE Kind WHEN 3 THEN -TotalAdjustment ELSE TotalAdjustment END), "
                               "SUM(CASE Kind WHEN 3 THEN -Total ELSE Total END) "
                               "FROM documents WHERE State = 0 AND Kind IN ({}) AND "
                               "DocumentDate BETWEEN ? AND ? GROUP BY 1 ORDER BY 1",
                               kSalesKinds));
    InPeriod(days, period);
    out << "Vendas por dia (vendas, vendas a crédito e devoluções; anulados não contam)\n";
    out << fmt::format("{:<10}  {:>10}  {:>13}  {:>12}  {:>9}  {:>13}\n", "Dia", "Documentos",
                       "Sem IVA", "IVA", "Acerto", "Total");
    long documents = 0;
    double net = 0, tax = 0, adjustment = 0, total = 0;
    while (days.Step()) {
        documents += days.Column(1).ToInt32();
        net += days.Column(2).ToDouble();
        tax += days.Column(3).ToDouble();
        adjustment += days.Column(4).ToDouble();
        total += days.Column(5).ToDouble();
        out << fmt::format("{:<10}  {:>10}  {:>13}  {:>12}  {:>9}  {:>13}\n", days.ColumnText(0),
                           days.ColumnText(1), Money(days.Column(2).ToDouble()),
                           Money(days.Column(3).ToDouble()), Money(days.Column(4).ToDouble()),
                           Money(days.Column(5).ToDouble()));
    }
    out << fmt::format("{:<10}  {:>10}  {:>13}  {:>12}  {:>9}  {:>13}\n\n", "Total", documents,
                       Money(net), Money(tax), Money(adjustment), Money(total));
}

void TypeTable(Database& database, const Period& period, std::ostream& out) {
    // The voided documents are shown apart and count in no total.
    Statement types(database,
                    fmt::format("SELECT d.DocumentTypeID, COALESCE(t.Description, ''), "
                                "SUM(d.State = 0), "
                                "SUM(CASE WHEN d.State = 0 THEN {0} ELSE 0 END), "
                                "SUM(d.State <> 0), SUM(CASE WHEN d.State <> 0 THEN {0} ELSE 0 END) "
                                "FROM documents d LEFT JOIN document_types t ON t.DocumentTypeID = "
                                "d.DocumentTypeID WHERE d.Kind IN ({1}) AND d.DocumentDate BETWEEN ? AND ? "
                                "GROUP BY d.DocumentTypeID ORDER BY d.DocumentTypeID",
                                "CASE d.Kind WHEN 3 THEN -d.Total ELSE d.Total END", kSalesKinds));
    InPeriod(types, period);
    out << "Por tipo de documento (vendas, vendas a crédito e devoluções)\n";
    out << fmt::format("{:<6}  {:<26}  {:>10}  {:>13}  {:>8}  {:>13}\n", "Tipo", "Descrição",
                       "Documentos", "Total", "Anulados", "Total anulado");
    long documents = 0, voided = 0;
    double total = 0, voidedTotal = 0;
    while (types.Step()) {
        documents += types.Column(2).ToInt32();
        total += types.Column(3).ToDouble();
        voided += types.Column(4).ToInt32();
        voidedTotal += types.Column(5).ToDouble();
        out << fmt::format("{:<6}  {:<26}  {:>10}  {:>13}  {:>8}  {:>13}\n", types.ColumnText(0),
                           types.ColumnText(1), types.ColumnText(2),
                           Money(types.Column(3).ToDouble()), types.ColumnText(4),
                           Money(types.Column(5).ToDouble()));
    }
    out << fmt::format("{:<6}  {:<26}  {:>10}  {:>13}  {:>8}  {:>13}\n\n", "Total", "", documents,
                       Money(total), voided, Money(voidedTotal));
}

// What the sales of the period were paid with: each tender, what went on the customers'
// accounts, and what neither covers (change given, a total the restaurant adjusted), so that the
// section adds up to the sales' total. Returns count against.
void TenderTable(Database& database, const Period& period, std::ostream& out) {
    Statement tenders(database,
                      fmt::format("SELECT p.TenderID, COALESCE(t.Description, '(desconhecida)'), "
                                  "COUNT(DISTINCT p.DocumentKey), "
                                  "SUM(CASE d.Kind WHEN 3 THEN -p.Amount ELSE p.Amount END) "
                                  "FROM document_payments p "
                                  "JOIN documents d ON d.DocumentKey = p.DocumentKey "
                                  "LEFT JOIN tenders t ON t.TenderID = p.TenderID "
                                  "WHERE d.State = 0 AND d.Kind IN ({}) AND d.DocumentDate BETWEEN ? AND ? "
                                  "GROUP BY p.TenderID ORDER BY p.TenderID",
                                  kSalesKinds));
    InPeriod(tenders, period);
    out << "Por modalidade de pagamento (vendas, vendas a crédito e devoluções)\n";
    out << fmt::format("{:>10}  {:<26}  {:>10}  {:>13}\n", "Modalidade", "Descrição",
                       "Documentos", "Valor");
    double covered = 0;
    while (tenders.Step()) {
        covered += tenders.Column(3).ToDouble();
        out << fmt::format("{:>10}  {:<26}  {:>10}  {:>13}\n", tenders.ColumnText(0),
                           tenders.ColumnText(1), tenders.ColumnText(2),
                           Money(tenders.Column(3).ToDouble()));
    }
    Statement credit(database,
                     fmt::format("SELECT COUNT(*), "
                                 "COALESCE(SUM(CASE d.Kind WHEN 3 THEN -a.Amount ELSE a.Amount END), 0), "
                                 "COALESCE(SUM(CASE d.Kind WHEN 3 THEN -a.OpenAmount ELSE a.OpenAmount END), 0) "
                                 "FROM account_entries a JOIN documents d ON d.DocumentKey = a.DocumentKey "
                                 "WHERE a.EntryType = 'D' AND d.State = 0 AND d.Kind IN ({}) AND "
                                 "d.DocumentDate BETWEEN ? AND ?",
                                 kSalesKinds));
    InPeriod(credit, period);
    credit.Step();
    covered += credit.Column(1).ToDouble();
    out << fmt::format("{:>10}  {:<26}  {:>10}  {:>13}   (em aberto: {})\n", "",
                       "A crédito (conta corrente)", credit.ColumnText(0),
                       Money(credit.Column(1).ToDouble()), Money(credit.Column(2).ToDouble()));
    Statement sales(database,
                    fmt::format("SELECT COUNT(*), COALESCE(SUM(CASE Kind WHEN 3 THEN -Total ELSE Total END), 0) "
                                "FROM documents WHERE State = 0 AND Kind IN ({}) AND "
                                "DocumentDate BETWEEN ? AND ?",
                                kSalesKinds));
    InPeriod(sales, period);
    sales.Step();
    const double total = sales.Column(1).ToDouble();
    out << fmt::format("{:>10}  {:<26}  {:>10}  {:>13}\n", "", "Diferença (troco, acertos)", "",
                       Money(total - covered));
    out << fmt::format("{:>10}  {:<26}  {:>10}  {:>13}\n\n", "Total", "", sales.ColumnText(0),
                       Money(total));
}

void BestSellers(Database& database, const Period& period, std::ostream& out) {
    Statement items(database,
                    "SELECT l.ItemID, MAX(l.Description), SUM(l.Quantity), SUM(l.TotalWithTax), "
                    "(SELECT SUM(s.Quantity) FROM item_stock s WHERE s.ItemID = l.ItemID), "
                    "(SELECT StockManagement FROM items i WHERE i.ItemID = l.ItemID) "
                    "FROM document_lines l JOIN documents d ON d.DocumentKey = l.DocumentKey "
                    "WHERE d.State = 0 AND d.Kind IN (1, 2) AND d.DocumentDate BETWEEN ? AND ? "
                    "GROUP BY l.ItemID ORDER BY SUM(l.TotalWithTax) DESC, l.ItemID LIMIT 10");
    InPeriod(items, period);
    out << "Os dez artigos mais vendidos (por valor) e o seu stock\n";
    out << fmt::format("{:<12}  {:<30}  {:>10}  {:>13}  {:>10}\n", "Artigo", "Descrição",
                       "Vendido", "Valor", "Stock");
    while (items.Step()) {
        const bool stocked = !items.ColumnIsNull(5) && items.Column(5).ToBool();
        const std::string stock =
            stocked ? Quantity(items.ColumnIsNull(4) ? 0.0 : items.Column(4).ToDouble()) : "-";
        out << fmt::format("{:<12}  {:<30}  {:>10}  {:>13}  {:>10}\n", items.ColumnText(0),
                           Cut(items.ColumnText(1), 30), Quantity(items.Column(2).ToDouble()),
                           Money(items.Column(3).ToDouble()), stock);
    }
    out << "(Stock: todos os armazéns; \"-\" para artigos sem gestão de stock ou desconhecidos.)\n";
}

void CashTables(Database& database, const Period& period, std::ostream& out) {
    Statement types(database,
                    "SELECT d.DocumentTypeID, COALESCE(t.Description, ''), COUNT(*), "
                    "SUM(CASE WHEN m.Amount > 0 THEN m.Amount ELSE 0 END), "
                    "SUM(CASE WHEN m.Amount < 0 THEN -m.Amount ELSE 0 END) "
                    "FROM cash_movements m JOIN documents d ON d.DocumentKey = m.DocumentKey "
                    "LEFT JOIN document_types t ON t.DocumentTypeID = d.DocumentTypeID "
                    "WHERE d.State = 0 AND m.MovementDate BETWEEN ? AND ? "
                    "GROUP BY d.DocumentTypeID ORDER BY d.DocumentTypeID");
    InPeriod(types, period);
    out << "Movimentos de caixa por tipo de documento\n";
    out << fmt::format("{:<6}  {:<28}  {:>10}  {:>13}  {:>13}\n", "Tipo", "Descrição",
                       "Movimentos", "Entradas", "Saídas");
    long movements = 0;
    double in = 0, outward = 0;
    while (types.Step()) {
        movements += types.Column(2).ToInt32();
        in += types.Column(3).ToDouble();
        outward += types.Column(4).ToDouble();
        out << fmt::format("{:<6}  {:<28}  {:>10}  {:>13}  {:>13}\n", types.ColumnText(0),
                           types.ColumnText(1), types.ColumnText(2),
                           Money(types.Column(3).ToDouble()), Money(types.Column(4).ToDouble()));
    }
    out << fmt::format("{:<6}  {:<28}  {:>10}  {:>13}  {:>13}\n", "Total", "", movements, Money(in),
                       Money(outward));
    Statement drawers(database,
                      "SELECT m.WorkstationID, COALESCE(w.Description, ''), "
                      "SUM(CASE WHEN m.Amount > 0 THEN m.Amount ELSE 0 END), "
                      "SUM(CASE WHEN m.Amount < 0 THEN -m.Amount ELSE 0 END), SUM(m.Amount) "
                      "FROM cash_movements m JOIN documents d ON d.DocumentKey = m.DocumentKey "
                      "LEFT JOIN workstations w ON w.WorkstationID = m.WorkstationID "
                      "WHERE d.State = 0 AND m.MovementDate BETWEEN ? AND ? "
                      "GROUP BY m.WorkstationID ORDER BY m.WorkstationID");
    InPeriod(drawers, period);
    out << "\nPor posto (gaveta)\n";
    out << fmt::format("{:>5}  {:<28}  {:>13}  {:>13}  {:>13}\n", "Posto", "Descrição",
                       "Entradas", "Saídas", "Saldo");
    double drawerIn = 0, drawerOut = 0, balance = 0;
    while (drawers.Step()) {
        drawerIn += drawers.Column(2).ToDouble();
        drawerOut += drawers.Column(3).ToDouble();
        balance += drawers.Column(4).ToDouble();
        out << fmt::format("{:>5}  {:<28}  {:>13}  {:>13}  {:>13}\n", drawers.ColumnText(0),
                           drawers.ColumnText(1), Money(drawers.Column(2).ToDouble()),
                           Money(drawers.Column(3).ToDouble()), Money(drawers.Column(4).ToDouble()));
    }
    out << fmt::format("{:>5}  {:<28}  {:>13}  {:>13}  {:>13}\n", "Total", "", Money(drawerIn),
                       Money(drawerOut), Money(balance));
}

void AccountTables(Database& database, std::int32_t customer, std::ostream& out) {
    Statement name(database, "SELECT OrganizationName FROM customers WHERE CustomerID = ?");
    name.Bind({Variant(customer)});
    if (!name.Step()) throw Error("Não existe o cliente " + std::to_string(customer) + ".");
    out << "Conta corrente do cliente " << customer << " - " << name.ColumnText(0) << "\n\n";

    const auto entries = [&](const char* type, const char* title) {
        Statement open(database,
                       "SELECT e.DocumentTypeID, e.SeriesID, e.DocumentNumber, "
                       "substr(e.DocumentDate, 1, 10), e.Amount, e.OpenAmount, d.State "
                       "FROM account_entries e JOIN documents d ON d.DocumentKey = e.DocumentKey "
                       "WHERE e.CustomerID = ? AND e.EntryType = ? "
                       "ORDER BY e.DocumentDate, e.EntryID");
        open.Bind({Variant(customer), Variant(type)});
        out << title << "\n";
        out << fmt::format("{:<18}  {:<10}  {:>13}  {:>13}\n", "Documento", "Data", "Valor",
                           "Em aberto");
        double total = 0;
        while (open.Step()) {
            total += open.Column(5).ToDouble();
            const std::string document = open.ColumnText(0) + " " + open.ColumnText(1) + "/" +
                                         open.ColumnText(2) +
                                         (open.Column(6).ToInt32() != 0 ? " (anulado)" : "");
            out << fmt::format("{:<18}  {:<10}  {:>13}  {:>13}\n", document, open.ColumnText(3),
                               Money(open.Column(4).ToDouble()), Money(open.Column(5).ToDouble()));
        }
        out << fmt::format("{:<18}  {:<10}  {:>13}  {:>13}\n\n", "Total", "", "", Money(total));
        return total;
    };
    const double owed = entries("D", "Vendas a crédito");

    Statement receipts(database,
                       "SELECT d.DocumentTypeID || ' ' || d.SeriesID || '/' || d.DocumentNumber, "
                       "substr(d.DocumentDate, 1, 10), d.Total, "
                       "COALESCE((SELECT group_concat(e.DocumentTypeID || ' ' || e.SeriesID || "
                       "'/' || e.DocumentNumber || ' ' || printf('%.2f', s.Amount), '; ') FROM "
                       "account_settlements s JOIN account_entries e ON e.EntryID = s.EntryID "
                       "WHERE s.ReceiptKey = d.DocumentKey), '') FROM documents d "
                       "WHERE d.CustomerID = ? AND d.Kind = 7 ORDER BY d.DocumentDate, d.DocumentKey");
    receipts.Bind({Variant(customer)});
    out << "Recibos\n";
    out << fmt::format("{:<18}  {:<10}  {:>13}  {}\n", "Documento", "Data", "Recebido", "Liquidou");
    while (receipts.Step()) {
        std::string settled = receipts.ColumnText(3);
        std::replace(settled.begin(), settled.end(), '.', ',');
        out << fmt::format("{:<18}  {:<10}  {:>13}  {}\n", receipts.ColumnText(0),
                           receipts.ColumnText(1), Money(receipts.Column(2).ToDouble()), settled);
    }
    out << "\n";
    const double credit = entries("C", "Créditos (adiantamentos e o que sobrou de recibos)");
    const double balance = owed - credit;
    out << "Saldo: " << Money(std::abs(balance))
        << (balance >= 0 ? " a pagar pelo cliente\n" : " a favor do cliente\n");
}

}  // namespace

int RunReport(CommandContext& context) {
    if (context.arguments.empty()) throw UsageError(kUsage);
    const std::string& report = context.arguments.front();
    if (report == "account") {
        if (context.arguments.size() != 2) throw UsageError(kUsage);
        std::int32_t customer = 0;
        try {
            customer = RoundToInt32(ParseNumberStrict(context.arguments[1], ','));
        } catch (const Error&) {
            throw UsageError("O cliente deve ser o seu número: '" + context.arguments[1] + "'.");
        }
        BackOffice office(context.dataFolder);
        AccountTables(office.GetDatabase(), customer, context.out);
        return kExitOk;
    }
    if (report != "sales" && report != "cash") throw UsageError(kUsage);
    const Period period = ParsePeriod(context.arguments);
    BackOffice office(context.dataFolder);
    Database& database = office.GetDatabase();
    context.out << "Período: " << period.Text() << "\n\n";
    if (report == "cash") {
        CashTables(database, period, context.out);
        return kExitOk;
    }
    DayTable(database, period, context.out);
    TypeTable(database, period, context.out);
    TenderTable(database, period, context.out);
    BestSellers(database, period, context.out);
    return kExitOk;
}

}  // namespace kitra::backoffice::cli
