#pragma once
// Realistic data for a Portuguese restaurant's database, for tests (tiny), demonstrations (demo)
// and load measurements (bench, scaled by a factor): salesmen, customers with valid NIFs, item
// families and subfamilies, items with prices and taxes (23, 13, 6 %), closed transactions of
// the imported types (17 invoices, 11 credit sales, 13 stock documents, some of them refunded)
// and of others that the connector ignores, by salesmen and for customers that are sometimes
// deleted, with their lines (items sold by weight, discounts, now and then an item the
// restaurant has since removed) and tenders (payment codes "9999" on account and "9998"
// offered among them), cash drawer movements of types 1 to 8 with flows 0, 1 and 2, the cash of
// some sales, and receipts (movements of type 8 or 9 with a DocumentID) that settle credit
// sales through transactionstenders.ReceiptMovementuid.
//
// The output is SQL for the mariadb client: multi-row INSERTs in one transaction, for a
// database holding restaurant/schema.sql's empty tables. The same options give the same bytes.
#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <string_view>

namespace kitra::restaurant {

enum class DataSize { Tiny, Demo, Bench };

// "tiny", "demo" or "bench".
bool ParseDataSize(std::string_view text, DataSize& size);

// A moment as "yyyy-mm-dd hh:mm:ss" seconds since 1970-01-01 00:00:00 (no time zone: the
// restaurant's wall clock).
std::int64_t ParseMoment(std::string_view text);  // -1 when the text is not such a moment
std::string FormatMoment(std::int64_t seconds);

struct GeneratorOptions {
    DataSize size = DataSize::Tiny;
    double factor = 1.0;  // scales documents, customers and movements of the bench size
    std::uint64_t seed = 1;
    // The restaurant's "now": every date lies in the `days` before it.
    std::int64_t baseMoment = ParseMoment("2025-01-31 20:00:00");
    int days = 30;
    int rowsPerInsert = 1000;
};

// Rows written per table.
using TableCounts = std::map<std::string, long>;

TableCounts WriteRestaurantData(const GeneratorOptions& options, std::ostream& out);

}  // namespace kitra::restaurant
