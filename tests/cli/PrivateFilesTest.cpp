// The back office keeps the restaurants' passwords, the logs and the books: kitra-host makes its
// data folder and everything in it (the database and what SQLite adds beside it, the run lock,
// the log folder, the run's log files, the logs kept because they could not be stored) for its
// owner only, with the umask of a usual login (022) and with none (000); and `check` warns about
// an existing back office that others may read.
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "backoffice/BackOffice.h"
#include "backoffice/SettingsDocument.h"
#include "tests/cli/KitraHostRun.h"

namespace kitra {
namespace {
namespace fs = std::filesystem;

using testing::HostResult;

// A restaurant an import accepts, in its own series, on a server that is not there.
std::string Restaurant(const std::string& name, const std::string& series) {
    return "<Restaurant Name=\"" + name + "\" ServerName=\"127.0.0.1\" ServerPort=\"1\" ServerDBName=\"r\" "
           "ServerUser=\"u\" ServerPassword=\"segredo\" WorkstationID=\"1\" DefaultWarehouseID=\"1\" "
           "DefaultSupplierID=\"1\" TransSerial=\"" + series + "\" "
           "ImportDateEntities=\"2010-01-01 00:00:00\" ImportDateTransactions=\"2010-01-01 00:00:00\"/>";
}

std::string Settings(const std::string& restaurants) {
    return "<KitraConnectorSetting InvoiceTransDocument=\"VB\" CreditTransDocument=\"FAC\" "
           "StockTransDocument=\"GT\" CashEntranceTransDocument=\"EC\" "
           "CashWithdrawalTransDocument=\"SC\" CustomerPaymentTransDocument=\"PCL\" "
           "CustomerPaymentAccountDocument=\"ADC\" DefaultTenderPayment=\"1\" "
           "DefaultTaxableGroup=\"1\"><Restaurants>" + restaurants +
           "</Restaurants><TenderEquivalence/><TaxableGroupEquivalence/></KitraConnectorSetting>";
}

unsigned ModeOf(const fs::path& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return 0;
    return status.st_mode & 07777;
}

// The umask is set before the fixture's `init`, so the program starts with it for every command.
class PrivateFilesTest : public testing::KitraHostTest, public ::testing::WithParamInterface<mode_t> {
protected:
    void SetUp() override {
        former_ = ::umask(GetParam());
        KitraHostTest::SetUp();
    }
    void TearDown() override { ::umask(former_); }

    // Every folder under the data folder (itself included) and every file in it, with its mode.
    std::vector<std::pair<fs::path, unsigned>> Everything() const {
        std::vector<std::pair<fs::path, unsigned>> all{{Data(), ModeOf(Data())}};
        for (const auto& entry : fs::recursive_directory_iterator(Data()))
            all.emplace_back(entry.path(), ModeOf(entry.path()));
        return all;
    }

private:
    mode_t former_ = 0;
};

TEST_P(PrivateFilesTest, EverythingInTheDataFolderIsTheOwnersOnly) {
    EXPECT_EQ(ModeOf(Data()), 0700u);
    EXPECT_EQ(ModeOf(backoffice::BackOffice::FileIn(Data())), 0600u);
    EXPECT_EQ(ModeOf(Data() / "logs"), 0700u);

    ASSERT_EQ(Run("series add CEN Centro").exit, 0);
    ASSERT_EQ(Run("series add RES Restaurante").exit, 0);
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro", "CEN")))).exit, 0);
    // A run that writes a log per restaurant, and keeps as a file the one whose row cannot be
    // stored (a name longer than the log table holds, from settings of an older program).
    {
        backoffice::BackOffice office(Data());
        office.settingsStore.SaveText(
            backoffice::kSettingsKey1, backoffice::kSettingsKey2,
            Settings(Restaurant("Centro", "CEN") + Restaurant("Restaurante do Centro Historico", "RES")));
    }
    EXPECT_EQ(Run("execute").exit, 3);

    bool kept = false, lock = false, logFile = false;
    for (const auto& [path, mode] : Everything()) {
        const std::string name = path.filename().string();
        kept = kept || name.ends_with("-NAO-GUARDADO.txt");
        lock = lock || name == "backoffice.run-lock";
        logFile = logFile || path.parent_path().filename() == "logs";
        if (fs::is_directory(path)) {
            EXPECT_EQ(mode, 0700u) << path;
        } else {
            EXPECT_EQ(mode, 0600u) << path;
        }
    }
    EXPECT_TRUE(kept);
    EXPECT_TRUE(lock);
    EXPECT_TRUE(logFile);
}

TEST_P(PrivateFilesTest, CheckWarnsAboutABackOfficeOthersCanRead) {
    ASSERT_EQ(Run("series add CEN Centro").exit, 0);
    ASSERT_EQ(Run("series add RES Restaurante").exit, 0);
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro", "CEN")))).exit, 0);
    const std::string file = backoffice::BackOffice::FileIn(Data()).string();
    const std::string warning = "AVISO: A pasta de dados '" + Data().string() + "' está aberta";
    EXPECT_EQ(Run("check").out.find(warning), std::string::npos);

    fs::permissions(Data(), fs::perms::group_read | fs::perms::group_exec, fs::perm_options::add);
    fs::permissions(file, fs::perms::others_read | fs::perms::others_write, fs::perm_options::add);
    const HostResult check = Run("check");
    EXPECT_EQ(check.exit, 3);
    EXPECT_NE(check.out.find(warning + " a outros utilizadores (modo 0750: o grupo ou os outros "
                                       "podem ler); a retaguarda guarda as palavras-passe dos "
                                       "restaurantes e só o dono a deve ler. Corrija com: chmod 700 '" +
                             Data().string() + "'\n"),
              std::string::npos)
        << check.out;
    EXPECT_NE(check.out.find("AVISO: A base de dados '" + file + "' está aberta a outros utilizadores "
                             "(modo 0606: o grupo ou os outros podem ler e alterar)"),
              std::string::npos)
        << check.out;
    const HostResult json = Run("check --json");
    EXPECT_NE(json.out.find("\"backOfficeWarnings\":[\"A pasta de dados '"), std::string::npos) << json.out;

    fs::permissions(Data(), fs::perms::owner_all);
    fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_NE(Run("check --json").out.find("\"backOfficeWarnings\":[]"), std::string::npos);
}

// What `check` says to paste works when it is pasted, after `check` ended: the -wal and -shm
// files its own connection made are gone by then.
TEST_P(PrivateFilesTest, CheckCommandsWorkWhenPasted) {
    ASSERT_EQ(Run("settings load " + WriteSettings(Settings(Restaurant("Centro", "CEN")))).exit, 0);
    const fs::path database = backoffice::BackOffice::FileIn(Data());
    fs::permissions(Data(), fs::perms::group_read | fs::perms::group_exec, fs::perm_options::add);
    fs::permissions(Data() / "logs", fs::perms::others_read | fs::perms::others_exec,
                    fs::perm_options::add);
    fs::permissions(database, fs::perms::group_read | fs::perms::others_read, fs::perm_options::add);

    const HostResult check = Run("check");
    EXPECT_EQ(check.exit, 3);
    EXPECT_NE(check.out.find("AVISO: A base de dados '" + database.string() + "' está aberta"),
              std::string::npos)
        << check.out;
    std::vector<std::string> commands;
    const std::string fix = "Corrija com: ";
    for (std::size_t line = check.out.find("AVISO: "); line != std::string::npos;
         line = check.out.find("AVISO: ", line + 1)) {
        const std::size_t end = check.out.find('\n', line);
        const std::size_t at = check.out.find(fix, line);
        if (at == std::string::npos || at > end) continue;
        commands.push_back(check.out.substr(at + fix.size(), end - at - fix.size()));
    }
    // The folder, the log folder and the database's files: one command each.
    ASSERT_EQ(commands.size(), 3u) << check.out;
    for (const std::string& command : commands) {
        EXPECT_EQ(std::system((command + " 2>&1").c_str()), 0) << command;
    }
    EXPECT_NE(Run("check --json").out.find("\"backOfficeWarnings\":[]"), std::string::npos);
    EXPECT_EQ(ModeOf(database), 0600u);
}

INSTANTIATE_TEST_SUITE_P(Umasks, PrivateFilesTest, ::testing::Values(mode_t{022}, mode_t{000}),
                         [](const ::testing::TestParamInfo<mode_t>& info) {
                             return info.param == 0 ? std::string("Umask000") : std::string("Umask022");
                         });

}  // namespace
}  // namespace kitra
