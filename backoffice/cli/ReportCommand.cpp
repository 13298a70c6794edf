// kitra-host report sales: what the back office sold, read from its documents. A day-by-day
// table of the sales documents, the totals by document type and by tender, and the stock of the
// ten items that sold most.
#include <algorithm>
#include <ostream>

#include <fmt/format.h>

#include "backoffice/BackOffice.h"
#include "backoffice/cli/Command.h"
#include "core/DateTime.h"
#include "core/Error.h"
#include "core/Text.h"

namespace kitra::backoffice::cli {
namespace {

constexpr const char* kUsage = "Uso: kitra-host report sales [--from DATA] [--to DATA]";

// Sales, credit sales and returns: what the day table counts (returns as negative amounts).
constexpr const char* kSalesKinds = "1, 2, 3";

struct Period {
    std::string from = "0000-01-01 00:00:00";
    std::string to = "9999-12-31 23:59:59";
};

// "yyyy-mm-dd" (the whole day) or "yyyy-mm-dd hh:mm:ss".
std::string PeriodBound(const std::string& option, const std::string& text, bool endOfDay) {
    if (auto moment = ParseIsoDateTime(text)) return FormatIsoDateTime(*moment);
    if (auto day = ParseIsoDateTime(text + (endOfDay ? " 23:59:59" : " 00:00:00")))
        return FormatIsoDateTime(*day);
    throw UsageError("A data de '" + option + "' deve ter a forma aaaa-mm-dd ou aaaa-mm-dd "
                     "hh:mm:ss: '" + text + "'.");
}

Period ParsePeriod(const std::vector<std::string>& arguments) {
    Period period;
    for (std::size_t i = 1; i < arguments.size(); i += 2) {
        if (i + 1 >= arguments.size()) throw UsageError(kUsage);
        if (arguments[i] == "--from") {
            period.from = PeriodBound("--from", arguments[i + 1], false);
        } else if (arguments[i] == "--to") {
            period.to = PeriodBound("--to", arguments[i + 1], true);
        } else {
            throw UsageError(kUsage);
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
    Statement types(database,
                    "SELECT d.DocumentTypeID, COALESCE(t.Description, ''), "
                    "SUM(d.State = 0), SUM(CASE WHEN d.State = 0 THEN d.Total ELSE 0 END), "
                    "SUM(d.State <> 0), SUM(CASE WHEN d.State <> 0 THEN d.Total ELSE 0 END) "
                    "FROM documents d LEFT JOIN document_types t ON t.DocumentTypeID = "
                    "d.DocumentTypeID WHERE d.DocumentDate BETWEEN ? AND ? "
                    "GROUP BY d.DocumentTypeID ORDER BY d.DocumentTypeID");
    InPeriod(types, period);
    out << "Por tipo de documento\n";
    out << fmt::format("{:<6}  {:<26}  {:>10}  {:>13}  {:>8}  {:>13}\n", "Tipo", "Descrição",
                       "Documentos", "Total", "Anulados", "Total anulado");
    while (types.Step()) {
        out << fmt::format("{:<6}  {:<26}  {:>10}  {:>13}  {:>8}  {:>13}\n", types.ColumnText(0),
                           types.ColumnText(1), types.ColumnText(2),
                           Money(types.Column(3).ToDouble()), types.ColumnText(4),
                           Money(types.Column(5).ToDouble()));
    }
    out << "\n";
}

void TenderTable(Database& database, const Period& period, std::ostream& out) {
    Statement tenders(database,
                      "SELECT p.TenderID, COALESCE(t.Description, '(desconhecida)'), "
                      "COUNT(DISTINCT p.DocumentKey), SUM(p.Amount) FROM document_payments p "
                      "JOIN documents d ON d.DocumentKey = p.DocumentKey "
                      "LEFT JOIN tenders t ON t.TenderID = p.TenderID "
                      "WHERE d.State = 0 AND d.DocumentDate BETWEEN ? AND ? "
                      "GROUP BY p.TenderID ORDER BY p.TenderID");
    InPeriod(tenders, period);
    out << "Por modalidade de pagamento\n";
    out << fmt::format("{:>10}  {:<26}  {:>10}  {:>13}\n", "Modalidade", "Descrição",
                       "Documentos", "Valor");
    while (tenders.Step()) {
        out << fmt::format("{:>10}  {:<26}  {:>10}  {:>13}\n", tenders.ColumnText(0),
                           tenders.ColumnText(1), tenders.ColumnText(2),
                           Money(tenders.Column(3).ToDouble()));
    }
    Statement open(database,
                   "SELECT COUNT(*), COALESCE(SUM(a.Amount), 0), COALESCE(SUM(a.OpenAmount), 0) "
                   "FROM account_entries a JOIN documents d ON d.DocumentKey = a.DocumentKey "
                   "WHERE d.State = 0 AND d.DocumentDate BETWEEN ? AND ?");
    InPeriod(open, period);
    open.Step();
    out << fmt::format("{:>10}  {:<26}  {:>10}  {:>13}   (em aberto: {})\n\n", "",
                       "A crédito (conta corrente)", open.ColumnText(0),
                       Money(open.Column(1).ToDouble()), Money(open.Column(2).ToDouble()));
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

}  // namespace

int RunReport(CommandContext& context) {
    if (context.arguments.empty() || context.arguments.front() != "sales") throw UsageError(kUsage);
    const Period period = ParsePeriod(context.arguments);
    BackOffice office(context.dataFolder);
    Database& database = office.GetDatabase();
    context.out << "Período: " << period.from << " a " << period.to << "\n\n";
    DayTable(database, period, context.out);
    TypeTable(database, period, context.out);
    TenderTable(database, period, context.out);
    BestSellers(database, period, context.out);
    return kExitOk;
}

}  // namespace kitra::backoffice::cli
