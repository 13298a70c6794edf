#include "restaurant/generator/DataGenerator.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <array>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "restaurant/generator/Catalogue.h"
#include "restaurant/generator/TaxNumbers.h"

namespace kitra::restaurant {

namespace cat = catalogue;

// ---- moments -------------------------------------------------------------------------------

namespace {

std::int64_t DaysFromCivil(int year, int month, int day) {
    year -= month <= 2 ? 1 : 0;
    const int era = (year >= 0 ? year : year - 399) / 400;
    const int yearOfEra = year - era * 400;
    const int dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return static_cast<std::int64_t>(era) * 146097 + dayOfEra - 719468;
}

void CivilFromDays(std::int64_t days, int& year, int& month, int& day) {
    days += 719468;
    const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const int dayOfEra = static_cast<int>(days - era * 146097);
    const int yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int shiftedMonth = (5 * dayOfYear + 2) / 153;
    day = dayOfYear - (153 * shiftedMonth + 2) / 5 + 1;
    month = shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9;
    year = static_cast<int>(yearOfEra + era * 400) + (month <= 2 ? 1 : 0);
}

bool Digits(std::string_view text, std::size_t at, std::size_t count, int& value) {
    value = 0;
    for (std::size_t i = at; i < at + count; ++i) {
        if (i >= text.size() || text[i] < '0' || text[i] > '9') return false;
        value = value * 10 + (text[i] - '0');
    }
    return true;
}

}  // namespace

std::int64_t ParseMoment(std::string_view text) {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    if (text.size() != 10 && text.size() != 19) return -1;
    if (!Digits(text, 0, 4, year) || text[4] != '-' || !Digits(text, 5, 2, month) ||
        text[7] != '-' || !Digits(text, 8, 2, day)) {
        return -1;
    }
    if (text.size() == 19 &&
        (text[10] != ' ' || !Digits(text, 11, 2, hour) || text[13] != ':' ||
         !Digits(text, 14, 2, minute) || text[16] != ':' || !Digits(text, 17, 2, second))) {
        return -1;
    }
    if (year < 1970 || month < 1 || month > 12 || day < 1 || hour > 23 || minute > 59 ||
        second > 59) {
        return -1;
    }
    int checkYear = 0, checkMonth = 0, checkDay = 0;
    const std::int64_t days = DaysFromCivil(year, month, day);
    CivilFromDays(days, checkYear, checkMonth, checkDay);
    if (checkMonth != month || checkDay != day) return -1;  // 31 April and the like
    return days * 86400 + hour * 3600 + minute * 60 + second;
}

std::string FormatMoment(std::int64_t seconds) {
    int year = 0, month = 0, day = 0;
    CivilFromDays(seconds / 86400, year, month, day);
    const int time = static_cast<int>(seconds % 86400);
    char text[24];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", year, month, day,
                  time / 3600, time / 60 % 60, time % 60);
    return text;
}

bool ParseDataSize(std::string_view text, DataSize& size) {
    if (text == "tiny") size = DataSize::Tiny;
    else if (text == "demo") size = DataSize::Demo;
    else if (text == "bench") size = DataSize::Bench;
    else return false;
    return true;
}

namespace {

// ---- randomness ----------------------------------------------------------------------------

// xoshiro256** seeded through splitmix64: the standard library's engines would do, but its
// distributions differ between library versions, and the data must not.
class Random {
public:
    explicit Random(std::uint64_t seed) {
        for (auto& word : state_) {
            seed += 0x9E3779B97F4A7C15ull;
            std::uint64_t z = seed;
            z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
            z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
            word = z ^ (z >> 31);
        }
    }

    std::uint64_t Next() {
        const std::uint64_t result = Rotate(state_[1] * 5, 7) * 9;
        const std::uint64_t t = state_[1] << 17;
        state_[2] ^= state_[0];
        state_[3] ^= state_[1];
        state_[1] ^= state_[2];
        state_[0] ^= state_[3];
        state_[2] ^= t;
        state_[3] = Rotate(state_[3], 45);
        return result;
    }

    // Uniform in [0, n), without the modulo's bias.
    std::uint64_t Below(std::uint64_t n) {
        const std::uint64_t threshold = (0 - n) % n;
        for (;;) {
            const std::uint64_t x = Next();
            if (x >= threshold) return x % n;
        }
    }
    // Uniform in [low, high].
    long Between(long low, long high) {
        return low + static_cast<long>(Below(static_cast<std::uint64_t>(high - low + 1)));
    }
    double Unit() { return static_cast<double>(Next() >> 11) * 0x1.0p-53; }
    bool Chance(double probability) { return Unit() < probability; }

    template <typename Container>
    const auto& Pick(const Container& items) {
        return items[Below(items.size())];
    }

    template <typename T>
    void Shuffle(std::vector<T>& items) {
        for (std::size_t i = items.size(); i > 1; --i) std::swap(items[i - 1], items[Below(i)]);
    }

private:
    static std::uint64_t Rotate(std::uint64_t x, int k) { return (x << k) | (x >> (64 - k)); }
    std::array<std::uint64_t, 4> state_{};
};

// ---- SQL text ------------------------------------------------------------------------------

// One row's values as SQL literals.
class Row {
public:
    Row& Int(long long value) { return Add(std::to_string(value)); }
    Row& Null() { return Add("NULL"); }
    Row& Raw(std::string_view literal) { return Add(std::string(literal)); }
    Row& Moment(std::int64_t seconds) { return Add("'" + FormatMoment(seconds) + "'"); }
    Row& Text(std::string_view value) {
        std::string literal = "'";
        for (const char c : value) {
            if (c == '\'') literal += "''";
            else if (c == '\\') literal += "\\\\";
            else literal += c;
        }
        return Add(literal + "'");
    }
    Row& OptionalText(const std::optional<std::string>& value) { return value ? Text(*value) : Null(); }
    const std::string& Sql() const { return sql_; }

private:
    Row& Add(const std::string& literal) {
        if (!sql_.empty()) sql_ += ',';
        sql_ += literal;
        return *this;
    }
    std::string sql_;
};

// Multi-row INSERTs into one table, `batch` rows per statement.
class TableWriter {
public:
    TableWriter(std::ostream& out, TableCounts& counts, std::string table, std::string columns,
                int batch)
        : out_(out), counts_(counts), table_(std::move(table)), columns_(std::move(columns)),
          batch_(std::max(1, batch)) {}
    TableWriter(const TableWriter&) = delete;
    TableWriter& operator=(const TableWriter&) = delete;

    void Add(const Row& row) {
        buffer_ += pending_ == 0 ? "INSERT INTO " + table_ + " (" + columns_ + ") VALUES\n(" : ",\n(";
        buffer_ += row.Sql();
        buffer_ += ')';
        if (++pending_ == batch_) Flush();
    }

    void Flush() {
        if (pending_ == 0) return;
        out_ << buffer_ << ";\n";
        counts_[table_] += pending_;
        pending_ = 0;
        buffer_.clear();
    }

private:
    std::ostream& out_;
    TableCounts& counts_;
    std::string table_;
    std::string columns_;
    int batch_;
    int pending_ = 0;
    std::string buffer_;
};

// ---- the restaurant ------------------------------------------------------------------------

struct Sizes {
    int salesmen, customers, families, items, headers, movements;
};

Sizes SizesFor(const GeneratorOptions& options) {
    const auto scaled = [&](double base, int minimum) {
        return std::max(minimum, static_cast<int>(std::llround(base * options.factor)));
    };
    switch (options.size) {
        case DataSize::Tiny:
            return {4, 12, 4, 24, 40, 16};
        case DataSize::Demo:
            return {10, 250, 8, 200, 4000, 400};
        case DataSize::Bench:
            break;
    }
    return {30, scaled(5000, 10), 8, 1200, scaled(100000, 1), scaled(10000, 1)};
}

struct Salesman {
    int uid;
    int id;
};

struct Customer {
    int uid;
    int id;
};

struct Item {
    int uid;
    std::string name;
    int price;  // cents, per kg for weighed items
    int tax;    // taxes.uid
    bool weighed;
};

struct PaymentType {
    int uid;
    std::string_view code;
    std::string_view name;
};

constexpr std::array<PaymentType, 7> kPaymentTypes = {{
    {1, "1", "Dinheiro"},
    {2, "2", "Multibanco"},
    {3, "3", "Cartão Visa"},
    {4, "4", "MB Way"},
    {5, "5", "Cheque"},
    {6, "9999", "Conta Corrente"},
    {7, "9998", "Oferta"},
}};
constexpr int kCash = 1, kDebitCard = 2, kVisa = 3, kMbWay = 4, kOnAccount = 6, kOffered = 7;

// Documents the connector imports, and two it must leave alone.
constexpr int kInvoice = 17, kCreditSale = 11, kStockDocument = 13;
constexpr int kTableCheck = 2, kQuotation = 16;
// Every so many lines, one refers to an item that is no longer in the restaurant's table.
constexpr int kOrphanLineEvery = 97;
constexpr int kRemovedItemUid = 999999;

std::string_view DocumentPrefix(int type) {
    switch (type) {
        case kInvoice: return "FT";
        case kCreditSale: return "CC";
        case kStockDocument: return "GS";
        case kTableCheck: return "CM";
        default: return "OR";
    }
}

std::string Numbered(std::string_view prefix, long number) {
    char digits[24];
    std::snprintf(digits, sizeof digits, "%07ld", number);
    return std::string(prefix) + digits;
}

// Lower-case ASCII for e-mail addresses: the accented letters of the name lists lose their
// accents, anything else that is not a letter or digit goes.
std::string AsciiSlug(std::string_view text) {
    static constexpr std::array<std::pair<std::string_view, char>, 24> kFolds = {{
        {"á", 'a'}, {"à", 'a'}, {"â", 'a'}, {"ã", 'a'}, {"é", 'e'}, {"ê", 'e'},
        {"í", 'i'}, {"ó", 'o'}, {"ô", 'o'}, {"õ", 'o'}, {"ú", 'u'}, {"ç", 'c'},
        {"Á", 'a'}, {"À", 'a'}, {"Â", 'a'}, {"Ã", 'a'}, {"É", 'e'}, {"Ê", 'e'},
        {"Í", 'i'}, {"Ó", 'o'}, {"Ô", 'o'}, {"Õ", 'o'}, {"Ú", 'u'}, {"Ç", 'c'},
    }};
    std::string slug;
    for (std::size_t i = 0; i < text.size();) {
        const char c = text[i];
        if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) {
            slug += c;
            ++i;
            continue;
        }
        if (c >= 'A' && c <= 'Z') {
            slug += static_cast<char>(c - 'A' + 'a');
            ++i;
            continue;
        }
        bool folded = false;
        for (const auto& [accented, plain] : kFolds) {
            if (text.substr(i, accented.size()) == accented) {
                slug += plain;
                i += accented.size();
                folded = true;
                break;
            }
        }
        if (!folded) ++i;
    }
    return slug;
}

class Generator {
public:
    Generator(const GeneratorOptions& options, std::ostream& out)
        : options_(options), sizes_(SizesFor(options)), random_(options.seed), out_(out),
          windowStart_(options.baseMoment - static_cast<std::int64_t>(options.days) * 86400),
          taxes_(out, counts_, "taxes", "uid,TaxRate,Description", options.rowsPerInsert),
          paymentTypes_(out, counts_, "paymenttypes", "uid,code,Description,RecordDeleted",
                        options.rowsPerInsert),
          salesmen_(out, counts_, "salesmans",
                    "uid,SalesmanID,SalesmanName,SalesmanPassword,Telephone,MobilePhone,"
                    "AddressLine1,AddressLine2,PostalCode,EmailAddress,Locality,RecordDeleted,"
                    "CreateDate,ModifyDate",
                    options.rowsPerInsert),
          customers_(out, counts_, "customers",
                     "uid,CustomerID,Name,GlobalDiscount,CardID,FederalTaxID,EmailAddress,"
                     "PartyAddressLine1,PartyAddressLine2,PartyPostalCode,PartyCountryID,"
                     "PartyLocationID,Telephone1,MobileTelephone1,RecordDeleted,CreateDate,"
                     "ModifyDate",
                     options.rowsPerInsert),
          families_(out, counts_, "families", "uid,code,description,RecordDeleted,CreateDate,ModifyDate",
                    options.rowsPerInsert),
          subfamilies_(out, counts_, "subfamilies",
                       "uid,code,FamilyUID,Description,RecordDeleted,CreateDate,ModifyDate",
                       options.rowsPerInsert),
          properties_(out, counts_, "properties",
                      "UID,ReadQuantityFromScale,SalesPrice1,SalesPrice2,SalesPrice3,SalesPrice4,"
                      "SalesPrice5,ItemTaxID1,ItemTaxID2",
                      options.rowsPerInsert),
          plus_(out, counts_, "plus",
                "UID,ItemID,Description,ShortDescription1,BarCode,SubFamilyID,PropertyUID,"
                "StockManagement,RecordDeleted,CreateDate,ModifyDate",
                options.rowsPerInsert),
          headers_(out, counts_, "transactionsheaders",
                   "UID,DocumentTypeUID,DocumentID,CreateSalesmanUID,CustomerUID,"
                   "TransactionStatus,TransactionStartTerminalUID,TableTotal,CreateDate,ModifyDate",
                   options.rowsPerInsert),
          details_(out, counts_, "transactionsdetails",
                   "UID,TransactionUID,PluUid,PluName,Quantity,PluUnitPrice,DiscountPercentage,"
                   "DiscountValue,SaleValue,SaleTaxUID,SalesmanUID,Waste,CreateDate",
                   options.rowsPerInsert),
          tenders_(out, counts_, "transactionstenders",
                   "UID,TransactionUID,PaymentTypeUID,PaymentType,value,ReceiptMovementuid",
                   options.rowsPerInsert),
          movements_(out, counts_, "cashdrawer_movements",
                     "UID,MovementTypeID,MovementFlow,SalesmanUID,EntityUID,Date,value,DocumentID,"
                     "description",
                     options.rowsPerInsert) {}

    TableCounts Run() {
        out_ << "-- Restaurant data generated for size " << SizeName() << ", factor "
             << options_.factor << ", seed " << options_.seed << ", dates in the "
             << options_.days << " days before " << FormatMoment(options_.baseMoment) << ".\n"
             << "SET NAMES utf8mb4;\n"
             << "SET autocommit = 0;\n"
             << "SET unique_checks = 0;\n"
             << "SET foreign_key_checks = 0;\n";
        WriteTaxes();
        WritePaymentTypes();
        WriteSalesmen();
        WriteCustomers();
        WriteMenu();
        WriteTransactions();
        WriteCashMovements();
        for (TableWriter* table : {&taxes_, &paymentTypes_, &salesmen_, &customers_, &families_,
                                   &subfamilies_, &properties_, &plus_, &headers_, &details_,
                                   &tenders_, &movements_}) {
            table->Flush();
        }
        out_ << "COMMIT;\n";
        return counts_;
    }

private:
    std::string_view SizeName() const {
        switch (options_.size) {
            case DataSize::Tiny: return "tiny";
            case DataSize::Demo: return "demo";
            case DataSize::Bench: return "bench";
        }
        return "";
    }

    // A moment in the window, uniformly.
    std::int64_t AnyMoment() {
        return windowStart_ + static_cast<std::int64_t>(random_.Below(
                                  static_cast<std::uint64_t>(options_.baseMoment - windowStart_)));
    }
    // A creation moment up to two years before the given change.
    std::int64_t CreatedBefore(std::int64_t modified) {
        return modified - random_.Between(0, 2 * 365) * 86400 - random_.Between(0, 86399);
    }

    std::string PersonName() {
        std::string name = std::string(random_.Pick(cat::kFirstNames)) + " " +
                           std::string(random_.Pick(cat::kSurnames));
        if (random_.Chance(0.5)) name += " " + std::string(random_.Pick(cat::kSurnames));
        return name;
    }
    std::string Digits(int count) {
        std::string digits;
        for (int i = 0; i < count; ++i) digits += static_cast<char>('0' + random_.Below(10));
        return digits;
    }
    std::string Landline(const cat::Locality& place) {
        return std::string(place.phonePrefix) + Digits(9 - static_cast<int>(place.phonePrefix.size()));
    }
    std::string Mobile() {
        static constexpr std::array<std::string_view, 4> kPrefixes = {"91", "92", "93", "96"};
        return std::string(random_.Pick(kPrefixes)) + Digits(7);
    }
    std::string Street() {
        return std::string(random_.Pick(cat::kStreets)) + ", " + std::to_string(random_.Between(1, 250));
    }
    std::string PostalCode(const cat::Locality& place) {
        return std::string(place.postalPrefix.substr(0, 2)) +
               std::to_string(random_.Between(10, 99)) + "-" + Digits(3);
    }
    std::string Email(const std::string& name) {
        const auto space = name.find(' ');
        const auto last = name.rfind(' ');
        return AsciiSlug(name.substr(0, space)) + "." + AsciiSlug(name.substr(last + 1)) +
               std::to_string(random_.Between(1, 99)) + "@" + std::string(random_.Pick(cat::kMailDomains));
    }
    std::string Nif(char first) {
        std::string nif(1, first);
        nif += Digits(7);
        nif += static_cast<char>('0' + NifCheckDigit(nif));
        return nif;
    }

    void WriteTaxes() {
        taxes_.Add(Row().Int(cat::kTaxNormal).Raw("23.00").Text("IVA Taxa Normal"));
        taxes_.Add(Row().Int(cat::kTaxIntermediate).Raw("13.00").Text("IVA Taxa Intermédia"));
        taxes_.Add(Row().Int(cat::kTaxReduced).Raw("6.00").Text("IVA Taxa Reduzida"));
    }

    void WritePaymentTypes() {
        for (const PaymentType& type : kPaymentTypes) {
            paymentTypes_.Add(Row().Int(type.uid).Text(type.code).Text(type.name).Int(0));
        }
    }

    void WriteSalesmen() {
        for (int id = 1; id <= sizes_.salesmen; ++id) {
            const cat::Locality& place = random_.Pick(cat::kLocalities);
            const std::string name = PersonName();
            const std::int64_t modified = AnyMoment();
            // Salesman 2 keeps the restaurant system's "no password", the text "0".
            const std::string password = id == 2 ? "0" : Digits(4);
            Row row;
            row.Int(10000 + id).Int(id).Text(name).Text(password).Text(Landline(place)).Text(Mobile());
            row.Text(Street());
            row.OptionalText(random_.Chance(0.4) ? std::optional<std::string>(random_.Pick(cat::kSecondLines))
                                         : std::nullopt);
            row.Text(PostalCode(place));
            row.OptionalText(random_.Chance(0.7) ? std::optional<std::string>(Email(name)) : std::nullopt);
            row.Text(place.name);
            row.Int(id > 2 && random_.Chance(0.08) ? 1 : 0);
            row.Moment(CreatedBefore(modified)).Moment(modified);
            salesmen_.Add(row);
            knownSalesmen_.push_back({10000 + id, id});
        }
    }

    void WriteCustomers() {
        // The final consumer: the customer of anonymous sales. Its code 0 is no customer of the
        // host's, so documents sold to it arrive without a customer.
        {
            const std::int64_t modified = AnyMoment();
            customers_.Add(Row().Int(1).Int(0).Text("Consumidor Final").Null().Null()
                               .Text("999999990").Null().Null().Null().Null().Text("PT").Null()
                               .Text("").Text("").Int(0).Moment(CreatedBefore(modified))
                               .Moment(modified));
        }
        for (int id = 1; id <= sizes_.customers; ++id) {
            const int uid = id + 1;
            const cat::Locality& place = random_.Pick(cat::kLocalities);
            const bool company = random_.Chance(0.3);
            std::string name;
            std::string nif;
            if (company) {
                name = std::string(random_.Pick(cat::kCompanyWords)) + " " +
                       std::string(random_.Pick(cat::kSurnames)) +
                       std::string(random_.Pick(cat::kCompanySuffixes));
                nif = Nif('5');
            } else {
                name = PersonName();
                static constexpr std::array<char, 3> kPersonFirst = {'1', '2', '3'};
                nif = Nif(random_.Pick(kPersonFirst));
            }
            static constexpr std::array<std::string_view, 6> kDiscounts = {"", "0", "5", "10", "12.5", "2.5"};
            std::optional<std::string> discount;
            if (random_.Chance(0.5)) discount = std::string(random_.Pick(kDiscounts));
            const std::int64_t modified = AnyMoment();
            Row row;
            row.Int(uid).Int(id).Text(name).OptionalText(discount);
            row.OptionalText(random_.Chance(0.3) ? std::optional<std::string>("CRT" + Digits(6)) : std::nullopt);
            row.Text(nif);
            row.OptionalText(random_.Chance(0.7) ? std::optional<std::string>(company ? "geral@" + AsciiSlug(name.substr(0, name.find(','))) + ".pt" : Email(name))
                                         : std::nullopt);
            row.Text(Street());
            row.OptionalText(random_.Chance(0.3) ? std::optional<std::string>(random_.Pick(cat::kSecondLines))
                                         : std::nullopt);
            row.Text(PostalCode(place)).Text("PT").Text(place.name);
            row.Text(random_.Chance(0.8) ? Landline(place) : std::string());
            row.Text(random_.Chance(0.8) ? Mobile() : std::string());
            row.Int(random_.Chance(0.03) ? 1 : 0);
            row.Moment(CreatedBefore(modified)).Moment(modified);
            customers_.Add(row);
            knownCustomers_.push_back({uid, id});
        }
        // Customers who buy on their account: few, so that receipts settle several sales.
        const std::size_t accountHolders =
            std::max<std::size_t>(2, std::min<std::size_t>(knownCustomers_.size(), knownCustomers_.size() / 10));
        accountCustomers_.assign(knownCustomers_.begin(), knownCustomers_.begin() + static_cast<long>(accountHolders));
    }

    void WriteMenu() {
        const auto& menu = cat::Menu();
        const int familyCount = std::min<int>(sizes_.families, static_cast<int>(menu.size()));
        struct Place {
            int subfamilyUid;
            const cat::Subfamily* subfamily;
        };
        std::vector<Place> places;
        int subfamilyCode = 0;
        for (int f = 0; f < familyCount; ++f) {
            const cat::Family& family = menu[static_cast<std::size_t>(f)];
            const std::int64_t modified = AnyMoment();
            families_.Add(Row().Int(f + 1).Text(std::to_string(f + 1)).Text(family.name).Int(0)
                              .Moment(CreatedBefore(modified)).Moment(modified));
            for (const cat::Subfamily& subfamily : family.subfamilies) {
                ++subfamilyCode;
                const std::int64_t changed = AnyMoment();
                subfamilies_.Add(Row().Int(subfamilyCode).Text(std::to_string(subfamilyCode))
                                     .Int(f + 1).Text(subfamily.name).Int(0)
                                     .Moment(CreatedBefore(changed)).Moment(changed));
                places.push_back({subfamilyCode, &subfamily});
            }
        }
        for (int i = 0; i < sizes_.items; ++i) {
            const Place& place = places[static_cast<std::size_t>(i) % places.size()];
            const cat::Subfamily& subfamily = *place.subfamily;
            const std::size_t round = static_cast<std::size_t>(i) / places.size();
            const auto& [baseName, basePrice] = subfamily.items[round % subfamily.items.size()];
            std::string name(baseName);
            int price = basePrice;
            if (const std::size_t variant = round / subfamily.items.size(); variant > 0) {
                name += cat::kVariants[(variant - 1) % cat::kVariants.size()];
                if (variant > cat::kVariants.size()) name += " " + std::to_string(variant);
                price = price * (80 + static_cast<int>(random_.Below(60))) / 100;
            }
            const int uid = i + 1;
            const std::string itemId = std::to_string(1000 + uid);
            std::string barCode;
            if (subfamily.stocked) {
                barCode = "560" + Digits(9);
                barCode += static_cast<char>('0' + Ean13CheckDigit(barCode));
            }
            std::optional<std::string> shortName;
            if (random_.Chance(0.8)) shortName = name.substr(0, std::min<std::size_t>(name.size(), 20));
            // A take-away price where the dish travels, the terrace's price 10 % above.
            const int terrace = (price * 110 + 50) / 100 / 5 * 5;
            const int takeAway = subfamily.weighed ? 0 : price;
            properties_.Add(Row().Int(uid).Int(subfamily.weighed ? 1 : 0).Int(price).Int(terrace)
                                .Int(takeAway).Int(0).Int(0).Int(subfamily.tax)
                                .Int(subfamily.tax == cat::kTaxNormal ? cat::kTaxNormal : cat::kTaxReduced));
            const std::int64_t modified = AnyMoment();
            plus_.Add(Row().Int(uid).Text(itemId).Text(name).OptionalText(shortName).Text(barCode)
                          .Int(place.subfamilyUid).Int(uid).Int(subfamily.stocked ? 1 : 0)
                          .Int(random_.Chance(0.02) ? 1 : 0).Moment(CreatedBefore(modified))
                          .Moment(modified));
            knownItems_.push_back({uid, name, price, subfamily.tax, subfamily.weighed});
        }
    }

    // A credit sale's tender, held back until it is known which receipt (if any) settles it.
    struct OpenCredit {
        int tenderUid;
        int headerUid;
        int total;
        std::int64_t moment;
    };
    struct Account {
        std::vector<OpenCredit> open;
        std::size_t settleAfter = 1;
    };

    int NextMovementUid() { return ++movementUid_; }

    void WriteTender(int uid, int headerUid, int paymentType, int value, std::optional<int> receipt) {
        Row row;
        row.Int(uid).Int(headerUid).Int(paymentType)
            .Text(kPaymentTypes[static_cast<std::size_t>(paymentType - 1)].name).Int(value);
        if (receipt) row.Int(*receipt);
        else row.Null();
        tenders_.Add(row);
    }

    void SettleOrLeaveOpen(int customerUid, Account& account, bool settle) {
        std::optional<int> receipt;
        if (settle) {
            receipt = NextMovementUid();
            long total = 0;
            std::int64_t last = 0;
            for (const OpenCredit& credit : account.open) {
                total += credit.total;
                last = std::max(last, credit.moment);
            }
            const std::int64_t paid =
                std::min<std::int64_t>(options_.baseMoment, last + random_.Between(3600, 5 * 86400));
            const int type = random_.Chance(0.8) ? 8 : 9;
            // Some customers pay only part of what they owe, in whole euros.
            const long amount = random_.Chance(0.2) ? std::max<long>(100, total * random_.Between(30, 90) / 100 / 100 * 100)
                                                    : total;
            Row row;
            row.Int(*receipt).Int(type).Int(1).Int(random_.Pick(knownSalesmen_).uid).Int(customerUid)
                .Moment(paid).Int(amount).Text(Numbered("RC", ++receiptNumber_));
            row.OptionalText(random_.Chance(0.5) ? std::optional<std::string>("Liquidação de conta corrente")
                                         : std::nullopt);
            movements_.Add(row);
        }
        for (const OpenCredit& credit : account.open) {
            WriteTender(credit.tenderUid, credit.headerUid, kOnAccount, credit.total, receipt);
        }
        account.open.clear();
        account.settleAfter = static_cast<std::size_t>(random_.Between(1, 3));
    }

    void WriteTransactions() {
        // Types come from shuffled decks of 20, so that even the tiny size has every kind:
        // 14 invoices, 3 credit sales, 1 stock document and 2 documents of other types.
        std::vector<int> deck;
        std::map<int, long> numbers;
        std::map<int, Account> accounts;
        const std::int64_t span = options_.baseMoment - windowStart_;
        for (int h = 0; h < sizes_.headers; ++h) {
            if (deck.empty()) {
                deck = {kInvoice, kInvoice, kInvoice, kInvoice, kInvoice, kInvoice, kInvoice,
                        kInvoice, kInvoice, kInvoice, kInvoice, kInvoice, kInvoice, kInvoice,
                        kCreditSale, kCreditSale, kCreditSale, kStockDocument, kTableCheck,
                        kQuotation};
                random_.Shuffle(deck);
            }
            const int type = deck.back();
            deck.pop_back();
            const int uid = h + 1;
            // Sales follow each other through the window; each closes some minutes after it opens.
            const std::int64_t created =
                windowStart_ + (span * h + static_cast<std::int64_t>(random_.Below(static_cast<std::uint64_t>(span)))) /
                                   sizes_.headers;
            const std::int64_t modified =
                std::min<std::int64_t>(options_.baseMoment, created + random_.Between(120, 5400));
            const Salesman& salesman = random_.Pick(knownSalesmen_);
            int customerUid = 1;
            if (type == kCreditSale) customerUid = random_.Pick(accountCustomers_).uid;
            else if (type == kInvoice && random_.Chance(0.4)) customerUid = random_.Pick(knownCustomers_).uid;
            const std::string documentId = Numbered(DocumentPrefix(type), ++numbers[type]);

            // Lines.
            const int lineCount = static_cast<int>(random_.Between(1, 6));
            long total = 0;
            for (int l = 0; l < lineCount; ++l) {
                const Item& item = random_.Pick(knownItems_);
                const int quantity = item.weighed ? static_cast<int>(random_.Between(30, 300)) * 5
                                                  : (random_.Chance(0.7) ? 1 : static_cast<int>(random_.Between(2, 4)));
                const long gross = item.weighed ? (static_cast<long>(item.price) * quantity + 500) / 1000
                                                : static_cast<long>(item.price) * quantity;
                int percent = 0;
                if (random_.Chance(0.08)) {
                    static constexpr std::array<int, 4> kPercents = {5, 10, 15, 20};
                    percent = random_.Pick(kPercents);
                }
                const long discount = (gross * percent + 50) / 100;
                const long value = gross - discount;
                total += value;
                const int lineSalesman = random_.Chance(0.9) ? salesman.uid : random_.Pick(knownSalesmen_).uid;
                // Now and then a line whose item the restaurant has since removed from its
                // table, as a real restaurant's history has; the importer's join drops it.
                ++detailUid_;
                const int pluUid = detailUid_ % kOrphanLineEvery == 0 ? kRemovedItemUid : item.uid;
                details_.Add(Row().Int(detailUid_).Int(uid).Int(pluUid).Text(item.name)
                                 .Int(quantity).Int(item.price).Raw(std::to_string(percent) + ".00")
                                 .Int(discount).Int(value).Int(item.tax).Int(lineSalesman).Int(0)
                                 .Moment(created + l * 30));
            }

            const char* status = random_.Chance(0.97) ? "N" : "A";
            headers_.Add(Row().Int(uid).Int(type).Text(documentId).Int(salesman.uid).Int(customerUid)
                             .Text(status).Int(random_.Between(1, 3)).Int(total).Moment(created)
                             .Moment(modified));

            // Tenders.
            if (type == kCreditSale) {
                auto [entry, isNew] = accounts.try_emplace(customerUid);
                Account& account = entry->second;
                if (isNew) account.settleAfter = static_cast<std::size_t>(random_.Between(1, 3));
                account.open.push_back({++tenderUid_, uid, static_cast<int>(total), created});
                if (account.open.size() >= account.settleAfter) {
                    SettleOrLeaveOpen(customerUid, account, random_.Chance(0.8) || receiptNumber_ == 0);
                }
            } else if (type == kStockDocument) {
                if (random_.Chance(0.5)) WriteTender(++tenderUid_, uid, kOffered, static_cast<int>(total), std::nullopt);
            } else {
                WriteSaleTenders(uid, type, documentId, customerUid, salesman.uid, total, created);
            }
        }
        // Credit sales still waiting for their receipt stay open.
        for (auto& [customerUid, account] : accounts) {
            if (!account.open.empty()) SettleOrLeaveOpen(customerUid, account, receiptNumber_ == 0);
        }
    }

    void WriteSaleTenders(int headerUid, int type, const std::string& documentId, int customerUid,
                          int salesmanUid, long total, std::int64_t created) {
        const double pick = random_.Unit();
        int cash = 0;
        if (pick < 0.01) {
            WriteTender(++tenderUid_, headerUid, kOffered, static_cast<int>(total), std::nullopt);
        } else if (pick < 0.06 && total > 200) {
            // Part in cash, the rest by card.
            cash = static_cast<int>(total / 2 / 100 * 100);
            WriteTender(++tenderUid_, headerUid, kCash, cash, std::nullopt);
            WriteTender(++tenderUid_, headerUid, kDebitCard, static_cast<int>(total) - cash, std::nullopt);
        } else if (pick < 0.55 || type != kInvoice) {
            cash = static_cast<int>(total);
            WriteTender(++tenderUid_, headerUid, kCash, cash, std::nullopt);
        } else {
            static constexpr std::array<int, 5> kCards = {kDebitCard, kDebitCard, kDebitCard, kVisa, kMbWay};
            WriteTender(++tenderUid_, headerUid, random_.Pick(kCards), static_cast<int>(total), std::nullopt);
        }
        // The cash of some sales goes through the drawer as a movement of the sale's document.
        if (cash > 0 && type == kInvoice && random_.Chance(0.1)) {
            Row row;
            row.Int(NextMovementUid()).Int(10).Int(1).Int(salesmanUid);
            if (customerUid != 1) row.Int(customerUid);
            else row.Null();
            row.Moment(created).Int(cash).Text(documentId).Null();
            movements_.Add(row);
        }
    }

    void WriteCashMovements() {
        struct Kind {
            int flow;
            long low, high, step;  // cents; amounts are whole steps
            std::string_view note;
        };
        static const std::array<Kind, 9> kKinds = {{
            {},
            {1, 10000, 30000, 500, "Troco inicial do turno"},
            {0, 10000, 30000, 500, "Fundo para o turno seguinte"},
            {0, 5000, 50000, 1000, "Depósito no banco"},
            {0, 350, 9000, 1, "Compra de pão e gelo"},
            {0, 1000, 5000, 500, "Vale ao empregado"},
            {1, 2000, 10000, 1000, "Empréstimo da caixa do bar"},
            {0, 200, 3000, 1, "Devolução de talão"},
            {1, 1000, 25000, 1, "Pagamento por conta"},
        }};
        std::vector<int> deck;
        for (int m = 0; m < sizes_.movements; ++m) {
            if (deck.empty()) {
                deck = {1, 2, 3, 4, 5, 6, 7, 8};
                random_.Shuffle(deck);
            }
            const int type = deck.back();
            deck.pop_back();
            const Kind& kind = kKinds[static_cast<std::size_t>(type)];
            const long value = random_.Between(kind.low / kind.step, kind.high / kind.step) * kind.step;
            const int flow = random_.Chance(0.06) ? 2 : kind.flow;
            Row row;
            row.Int(NextMovementUid()).Int(type).Int(flow).Int(random_.Pick(knownSalesmen_).uid);
            // A payment on account usually names its customer; one without is left for the
            // connector to report.
            if (type == 8 && random_.Chance(0.8)) row.Int(random_.Pick(accountCustomers_).uid);
            else row.Null();
            row.Moment(AnyMoment()).Int(value).Text("");
            row.OptionalText(random_.Chance(0.5) ? std::optional<std::string>(kind.note) : std::nullopt);
            movements_.Add(row);
        }
    }

    const GeneratorOptions& options_;
    const Sizes sizes_;
    Random random_;
    std::ostream& out_;
    const std::int64_t windowStart_;
    TableCounts counts_;
    TableWriter taxes_, paymentTypes_, salesmen_, customers_, families_, subfamilies_,
        properties_, plus_, headers_, details_, tenders_, movements_;

    std::vector<Salesman> knownSalesmen_;
    std::vector<Customer> knownCustomers_;
    std::vector<Customer> accountCustomers_;
    std::vector<Item> knownItems_;
    int detailUid_ = 0;
    int tenderUid_ = 0;
    int movementUid_ = 0;
    long receiptNumber_ = 0;
};

}  // namespace

TableCounts WriteRestaurantData(const GeneratorOptions& options, std::ostream& out) {
    if (options.days < 1) throw std::invalid_argument("the date window must be at least one day");
    if (!(options.factor > 0)) throw std::invalid_argument("the factor must be positive");
    if (options.baseMoment < 0) throw std::invalid_argument("the base date is not a valid date");
    return Generator(options, out).Run();
}

}  // namespace kitra::restaurant
