#pragma once
// Base of the master-data importers' tests: a fresh restaurant database on the private server,
// a real temporary back office, an engine with a fixed clock whose restaurant log is started,
// and the restaurant's connection, set up as the run sets it up and not yet opened.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "ado/Connection.h"
#include "import/Importers.h"
#include "host/ITaxService.h"
#include "import/KitraExecutioner.h"
#include "tests/hostsupport/TestBackOffice.h"
#include "tests/support/RestaurantDatabaseTest.h"

namespace kitra {

// The host's tax service as it is, counting the values it is asked to take the tax out of.
class CountedTaxService : public host::ITaxService {
public:
    explicit CountedTaxService(const host::ITaxService& host) : host_(host) {}
    std::int16_t TaxableGroupForRate(double rate, const host::TaxContext& context) const override {
        return host_.TaxableGroupForRate(rate, context);
    }
    double ValueWithTaxableGroup(double amount, std::int32_t taxableGroupID,
                                 const host::TaxContext& context,
                                 host::TaxCalculation calculation) const override {
        ++valuesAsked;
        return host_.ValueWithTaxableGroup(amount, taxableGroupID, context, calculation);
    }
    mutable int valuesAsked = 0;

private:
    const host::ITaxService& host_;
};

inline host::HostServices WithTaxService(host::HostServices services, host::ITaxService& tax) {
    services.tax = &tax;
    return services;
}

class MasterDataImportTest : public test::RestaurantDatabaseTest {
protected:
    static constexpr DateTime kMoment{2024, 7, 1, 12, 0, 0};

    void SetUp() override {
        RestaurantDatabaseTest::SetUp();
        restaurant = RestaurantOnTheServer("Centro");
        KitraConnectorSetting settings(*office.Services().utility);
        // The restaurant's three rates, as the host's groups 1 to 3.
        settings.TaxableGroupEquivalence = {{1, "23"}, {2, "13"}, {3, "6"}};
        engine.UseSettings(settings);
        engine.SetEventNotifier(office.notifier);
        engine.BeginRestaurant(restaurant.Name);
        connection.SetConnectionString(ConnectionString());
        connection.SetCursorLocation(ado::CursorLocationEnum::UseClient);
    }

    // A restaurant definition for this test's database, last imported at the start of 2024.
    Restaurant RestaurantOnTheServer(const std::string& name) {
        Restaurant r;
        r.Name = name;
        r.ServerName = Server().host;
        r.ServerPort = std::to_string(Server().port);
        r.ServerDBName = Database().Name();
        r.ServerUser = Server().user;
        r.ServerPassword = Server().password;
        r.DefaultSupplierID = 1;
        r.TransSerial = "EXT";
        r.ImportDateEntities = "2024-01-01 00:00:00";
        r.ImportDateTransactions = "2024-01-01 00:00:00";
        return r;
    }

    // Everything the engine logged for the restaurant so far.
    std::string LogText() const {
        std::ifstream in(engine.LogFilePath(), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

    // The two lines every importer starts with: a blank line and its section title.
    static std::string Title(const std::string& section, const std::string& text) {
        return "\r\n" + section + " - " + text + "\r\n";
    }
    static std::string Line(const std::string& section, const std::string& text) {
        return section + " - " + text + "\r\n";
    }

    bool BoxShown(const std::string& text, host::MessageStyle style, const std::string& title) {
        for (const auto& box : office.boxes.shown) {
            if (box.text == text && box.style == style && box.title == title) return true;
        }
        return false;
    }

    const host::HostServices& Host() const { return office.Services(); }

    testing::TestBackOffice office;
    CountedTaxService tax{*office.Services().tax};
    host::HostServices services = WithTaxService(office.Services(), tax);
    FixedClock clock{kMoment};
    KitraExecutioner engine{services, clock};
    ado::Connection connection;
    Restaurant restaurant;
};

}  // namespace kitra
