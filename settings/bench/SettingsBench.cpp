// kitra-settings-bench: how long reading the settings text takes as it grows, to show that it
// grows in step with the text. It reads two kinds of large text through FromXML: one with many
// restaurants, and one whose restaurant element carries many attributes; each at a tenth of the
// size, at the size, and, for the restaurants, the result is checked against a goal.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "backoffice/UtilityService.h"
#include "settings/KitraConnectorSetting.h"

namespace {

using Clock = std::chrono::steady_clock;

std::string RestaurantElement(long n) {
    const std::string name = "Restaurante " + std::to_string(n);
    return "<Restaurant Name=\"" + name +
           "\" ServerName=\"10.0.0.1\" ServerPort=\"3306\" ServerDBName=\"kitrana\""
           " ServerUser=\"importer\" ServerPassword=\"s3cret\" WorkstationID=\"3\""
           " ItemIDPrefix=\"R\" DefaultWarehouseID=\"1\" WasteWarehouseID=\"9\""
           " DefaultSupplierID=\"12,5\" TransSerial=\"2024\" StockManagement=\"1\""
           " ImportDateEntities=\"2024-03-01 08:30:00\""
           " ImportDateTransactions=\"2024-03-02 23:59:59\"/>";
}

std::string Settings(const std::string& restaurants) {
    return "<KitraConnectorSetting InvoiceTransDocument=\"FS\" DefaultTenderPayment=\"1\""
           " DefaultTaxableGroup=\"4\"><Restaurants>" +
           restaurants +
           "</Restaurants><TenderEquivalence/><TaxableGroupEquivalence/></KitraConnectorSetting>";
}

std::string ManyRestaurants(long count) {
    std::string restaurants;
    for (long n = 1; n <= count; ++n) restaurants += RestaurantElement(n);
    return Settings(restaurants);
}

std::string ManyAttributes(long count) {
    std::string element = RestaurantElement(1);
    element.resize(element.size() - 2);  // before "/>"
    for (long n = 1; n <= count; ++n) element += " Extra" + std::to_string(n) + "=\"x\"";
    return Settings(element + "/>");
}

// The best of three reads, in seconds; `restaurants` gets what the last read found.
double SecondsToRead(const std::string& text, const kitra::host::IUtilityService& numbers,
                     long& restaurants) {
    double best = 1e9;
    for (int round = 0; round < 3; ++round) {
        kitra::KitraConnectorSetting settings(numbers);
        const Clock::time_point start = Clock::now();
        settings.FromXML(text);
        best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count());
        restaurants = settings.Restaurants.Count();
    }
    return best;
}

int Usage(int code) {
    std::fprintf(code == 0 ? stdout : stderr,
                 "usage: kitra-settings-bench [--count N] [--goal SECONDS]\n"
                 "Reads settings texts with N restaurants (100000 by default) and with one\n"
                 "restaurant carrying N attributes, and at N/10 of each, and prints the seconds.\n"
                 "Exits 1 when N restaurants take longer than the goal (1 s by default).\n");
    return code;
}

}  // namespace

int main(int argc, char** argv) {
    long count = 100000;
    double goal = 1.0;
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        if (option == "--help" || option == "-h") return Usage(0);
        if (i + 1 >= argc) return Usage(2);
        char* end = nullptr;
        if (option == "--count") {
            count = std::strtol(argv[++i], &end, 10);
            if (*end != '\0' || count < 10) return Usage(2);
        } else if (option == "--goal") {
            goal = std::strtod(argv[++i], &end);
            if (*end != '\0' || goal <= 0) return Usage(2);
        } else {
            return Usage(2);
        }
    }

    const kitra::backoffice::UtilityService numbers;
    bool failed = false;
    std::printf("%-34s %10s %10s %9s\n", "text", "size (MB)", "seconds", "read");
    for (const bool attributes : {false, true}) {
        double seconds[2] = {};
        for (int step = 0; step < 2; ++step) {
            const long n = step == 0 ? count / 10 : count;
            const std::string text = attributes ? ManyAttributes(n) : ManyRestaurants(n);
            long restaurants = 0;
            seconds[step] = SecondsToRead(text, numbers, restaurants);
            const std::string label = std::to_string(n) + (attributes ? " attributes on one element"
                                                                     : " restaurants");
            std::printf("%-34s %10.1f %10.3f %9ld\n", label.c_str(),
                        static_cast<double>(text.size()) / 1e6, seconds[step], restaurants);
            if (restaurants != (attributes ? 1 : n)) {
                std::fprintf(stderr, "read %ld restaurants, expected %ld\n", restaurants,
                             attributes ? 1L : n);
                failed = true;
            }
        }
        std::printf("  ten times the text took %.1f times as long\n",
                    seconds[0] > 0 ? seconds[1] / seconds[0] : 0.0);
        if (!attributes && seconds[1] > goal) {
            std::fprintf(stderr, "%ld restaurants took %.3f s, over the goal of %.3f s\n", count,
                         seconds[1], goal);
            failed = true;
        }
    }
    return failed ? 1 : 0;
}
