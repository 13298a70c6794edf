// What the host decides around the connector's run, taken for real against the fault server:
// settings that cannot import are refused before anything runs; a change made in the
// restaurant while its import goes on comes with the next run, which starts again from the second
// the last one began; and a cash movement that only the back office has (its date changed in
// the restaurant) is taken out with the command reconcile prints, after which reconcile finds
// nothing and the drawer counts the movement once.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "backoffice/BackOffice.h"
#include "backoffice/SettingsDocument.h"
#include "backoffice/cli/KitraHost.h"
#include "import/KitraExecutioner.h"
#include "settings/KitraConnectorSetting.h"
#include "tests/faults/FaultRun.h"

namespace kitra::test {
namespace {

using backoffice::BackOffice;

const ImportDates kUnmoved{"2000-01-01 00:00:00", "2000-01-01 00:00:00"};

class HostDecisionsTest : public FaultRunTest {
protected:
    // A kitra-host command's exit code and output (standard output, then error output).
    std::pair<int, std::string> Command(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--data", Data().string()});
        std::ostringstream out, err;
        const int code = backoffice::cli::RunKitraHost(arguments, nullptr, out, err);
        return {code, out.str() + err.str()};
    }

    // The run did not start: exit 1, `why` on stderr, nothing imported, nothing logged, the
    // dates as they were.
    void ExpectRefused(const HostRun& run, const std::string& why) {
        EXPECT_EQ(run.exit, 1) << run.out << run.err;
        EXPECT_NE(run.err.find(why), std::string::npos) << run.err;
        EXPECT_NE(run.err.find("a importação não começou: nada foi importado"), std::string::npos)
            << run.err;
        EXPECT_EQ(run.out.find("A integrar Restaurante"), std::string::npos) << run.out;
        EXPECT_EQ(ItemsWithPrefix("C") + ItemsWithPrefix("P"), 0);
        EXPECT_EQ(Count("SELECT COUNT(*) FROM documents"), 0);
        EXPECT_EQ(LogRows(), 0);
        EXPECT_EQ(DatesOf("Centro"), kUnmoved);
        EXPECT_EQ(DatesOf("Praia"), kUnmoved);
    }

    // The cents of a document's total in the back office; -1 when it is not there.
    long TotalCents(const std::string& type, const std::string& series, long number) const {
        return Count("SELECT CAST(round(Total * 100) AS INTEGER) FROM documents WHERE DocumentTypeID = '" +
                     type + "' AND SeriesID = '" + series + "' AND DocumentNumber = " +
                     std::to_string(number));
    }

    // The words of the printed line that holds `words`, from them on.
    static std::string From(const std::string& text, const std::string& words) {
        const auto at = text.find(words);
        if (at == std::string::npos) return {};
        return text.substr(at + words.size(), text.find('\n', at) - at - words.size());
    }
};

TEST_F(HostDecisionsTest, AWorkstationTheBackOfficeLacksIsRefusedBeforeAnythingRuns) {
    centro.WorkstationID = 9;
    StoreSettings(true, true);
    ExpectRefused(Execute(), "Restaurante 'Centro': o posto (WorkstationID) 9 não existe na retaguarda");
    // Once it exists, the run goes.
    ASSERT_EQ(Host({"workstation", "add", "9", "Posto do Centro"}), 0);
    const HostRun run = Execute();
    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_GT(Count("SELECT COUNT(*) FROM documents WHERE SeriesID = 'CEN' AND WorkstationID = 9"), 0);
}

TEST_F(HostDecisionsTest, ADocumentTypeNotChosenIsRefusedBeforeAnythingRuns) {
    StoreSettings(true, true);
    {
        BackOffice office(Data());
        KitraConnectorSetting settings(office.utility);
        ASSERT_TRUE(office.settingsStore.Load(settings));
        settings.InvoiceTransDocument.clear();  // the counter sales would be left out
        office.settingsStore.Save(settings);
    }
    ExpectRefused(Execute(), "O conector recusa as configurações: Seleccione um valor em Documento de Vendas:");
}

TEST_F(HostDecisionsTest, AChangeMadeWhileTheRunGoesOnComesWithTheNextRun) {
    StoreSettings(true);
    const std::string id = centroDatabase->QueryValue(
        "SELECT DocumentID FROM transactionsheaders WHERE DocumentTypeUID = 17 AND"
        " LENGTH(DocumentID) > 7 AND TransactionStatus = 'N' ORDER BY UID LIMIT 1");
    ASSERT_FALSE(id.empty());
    const long number = static_cast<long>(KitraExecutioner::DocumentNumberFromID(id));
    // Changed once Centro's documents have been read (at its first document), before its
    // import ends and its dates move past the change.
    bool struck = false;
    onLine = [&](const std::string& line) {
        if (struck || !line.starts_with("Documento: ")) return;
        struck = true;
        centroDatabase->Execute("UPDATE transactionsheaders SET TableTotal = TableTotal + 100,"
                                " ModifyDate = NOW() WHERE DocumentID = '" + id + "'");
    };
    ASSERT_EQ(Execute().exit, 0);
    onLine = nullptr;
    ASSERT_TRUE(struck);
    const long before = TotalCents("VB", "CEN", number);
    ASSERT_GT(before, 0);
    // Its moment lies before the dates the run stored; the next run starts from the second the
    // last one began, so it comes again and replaces its earlier version.
    const long documents = Count("SELECT COUNT(*) FROM documents");
    const HostRun next = Execute();
    EXPECT_EQ(next.exit, 0) << next.err;
    EXPECT_NE(next.out.find("Restaurante 'Centro': as datas de importação recuam para "), std::string::npos)
        << next.out;
    EXPECT_EQ(TotalCents("VB", "CEN", number), before + 100);
    EXPECT_EQ(Count("SELECT COUNT(*) FROM documents"), documents);
    const auto [code, reconciled] = Command({"reconcile", "Centro"});
    EXPECT_EQ(code, 0) << reconciled;
}

TEST_F(HostDecisionsTest, ACashMovementOnlyTheBackOfficeHasIsTakenOutWithThePrintedCommand) {
    StoreSettings(true, true);
    ASSERT_EQ(Execute().exit, 0);
    const long movements = Count("SELECT COUNT(*) FROM cash_movements");
    const std::string uid = centroDatabase->QueryValue(
        "SELECT MIN(UID) FROM cashdrawer_movements WHERE DocumentID = '' AND MovementTypeID NOT IN (8, 9)");
    ASSERT_FALSE(uid.empty());
    // Its date changed in the restaurant: the restaurant's new one is missing in the back office,
    // the old one is there only.
    centroDatabase->Execute("UPDATE cashdrawer_movements SET Date = DATE_SUB(Date, INTERVAL 1 MINUTE)"
                            " WHERE UID = " + uid);
    const auto [found, text] = Command({"reconcile", "Centro"});
    EXPECT_EQ(found, 3) << text;
    const std::string movement = From(text, " cash-movement remove ");
    ASSERT_FALSE(movement.empty()) << text;
    const std::string rewind = From(text, " state set Centro --transactions '");
    ASSERT_FALSE(rewind.empty()) << text;

    const std::string type = movement.substr(0, movement.find(' '));
    ASSERT_EQ(Host({"cash-movement", "remove", type, movement.substr(type.size() + 1)}), 0);
    ASSERT_EQ(Host({"state", "set", "Centro", "--transactions", rewind.substr(0, 19)}), 0);
    NextSecond();
    ASSERT_EQ(Execute().exit, 0);
    const auto [code, after] = Command({"reconcile", "Centro"});
    EXPECT_EQ(code, 0) << after;
    EXPECT_EQ(Count("SELECT COUNT(*) FROM cash_movements"), movements);  // counted once
    EXPECT_EQ(Count("SELECT COUNT(*) FROM document_history WHERE Event = 'removed'"), 1);
}

}  // namespace
}  // namespace kitra::test
