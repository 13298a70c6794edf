#include "backoffice/cli/Reconciliation.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <tuple>

#include <fmt/format.h>

#include "core/DateTime.h"
#include "core/Text.h"

namespace kitra::backoffice::cli::reconcile {
namespace {

std::string DayOf(const std::string& date) { return date.size() >= 10 ? date.substr(0, 10) : ""; }

// The identity the back office finds a document by when it is imported again. A number the
// restaurant gives is the identity: type, series and number. A document the back office numbers
// itself is found by the restaurant header's UID; one saved before the back office kept the UID,
// by its moment, customer and salesman. A cash document has no number from the restaurant at
// all: all it keeps of the movement is its identity.
std::string MatchKey(Kind kind, const Record& r, bool byUid) {
    const std::string type = FoldCase(r.type);
    if (kind == Kind::CashMovements) {
        return fmt::format("{}|{}|{}|{}|{}|{}", type, r.date, r.customer, r.salesman, r.cents, r.comment);
    }
    if (!r.numberedHere) return fmt::format("{}|#{}", type, r.number);
    if (byUid && !r.sourceUID.empty()) return fmt::format("{}|uid {}", type, r.sourceUID);
    return fmt::format("{}|{}|{}|{}", type, r.date, r.customer, r.salesman);
}

bool IsLater(const std::string& moment, const std::string& than) {
    return IsIsoDateTime(than) && moment > than;
}

int DaysIn(int year, int month) {
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && leap ? 29 : kDays[month - 1];
}

std::string OneSecondBefore(const std::string& moment) {
    DateTime t = *ParseIsoDateTime(moment);
    if (--t.second < 0) {
        t.second = 59;
        if (--t.minute < 0) {
            t.minute = 59;
            if (--t.hour < 0) {
                t.hour = 23;
                if (--t.day < 1) {
                    if (--t.month < 1) {
                        t.month = 12;
                        --t.year;
                    }
                    t.day = DaysIn(t.year, t.month);
                }
            }
        }
    }
    return FormatIsoDateTime(t);
}

// A receipt settles what the restaurant names, as far as the money goes, of what is still open,
// the oldest first. So the back office's receipt differs when it settled a credit sale the
// restaurant's receipt does not name, or left one it names open while it still had money.
bool SettlesOtherwise(const Record& restaurant, const Record& backOffice, const CreditSales& creditSales) {
    const auto names = [](const Record& r, std::int32_t n) {
        return std::binary_search(r.settles.begin(), r.settles.end(), n);
    };
    for (std::int32_t n : backOffice.settles) {
        if (!names(restaurant, n)) return true;
    }
    if (backOffice.cents - backOffice.appliedCents < 1) return false;
    for (std::int32_t n : restaurant.settles) {
        if (!names(backOffice, n) && creditSales.open.contains(n)) return true;
    }
    return false;
}

// The import leaves a receipt out when none of the credit sales it names can be settled: each is
// in the back office and nothing of it is open (refunded, or paid in full). A credit sale the
// back office does not have yet may still come, and the receipt with it.
bool NothingToSettle(const Record& receipt, const CreditSales& creditSales) {
    for (std::int32_t n : receipt.settles) {
        if (creditSales.open.contains(n) || !creditSales.documents.contains(n)) return false;
    }
    return true;
}

}  // namespace

const char* KindName(Kind kind) {
    switch (kind) {
        case Kind::Documents: return "Documentos";
        case Kind::CashMovements: return "Mov.Caixa";
        case Kind::Receipts: return "Recibos";
    }
    return "";
}

const char* KindKey(Kind kind) {
    switch (kind) {
        case Kind::Documents: return "documents";
        case Kind::CashMovements: return "cashMovements";
        case Kind::Receipts: return "receipts";
    }
    return "";
}

std::string Money(std::int64_t cents) {
    return fmt::format("{}{},{:02}", cents < 0 ? "-" : "", std::llabs(cents) / 100, std::llabs(cents) % 100);
}

std::string Identity(const Record& record, const std::string& series) {
    if (record.key != 0 || !record.numberedHere)
        return fmt::format("{} {}/{}", record.type, series, record.number);
    return fmt::format("{} {}/- de {}", record.type, series, record.date.empty() ? "?" : record.date);
}

long Outcome::Unresolved() const {
    return static_cast<long>(std::count_if(differences.begin(), differences.end(),
                                           [](const Difference& d) { return !d.pending; }));
}

void Reconcile(Kind kind, std::vector<Record> restaurant, std::vector<Record> backOffice,
               const std::string& series, const std::string& importDate,
               const CreditSales& creditSales, Outcome& outcome) {
    struct Candidates {
        std::vector<std::size_t> restaurant, backOffice;
    };
    std::map<std::string, Candidates> byKey;
    std::vector<std::size_t> unmatchedRestaurant, unmatchedBackOffice;
    // The UIDs the back office keeps: a restaurant document without a number whose UID it does
    // not keep may be one it saved before it kept them, and is matched by its moment.
    std::set<std::string> keptUids;
    for (const Record& b : backOffice) {
        if (b.numberedHere && !b.sourceUID.empty()) keptUids.insert(FoldCase(b.type) + "|" + b.sourceUID);
    }
    for (std::size_t i = 0; i < restaurant.size(); ++i) {
        const Record& r = restaurant[i];
        byKey[MatchKey(kind, r, keptUids.contains(FoldCase(r.type) + "|" + r.sourceUID))].restaurant.push_back(i);
    }
    for (std::size_t i = 0; i < backOffice.size(); ++i) byKey[MatchKey(kind, backOffice[i], true)].backOffice.push_back(i);

    std::vector<Difference> found;
    std::vector<bool> leftOut(restaurant.size(), false);
    const auto add = [&](const Record* r, const Record* b, std::vector<std::string> differs,
                         std::string obstacle) {
        Difference d;
        d.kind = kind;
        d.day = DayOf(r ? r->date : b->date);
        d.identity = Identity(b ? *b : *r, series);
        if (r) d.restaurant = *r;
        if (b) d.backOffice = *b;
        d.differs = std::move(differs);
        if (!r) {
            obstacle = "já não está no restaurante: importar de novo não o tira da retaguarda";
        } else if (!r->unimportable.empty()) {
            obstacle = r->unimportable;
        } else if (obstacle.empty() && r->selectedBy.empty()) {
            obstacle = "o restaurante não lhe dá data de alteração: a importação nunca o escolhe";
        }
        d.obstacle = std::move(obstacle);
        d.pending = r && !r->selectedBy.empty() && IsLater(r->selectedBy, importDate);
        found.push_back(std::move(d));
    };
    for (auto& [key, candidates] : byKey) {
        std::vector<std::size_t>& rs = candidates.restaurant;
        std::vector<std::size_t>& bs = candidates.backOffice;
        std::vector<std::pair<std::size_t, std::size_t>> pairs;
        // Among equals the one with the same total is the same document.
        for (auto r = rs.begin(); r != rs.end();) {
            const auto b = std::find_if(bs.begin(), bs.end(), [&](std::size_t i) {
                return backOffice[i].cents == restaurant[*r].cents;
            });
            if (b == bs.end()) {
                ++r;
                continue;
            }
            pairs.emplace_back(*r, *b);
            bs.erase(b);
            r = rs.erase(r);
        }
        while (!rs.empty() && !bs.empty()) {
            pairs.emplace_back(rs.front(), bs.front());
            rs.erase(rs.begin());
            bs.erase(bs.begin());
        }
        for (const auto& [ri, bi] : pairs) {
            const Record& r = restaurant[ri];
            const Record& b = backOffice[bi];
            std::vector<std::string> differs;
            if (r.cents != b.cents) differs.push_back("total");
            if (kind == Kind::Documents && r.voided != b.voided) differs.push_back("state");
            // A cash document is matched by all it keeps; a document by its number may have
            // changed its moment or customer since (a credit sale on another account).
            if (kind != Kind::CashMovements && r.date != b.date) differs.push_back("date");
            if (kind != Kind::CashMovements && r.customer != b.customer) differs.push_back("customer");
            // One found by its UID may have been saved while the back office lacked its salesman.
            if (kind == Kind::Documents && b.numberedHere && !b.sourceUID.empty() && r.salesman != b.salesman)
                differs.push_back("salesman");
            if (kind == Kind::Receipts && SettlesOtherwise(r, b, creditSales)) differs.push_back("settlements");
            if (!differs.empty()) add(&r, &b, std::move(differs), "");
        }
        // Two restaurant documents with one number are one document in the back office.
        const Record* keeper = pairs.empty() ? nullptr : &restaurant[pairs.front().first];
        for (std::size_t ri : rs) {
            const Record& r = restaurant[ri];
            if (kind == Kind::Receipts && NothingToSettle(r, creditSales)) {
                leftOut[ri] = true;  // as the import leaves it out
                continue;
            }
            std::string obstacle;
            if (kind != Kind::CashMovements && !r.numberedHere && keeper) {
                obstacle = "o restaurante tem outro documento com o mesmo tipo e número (" +
                           keeper->source + "): a retaguarda guarda só um";
            }
            if (obstacle.empty() && (kind == Kind::CashMovements || r.numberedHere)) {
                unmatchedRestaurant.push_back(ri);  // may yet be found with a customer unknown then
                continue;
            }
            add(&r, nullptr, {"missing"}, std::move(obstacle));
        }
        unmatchedBackOffice.insert(unmatchedBackOffice.end(), bs.begin(), bs.end());
    }
    // A document without a number saved while the back office lacked its customer or salesman
    // (0 there) is the one the next import finds again and completes: one difference, not a
    // missing document and another that only the back office has.
    for (std::size_t ri : unmatchedRestaurant) {
        const Record& r = restaurant[ri];
        const auto sameOrUnknown = [](std::int32_t a, std::int32_t b) { return a == b || a == 0 || b == 0; };
        auto best = unmatchedBackOffice.end();
        for (auto b = unmatchedBackOffice.begin(); b != unmatchedBackOffice.end(); ++b) {
            const Record& candidate = backOffice[*b];
            // One that keeps a UID is matched by it alone.
            if (kind == Kind::Documents && !candidate.sourceUID.empty()) continue;
            if (candidate.numberedHere != r.numberedHere || FoldCase(candidate.type) != FoldCase(r.type) ||
                candidate.date != r.date || !sameOrUnknown(candidate.customer, r.customer) ||
                !sameOrUnknown(candidate.salesman, r.salesman))
                continue;
            if (best == unmatchedBackOffice.end() || (candidate.cents == r.cents && backOffice[*best].cents != r.cents))
                best = b;
        }
        if (best == unmatchedBackOffice.end()) {
            add(&r, nullptr, {"missing"}, "");
            continue;
        }
        const Record& b = backOffice[*best];
        std::vector<std::string> differs;
        if (r.customer != b.customer) differs.push_back("customer");
        if (r.salesman != b.salesman) differs.push_back("salesman");
        if (r.cents != b.cents) differs.push_back("total");
        if (kind == Kind::Documents && r.voided != b.voided) differs.push_back("state");
        add(&r, &b, std::move(differs), "");
        unmatchedBackOffice.erase(best);
    }
    for (std::size_t bi : unmatchedBackOffice) add(nullptr, &backOffice[bi], {"onlyInBackOffice"}, "");

    KindSummary& summary = outcome.Summary(kind);
    for (std::size_t i = 0; i < restaurant.size(); ++i) {
        if (leftOut[i]) continue;
        const Record& r = restaurant[i];
        ++summary.restaurantCount;
        summary.restaurantCents += r.cents;
        DayTotals& day = summary.days[{DayOf(r.date), r.group}];
        ++day.restaurantCount;
        day.restaurantCents += r.cents;
    }
    for (const Record& b : backOffice) {
        ++summary.backOfficeCount;
        summary.backOfficeCents += b.cents;
        DayTotals& day = summary.days[{DayOf(b.date), b.group}];
        ++day.backOfficeCount;
        day.backOfficeCents += b.cents;
    }
    std::erase_if(summary.days, [](const auto& day) {
        return day.second.restaurantCount == day.second.backOfficeCount &&
               day.second.restaurantCents == day.second.backOfficeCents;
    });  // only the days that differ stay

    std::stable_sort(found.begin(), found.end(), [](const Difference& a, const Difference& b) {
        return std::tie(a.day, a.identity) < std::tie(b.day, b.identity);
    });
    for (Difference& d : found) {
        ++summary.differing;
        if (d.pending) ++summary.pending;
        outcome.differences.push_back(std::move(d));
    }
}

void DecideRewind(Outcome& outcome) {
    std::optional<std::string> earliest;
    for (const Difference& d : outcome.differences) {
        if (d.pending || !d.obstacle.empty() || !d.restaurant) continue;
        if (!earliest || d.restaurant->selectedBy < *earliest) earliest = d.restaurant->selectedBy;
    }
    if (earliest && IsIsoDateTime(*earliest)) outcome.rewindTo = OneSecondBefore(*earliest);
}

}  // namespace kitra::backoffice::cli::reconcile
