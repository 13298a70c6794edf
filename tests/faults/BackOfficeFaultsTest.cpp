// Whole import runs (kitra-host execute) whose own side fails: the back office locked by another
// program for longer than the busy time-out, the log folder missing, a file, read-only, or
// turned into a file half-way, and the back office's disk full while documents arrive and
// while the back office is compacted. After each the back office is intact and holds no
// half-written record or document, the user is told on stderr what happened and what it cost,
// an import log that could not be stored is kept in the log folder, and the import dates are
// where the run's rules put them.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <sstream>
#include <thread>

#include "backoffice/BackOffice.h"
#include "backoffice/Database.h"
#include "backoffice/cli/KitraHost.h"
#include "tests/faults/FaultRun.h"
#include "tests/faults/ScopedMount.h"
#include "tests/support/Process.h"

namespace kitra::test {
namespace {

namespace fs = std::filesystem;
using backoffice::BackOffice;
using backoffice::Database;

constexpr const char* kNotEnded =
    "kitra-host: a importação não chegou ao fim; as novas datas de importação não foram "
    "guardadas.";
constexpr const char* kNotStarted =
    "A importação não começou: nada foi importado e as datas de importação ficaram como "
    "estavam.";
constexpr const char* kRunError =
    "## Erro ## Ocorreu um erro na importação no módulo de importação de restaurantes. - ";
constexpr const char* kDiskFull = "database or disk is full";
constexpr const char* kNoRoom = "Não há espaço no disco da retaguarda '";
const ImportDates kUnmoved{"2000-01-01 00:00:00", "2000-01-01 00:00:00"};

std::string ReadWhole(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

class BackOfficeFaultsTest : public FaultRunTest {
protected:
    // The log folder's files whose names say that the back office did not store them.
    std::vector<std::string> UnsavedLogs() const {
        std::vector<std::string> unsaved;
        for (const std::string& name : LogFiles()) {
            if (name.ends_with("-NAO-GUARDADO.txt")) unsaved.push_back(name);
        }
        return unsaved;
    }

    // Each restaurant's log was not stored, was kept in the log folder and was reported; the
    // kept text is the whole log and holds `cause`.
    void ExpectLogsKeptAndReported(const HostRun& run, const std::string& cause) {
        const auto unsaved = UnsavedLogs();
        ASSERT_EQ(unsaved.size(), 2u) << ::testing::PrintToString(LogFiles());
        const std::vector<std::string> restaurants = {"Centro", "Praia"};  // as the names sort
        for (std::size_t i = 0; i < restaurants.size(); ++i) {
            const std::string& restaurant = restaurants[i];
            const std::string& name = unsaved[i];
            ASSERT_TRUE(name.starts_with(restaurant)) << name;
            EXPECT_NE(run.err.find("kitra-host: o registo de log do restaurante '" + restaurant +
                                   "' não foi guardado na retaguarda: "),
                      std::string::npos)
                << run.err;
            EXPECT_NE(run.err.find("O texto do log ficou em '" + (LogFolder() / name).string() + "'."),
                      std::string::npos)
                << run.err;
            const std::string text = ReadWhole(LogFolder() / name);
            EXPECT_TRUE(text.starts_with(" - # START # ")) << text;
            EXPECT_NE(text.find("# END # "), std::string::npos) << text;
            EXPECT_NE(text.find(cause), std::string::npos) << text;
        }
        EXPECT_EQ(LogRows(), 0);
    }

    // The run refused to start with `why` (followed by kNotStarted) on stderr, exit code 1, and
    // nothing was imported.
    void ExpectRefusedToStart(const HostRun& run, const std::string& why) {
        EXPECT_EQ(run.exit, 1) << run.out;
        EXPECT_NE(run.err.find(why + kNotStarted), std::string::npos) << run.err;
        ExpectNothingImported();
    }

    // Nothing was imported and nothing changed.
    void ExpectNothingImported() {
        EXPECT_EQ(IntegrityCheck(), "ok");
        EXPECT_EQ(ItemsWithPrefix("C") + ItemsWithPrefix("P"), 0);
        EXPECT_EQ(LogRows(), 0);
        EXPECT_EQ(DatesOf("Centro"), kUnmoved);
        EXPECT_EQ(DatesOf("Praia"), kUnmoved);
    }

    // A back office on a small disk of its own, with its log folder on another: a full
    // back-office disk leaves room for the logs that could not be stored there.
    bool OnDisksOfTheirOwn() {
        disk_ = std::make_unique<ScopedMount>(folder.Path() / "disco", 16 * 1024);
        if (!disk_->Mounted()) return false;
        MoveBackOfficeTo(folder.Path() / "disco" / "data");
        logDisk_ = std::make_unique<ScopedMount>(LogFolder(), 2 * 1024);
        return logDisk_->Mounted();
    }
    std::string WhyNotMounted() const {
        return disk_ && !disk_->Mounted() ? disk_->Why() : logDisk_ ? logDisk_->Why() : "";
    }

    // The back-office disk fills up now: what is in the write-ahead log goes into the file
    // first, so that the very next write needs room that is not there.
    void FillTheBackOfficeDisk() {
        Database other(BackOffice::FileIn(Data()), Database::OpenMode::Existing);
        backoffice::Statement checkpoint(other, "PRAGMA wal_checkpoint(TRUNCATE)");
        ASSERT_TRUE(checkpoint.Step());
        ASSERT_EQ(checkpoint.Column(0).ToInt32(), 0) << "the checkpoint could not finish";
        disk_->Fill();
    }

    // The run ended on the full disk and said so in the user's words.
    void ExpectTheFullDiskSaid(const HostRun& run) const {
        EXPECT_NE(run.err.find(kRunError + std::string(kNoRoom) + BackOffice::FileIn(Data()).string() +
                               "': a escrita não foi feita. Liberte espaço nesse disco e tente de novo. (" +
                               kDiskFull + ")"),
                  std::string::npos)
            << run.err;
    }

    std::unique_ptr<ScopedMount> disk_, logDisk_;
};

TEST_F(BackOfficeFaultsTest, LockedByAnotherProgramLongerThanTheBusyTimeout) {
    StoreSettings();
    ::setenv("KITRA_HOST_BUSY_TIMEOUT_MS", "300", 1);
    ::setenv("KITRA_HOST_RUN_BUSY_TIMEOUT_MS", "300", 1);
    // The lock is taken between two records, from the run's own thread: a record committed at
    // once leaves no write of the run open at that moment. (With records grouped, the other
    // program would wait for the group, which is the run's thread, stopped here.)
    ::setenv("KITRA_HOST_RECORDS_PER_COMMIT", "1", 1);
    // Another program starts a write at Centro's third customer and never finishes it.
    std::unique_ptr<Database> other;
    int customers = 0;
    onLine = [&](const std::string& line) {
        if (other || !line.starts_with("Cliente: ") || ++customers != 3) return;
        other = std::make_unique<Database>(BackOffice::FileIn(Data()), Database::OpenMode::Existing);
        other->Exec("BEGIN IMMEDIATE");
    };
    const HostRun run = Execute();
    ASSERT_TRUE(other);
    other->Exec("ROLLBACK");
    other.reset();

    EXPECT_EQ(run.exit, 1) << run.out;
    EXPECT_NE(run.err.find(kRunError + std::string("A retaguarda '") + BackOffice::FileIn(Data()).string() +
                           "' está bloqueada por outro programa: esperou 0.3 s"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find(kNotEnded), std::string::npos) << run.err;
    EXPECT_EQ(run.out.find("criar/abrir a tabela de Log"), std::string::npos) << run.out;
    ExpectLogsKeptAndReported(run, "está bloqueada por outro programa");

    // What was saved before the lock stays, whole; nothing after it was written; the run did
    // not reach its end, so no date moved.
    EXPECT_EQ(IntegrityCheck(), "ok");
    EXPECT_EQ(Count("SELECT COUNT(*) FROM salesmen WHERE SalesmanID > 0"), expected.salesmen);
    EXPECT_EQ(Count("SELECT COUNT(*) FROM customers WHERE CustomerID > 0"), 2);
    EXPECT_EQ(ItemsWithPrefix("C") + ItemsWithPrefix("P"), 0);
    EXPECT_EQ(DatesOf("Centro"), kUnmoved);
    EXPECT_EQ(DatesOf("Praia"), kUnmoved);
}

TEST_F(BackOfficeFaultsTest, ARunWaitsForAWriteLongerThanACommandWouldAndImportsEverything) {
    StoreSettings(true, true);
    // A command would give up after 0.3 s; the run waits up to a minute and says that it waits.
    ::setenv("KITRA_HOST_BUSY_TIMEOUT_MS", "300", 1);
    ::setenv("KITRA_HOST_RUN_BUSY_TIMEOUT_MS", "60000", 1);
    // At Centro's tenth document another program starts a write that lasts 11 s; the run's next
    // write waits for it. The lock is taken between two records, from the run's own thread, with
    // every record committed at once: a grouped run would hold its open group until the other
    // program gave up.
    ::setenv("KITRA_HOST_RECORDS_PER_COMMIT", "1", 1);
    constexpr auto kHeld = std::chrono::seconds(11);
    std::thread other;
    std::atomic<bool> locked{false}, committed{false};
    int documents = 0;
    const std::string file = BackOffice::FileIn(Data()).string();
    onLine = [&](const std::string& line) {
        if (other.joinable() || !line.starts_with("Documento: ") || ++documents != 10) return;
        other = std::thread([&] {
            sqlite3* db = nullptr;
            if (sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK) {
                sqlite3_busy_timeout(db, 60000);
                if (sqlite3_exec(db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) == SQLITE_OK) {
                    locked = true;
                    std::this_thread::sleep_for(kHeld);
                    committed = sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK;
                }
            }
            sqlite3_close(db);
        });
        for (int waited = 0; !locked && waited < 10000; waited += 10)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    };
    const HostRun run = Execute();
    ASSERT_TRUE(other.joinable()) << run.out;
    other.join();
    ASSERT_TRUE(locked);
    EXPECT_TRUE(committed);

    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_GE(run.seconds, 10.0);
    EXPECT_NE(run.err.find("kitra-host: a retaguarda está bloqueada por outro programa; a importação "
                           "espera que ele termine a escrita (10 s de no máximo 60 s)."),
              std::string::npos)
        << run.err;
    EXPECT_EQ(run.err.find("Erro"), std::string::npos) << run.err;
    EXPECT_EQ(UnsavedLogs(), std::vector<std::string>{});
    EXPECT_EQ(LogRows(), 2);
    EXPECT_EQ(IntegrityCheck(), "ok");
    // Nothing of either restaurant was left behind or doubled.
    for (const char* restaurant : {"Centro", "Praia"}) {
        std::ostringstream out, err;
        EXPECT_EQ(backoffice::cli::RunKitraHost({"--data", Data().string(), "reconcile", restaurant},
                                                nullptr, out, err),
                  0)
            << restaurant << "\n" << out.str() << err.str();
    }
}

// Another program writes to the back office (`kitra-host warehouse add`, a separate process)
// while the run holds a group of records open and is away from the back office: stopped in its
// notification of a document here, as it is while it waits for a restaurant's server. The group
// is committed once it is as old as a group may be (5 s), without waiting for the run's next
// record, so the other program's write goes in within its busy time-out of 10 s; the run then
// goes on and imports everything.
TEST_F(BackOfficeFaultsTest, AnotherProgramsWriteWaitsNoLongerThanAGroupWhileTheRunIsAway) {
    StoreSettings(true, true);
    const std::string file = BackOffice::FileIn(Data()).string();
    // Whether the run holds the back office's write lock at this moment.
    const auto runHoldsTheLock = [&file] {
        sqlite3* db = nullptr;
        bool held = false;
        if (sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK) {
            const int rc = sqlite3_exec(db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
            held = (rc & 0xff) == SQLITE_BUSY;
            if (rc == SQLITE_OK) sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
        }
        sqlite3_close(db);
        return held;
    };
    std::optional<ProcessResult> other;
    onLine = [&](const std::string& line) {
        if (other || !line.starts_with("Documento: ") || !runHoldsTheLock()) return;
        other = RunProcess({"env", "KITRA_HOST_BUSY_TIMEOUT_MS=10000", KITRA_HOST_PROGRAM, "--data",
                            Data().string(), "warehouse", "add", "9", "Armazém de outro programa"});
    };
    const HostRun run = Execute();
    ASSERT_TRUE(other) << "the run never held the back office's lock at a document:\n" << run.out;
    EXPECT_EQ(other->exitCode, 0) << other->out << other->err;
    EXPECT_EQ(other->err.find("bloqueada"), std::string::npos) << other->err;

    EXPECT_EQ(run.exit, 0) << run.err;
    EXPECT_EQ(Count("SELECT COUNT(*) FROM warehouses WHERE WarehouseID = 9"), 1);
    EXPECT_EQ(IntegrityCheck(), "ok");
    for (const char* restaurant : {"Centro", "Praia"}) {
        std::ostringstream out, err;
        EXPECT_EQ(backoffice::cli::RunKitraHost({"--data", Data().string(), "reconcile", restaurant},
                                                nullptr, out, err),
                  0)
            << restaurant << "\n" << out.str() << err.str();
    }
}

TEST_F(BackOfficeFaultsTest, AMissingLogFolderIsMadeAgain) {
    StoreSettings();
    fs::remove_all(LogFolder());
    const HostRun run = Execute();
    EXPECT_EQ(run.exit, 0) << run.out << run.err;
    EXPECT_TRUE(fs::is_directory(LogFolder()));
    EXPECT_TRUE(LogFiles().empty());
    EXPECT_EQ(LogRows(), 2);
    EXPECT_EQ(ItemsWithPrefix("C"), expected.items);
    ExpectDatesWithin(DatesOf("Centro"), run, "Centro");
    EXPECT_EQ(IntegrityCheck(), "ok");
}

TEST_F(BackOfficeFaultsTest, ALogFolderThatIsAFileStopsTheRunBeforeItStarts) {
    StoreSettings();
    fs::remove_all(LogFolder());
    std::ofstream(LogFolder()) << "notas do administrador";
    ExpectRefusedToStart(Execute(), "A pasta de registos '" + LogFolder().string() +
                                        "' é um ficheiro, não uma pasta: mude-lhe o nome ou apague-o. ");
    EXPECT_EQ(ReadWhole(LogFolder()), "notas do administrador");
}

TEST_F(BackOfficeFaultsTest, AReadOnlyLogFolderStopsTheRunBeforeItStarts) {
    StoreSettings();
    const ScopedMount readOnly(LogFolder(), 64, true);
    if (!readOnly.Mounted()) GTEST_SKIP() << readOnly.Why();
    ExpectRefusedToStart(Execute(), "Não é possível escrever na pasta de registos '" +
                                        LogFolder().string() + "': Read-only file system. ");
}

TEST_F(BackOfficeFaultsTest, ALogFolderLostHalfWayEndsTheRunAndNoDateMoves) {
    StoreSettings();
    onLine = [this](const std::string& line) {
        if (line != "Resumo Importação Restaurante: Centro") return;
        fs::remove_all(LogFolder());
        std::ofstream(LogFolder()) << "notas do administrador";
    };
    const HostRun run = Execute();
    EXPECT_EQ(run.exit, 1) << run.out;
    EXPECT_NE(run.err.find(kRunError + std::string("A pasta de registos '") + LogFolder().string() +
                           "' é um ficheiro, não uma pasta"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find(kNotEnded), std::string::npos) << run.err;
    // Centro was imported and logged whole; Praia's import could not begin; the run ends at
    // the first restaurant it cannot log, and keeps no restaurant's new dates.
    EXPECT_EQ(IntegrityCheck(), "ok");
    EXPECT_EQ(LogOf("Centro").find("## Erro ##"), std::string::npos) << LogOf("Centro");
    EXPECT_EQ(ItemsWithPrefix("C"), expected.items);
    EXPECT_EQ(LogOf("Praia"), "(no log row)");
    EXPECT_EQ(ItemsWithPrefix("P"), 0);
    EXPECT_EQ(DatesOf("Centro"), kUnmoved);
    EXPECT_EQ(DatesOf("Praia"), kUnmoved);
}

TEST_F(BackOfficeFaultsTest, DiskFullWhileDocumentsArrive) {
    if (!OnDisksOfTheirOwn()) GTEST_SKIP() << WhyNotMounted();
    StoreSettings(true);
    // The disk is filled between two documents, from the run's own thread, after folding the
    // journal into the file: that needs a moment when the run holds no write open, so each
    // record is committed at once here. A group lost to a full disk is tested below.
    ::setenv("KITRA_HOST_RECORDS_PER_COMMIT", "1", 1);
    int documents = 0;
    onLine = [&](const std::string& line) {
        if (line.starts_with("Documento: ") && ++documents == 10) FillTheBackOfficeDisk();
    };
    const HostRun run = Execute();
    disk_->Empty();

    EXPECT_EQ(run.exit, 1) << run.out;
    ExpectTheFullDiskSaid(run);
    EXPECT_NE(run.err.find(kNotEnded), std::string::npos) << run.err;
    ExpectLogsKeptAndReported(run, kDiskFull);

    // The documents saved before the disk filled are whole, and nothing of the one being
    // saved is there; no date moved.
    EXPECT_EQ(IntegrityCheck(), "ok");
    ExpectSomeDocumentsEachWhole("CEN");
    EXPECT_TRUE(DocumentsOf(Data(), "PRA").empty());
    EXPECT_EQ(DatesOf("Centro"), kUnmoved);
    EXPECT_EQ(DatesOf("Praia"), kUnmoved);

    // With room again, the next run imports every document whole.
    onLine = nullptr;
    NextSecond();
    const HostRun again = Execute();
    EXPECT_EQ(again.exit, 0) << again.out << again.err;
    EXPECT_EQ(IntegrityCheck(), "ok");
    EXPECT_EQ(DocumentsOf(Data(), "CEN"), ReferenceDocuments("CEN"));
    EXPECT_EQ(DocumentsOf(Data(), "PRA"), ReferenceDocuments("PRA"));
    EXPECT_EQ(Orphans(), 0);
}

TEST_F(BackOfficeFaultsTest, DiskFullWhileTheBackOfficeIsCompacted) {
    if (!OnDisksOfTheirOwn()) GTEST_SKIP() << WhyNotMounted();
    StoreSettings();
    // Pages worth reclaiming, so that the compaction rewrites the file: a table of the back
    // office's user, dropped just before the compaction.
    {
        Database other(BackOffice::FileIn(Data()), Database::OpenMode::Existing);
        other.Exec("CREATE TABLE notas (texto TEXT); WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL "
                   "SELECT i + 1 FROM n WHERE i < 2000) INSERT INTO notas SELECT randomblob(1000) FROM n");
    }
    onLine = [&](const std::string& line) {
        if (line != "Vai-se proceder à compactação da base de dados. ") return;
        {
            Database other(BackOffice::FileIn(Data()), Database::OpenMode::Existing);
            other.Exec("DROP TABLE notas");
        }
        FillTheBackOfficeDisk();
    };
    const HostRun run = Execute();
    disk_->Empty();

    // Every restaurant was imported and the new dates were saved before the compaction; the
    // run says so, and that it did not reach its end.
    EXPECT_EQ(run.exit, 3) << run.out;
    ExpectTheFullDiskSaid(run);
    EXPECT_NE(run.err.find("kitra-host: a importação não chegou ao fim, mas todos os restaurantes "
                           "foram importados e as novas datas de importação foram guardadas."),
              std::string::npos)
        << run.err;
    EXPECT_EQ(IntegrityCheck(), "ok");
    EXPECT_EQ(LogRows(), 2);
    EXPECT_EQ(ItemsWithPrefix("C"), expected.items);
    EXPECT_EQ(ItemsWithPrefix("P"), expected.items);
    ExpectDatesWithin(DatesOf("Centro"), run, "Centro");
    ExpectDatesWithin(DatesOf("Praia"), run, "Praia");
}

}  // namespace
}  // namespace kitra::test
