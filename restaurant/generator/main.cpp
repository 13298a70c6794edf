// kitra-restaurant-gen: writes the SQL that fills an empty restaurant database with generated
// data. Load it with the mariadb client:
//   kitra-restaurant-gen --size demo --seed 7 | mariadb --defaults-file=... restaurant
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "restaurant/generator/DataGenerator.h"

namespace {

constexpr std::string_view kUsage =
    "usage: kitra-restaurant-gen [options]\n"
    "  --size tiny|demo|bench   how much data (default tiny)\n"
    "  --factor X               scales the bench size's documents, customers and movements (default 1)\n"
    "  --seed N                 the same seed gives the same data (default 1)\n"
    "  --base-date 'yyyy-mm-dd hh:mm:ss'  the restaurant's \"now\" (default 2025-01-31 20:00:00)\n"
    "  --days N                 every date lies in the N days before the base date (default 30)\n"
    "  --batch N                rows per INSERT statement (default 1000)\n"
    "  --output FILE            write there instead of to standard output\n"
    "  --summary                print the rows written per table to standard error\n";

[[noreturn]] void Fail(const std::string& message) {
    std::cerr << "kitra-restaurant-gen: " << message << "\n" << kUsage;
    std::exit(2);
}

double NumberArgument(const std::string& option, const std::string& text) {
    try {
        std::size_t used = 0;
        const double value = std::stod(text, &used);
        if (used == text.size()) return value;
    } catch (const std::exception&) {
    }
    Fail(option + " needs a number, not '" + text + "'");
}

}  // namespace

int main(int argc, char** argv) {
    using namespace kitra::restaurant;
    GeneratorOptions options;
    std::string output;
    bool summary = false;
    const std::vector<std::string> args(argv + 1, argv + argc);
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& option = args[i];
        if (option == "--help" || option == "-h") {
            std::cout << kUsage;
            return 0;
        }
        if (option == "--summary") {
            summary = true;
            continue;
        }
        if (i + 1 >= args.size()) Fail("unknown option or missing value: " + option);
        const std::string& value = args[++i];
        if (option == "--size") {
            if (!ParseDataSize(value, options.size)) Fail("unknown size '" + value + "'");
        } else if (option == "--factor") {
            options.factor = NumberArgument(option, value);
            if (!(options.factor > 0)) Fail("--factor must be positive");
        } else if (option == "--seed") {
            const double seed = NumberArgument(option, value);
            if (seed < 0) Fail("--seed must not be negative");
            options.seed = std::stoull(value);
        } else if (option == "--base-date") {
            options.baseMoment = ParseMoment(value);
            if (options.baseMoment < 0) Fail("--base-date needs 'yyyy-mm-dd hh:mm:ss', not '" + value + "'");
        } else if (option == "--days") {
            options.days = static_cast<int>(NumberArgument(option, value));
            if (options.days < 1) Fail("--days must be at least 1");
        } else if (option == "--batch") {
            options.rowsPerInsert = static_cast<int>(NumberArgument(option, value));
            if (options.rowsPerInsert < 1) Fail("--batch must be at least 1");
        } else if (option == "--output") {
            output = value;
        } else {
            Fail("unknown option: " + option);
        }
    }

    std::ios::sync_with_stdio(false);
    std::ofstream file;
    std::vector<char> buffer(1 << 20);
    if (!output.empty()) {
        file.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        file.open(output, std::ios::binary | std::ios::trunc);
        if (!file) Fail("cannot write " + output);
    }
    std::ostream& out = output.empty() ? std::cout : file;
    const TableCounts counts = WriteRestaurantData(options, out);
    out.flush();
    if (!out) {
        std::cerr << "kitra-restaurant-gen: writing the output failed\n";
        return 1;
    }
    if (summary) {
        long total = 0;
        for (const auto& [table, rows] : counts) {
            std::cerr << table << '\t' << rows << '\n';
            total += rows;
        }
        std::cerr << "total\t" << total << '\n';
    }
    return 0;
}
