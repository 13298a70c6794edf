#pragma once
// A restaurant's documents, cash movements and receipts set against what the back office keeps
// of them. The import selects only what changed after the restaurant's import date and moves
// that date to the present moment at the end of every run, also a run that failed; a change
// made while a run was going, a step that failed, or a server clock behind this machine's can
// so leave records that no later run selects. Reconciling finds them: both sides are put in
// the form the back office keeps (its document type, number, date, customer, salesman, total,
// state) and matched by the identity the back office gives them.
#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace kitra::backoffice::cli::reconcile {

enum class Kind { Documents, CashMovements, Receipts };
inline constexpr std::array<Kind, 3> kKinds = {Kind::Documents, Kind::CashMovements, Kind::Receipts};

// The name in the tables ("Documentos") and the key in the JSON output ("documents").
const char* KindName(Kind kind);
const char* KindKey(Kind kind);

// The back-office document types the import saves into, as the settings map them; an empty one
// is a kind the import leaves out.
struct DocumentTypes {
    std::string invoice;           // restaurant documents of type 17
    std::string creditSale;        // 11
    std::string stockDocument;     // 13
    std::string cashEntrance;
    std::string cashWithdrawal;
    std::string paymentOnAccount;  // cash movements of type 8 with a customer
    std::string customerPayment;   // receipts
};

// One document as the back office keeps it (or, from the restaurant, would keep it).
struct Record {
    std::string type;          // the back-office document type
    std::int32_t number = 0;   // 0 from the restaurant: the back office gives the number
    bool numberedHere = false;  // the back office gave the number (restaurant: number 0)
    std::string date;          // its DocumentDate, "yyyy-mm-dd hh:mm:ss"; empty when there is none
    std::int32_t customer = 0;  // 0: a customer the back office does not have
    std::int32_t salesman = 0;
    std::int64_t cents = 0;    // its total
    bool voided = false;       // refunded in the restaurant; state 5 in the back office
    std::string comment;       // cash documents: the movement's type text, CR LF, its description
    std::string group;         // cash documents: the movement's type text, for the day table
    std::vector<std::int32_t> settles;  // receipts: the numbers of the credit sales it settles, sorted
    std::int64_t appliedCents = 0;      // back-office receipts: what they settled of those
    // From the restaurant only: its own reference (DocumentID, or the movement's UID) and the
    // moment the import selects it by (ModifyDate, or the movement's date), empty when it has
    // none and the import never selects it.
    std::string source;
    std::string selectedBy;
    // Documents: the restaurant header's UID, which the back office keeps on a document it
    // numbered itself (empty on one saved before it kept them). Such a document is matched by it.
    std::string sourceUID;
    // Why the import cannot save it as the restaurant has it (a value it needs is missing); the
    // import's step stops there, so the restaurant must mend it before a rewind helps.
    std::string unimportable;
    // From the back office only: its key.
    std::int32_t key = 0;
};

// A record that is on one side only, or differs between the two.
struct Difference {
    Kind kind = Kind::Documents;
    std::string day;
    std::string identity;  // how the back office names it: "VB EXT/12"
    std::optional<Record> restaurant;
    std::optional<Record> backOffice;
    // "missing" (not in the back office), "onlyInBackOffice", "total", "state", "date",
    // "customer", "settlements".
    std::vector<std::string> differs;
    // Why importing again would not mend it; empty when it would.
    std::string obstacle;
    // The next import selects the restaurant's record anyway (it changed after the import date).
    bool pending = false;
};

struct DayTotals {
    long restaurantCount = 0;
    std::int64_t restaurantCents = 0;
    long backOfficeCount = 0;
    std::int64_t backOfficeCents = 0;
    bool operator==(const DayTotals&) const = default;
};

struct KindSummary {
    long restaurantCount = 0;
    std::int64_t restaurantCents = 0;
    long backOfficeCount = 0;
    std::int64_t backOfficeCents = 0;
    long differing = 0;  // the differences found, pending ones included
    long pending = 0;
    // By day and, for cash movements, the movement's type text.
    std::map<std::pair<std::string, std::string>, DayTotals> days;
};

// The back office's credit sales of the restaurant's series, by number: those it has, and those
// with something still open. A receipt can settle only what is open: a refunded credit sale, or
// one paid in full, is settled by no receipt, whatever the restaurant's receipt names.
struct CreditSales {
    std::set<std::int32_t> documents;
    std::set<std::int32_t> open;
};

struct Outcome {
    std::array<KindSummary, 3> summaries;
    std::vector<Difference> differences;  // by kind, then day
    // One second before the earliest moment the import selects a record that a rewind brings
    // in by; nothing when no rewind would mend anything.
    std::optional<std::string> rewindTo;

    KindSummary& Summary(Kind kind) { return summaries[static_cast<std::size_t>(kind)]; }
    const KindSummary& Summary(Kind kind) const { return summaries[static_cast<std::size_t>(kind)]; }
    // Differences that no coming import mends by itself.
    long Unresolved() const;
};

// Matches one kind's records of the two sides and adds the summary and the differences to the
// outcome. `importDate` is the restaurant's ImportDateTransactions: a restaurant record selected
// by a later moment is pending, not lost. `creditSales` is what receipts are weighed against.
void Reconcile(Kind kind, std::vector<Record> restaurant, std::vector<Record> backOffice,
               const std::string& series, const std::string& importDate,
               const CreditSales& creditSales, Outcome& outcome);

// Sets the outcome's rewind date from its differences.
void DecideRewind(Outcome& outcome);

// "VB EXT/12"; a document whose number the back office gives and that it does not have yet:
// "VB EXT/- de 2025-01-02 10:00:00".
std::string Identity(const Record& record, const std::string& series);

// "12,50"
std::string Money(std::int64_t cents);

}  // namespace kitra::backoffice::cli::reconcile
