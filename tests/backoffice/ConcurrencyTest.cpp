// Two programs on one back office at the same time: the second waits for the first's write
// lock (busy timeout) instead of failing with "database is locked", and two programs creating
// a back office in one folder never both succeed.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <iostream>
#include <optional>
#include <thread>

#include <sqlite3.h>

#include "tests/backoffice/TempFolder.h"

namespace kitra::backoffice {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// Saves `count` salesmen with keys from `firstKey`, each in its own transaction, reading one
// back after each save; 0 when every call succeeded.
int WriteSalesmen(const std::filesystem::path& data, int firstKey, int count,
                  Clock::time_point start) {
    try {
        BackOffice office(data);
        std::this_thread::sleep_until(start);
        for (int i = 0; i < count; ++i) {
            const double key = firstKey + i;
            office.salesmen.Save(testing::NamedSalesman(key, "Vendedor " + std::to_string(firstKey + i)), key, true);
            if (!office.salesmen.Exists(key)) return 2;
            office.tenders.List();
        }
        return 0;
    } catch (const std::exception& error) {
        std::cerr << "writer " << firstKey << ": " << error.what() << "\n";
        return 1;
    }
}

int ExitCodeOf(pid_t child) {
    int status = 0;
    if (::waitpid(child, &status, 0) != child) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Runs `hold` in another program (a child process) and returns once that program holds its lock:
// `hold` takes the lock, calls the function it is given, keeps the lock for most of a second and
// returns the child's exit code (0 when all went well). -1 when the child could not be started
// or never took its lock.
pid_t StartProgramHoldingALock(const std::function<int(const std::function<void()>& holding)>& hold) {
    int ready[2];
    if (::pipe(ready) != 0) return -1;
    const pid_t child = ::fork();
    if (child < 0) return -1;
    if (child == 0) {
        ::close(ready[0]);
        const auto holding = [&ready] {
            const char go = 'g';
            if (::write(ready[1], &go, 1) != 1) ::_exit(3);
        };
        try {
            ::_exit(hold(holding));
        } catch (...) {
            ::_exit(1);
        }
    }
    ::close(ready[1]);
    char go = 0;
    const bool held = ::read(ready[0], &go, 1) == 1;
    ::close(ready[0]);
    if (!held) {
        ExitCodeOf(child);
        return -1;
    }
    return child;
}

TEST(TwoPrograms, WriteTheSameBackOfficeAtOnce) {
    testing::TempFolder folder;
    const auto data = folder.Path() / "data";
    BackOffice::Create(data);
    constexpr int kEach = 2000;
    // Both start writing at the same moment, with no connection open across the fork.
    const Clock::time_point start = Clock::now() + 300ms;
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) ::_exit(WriteSalesmen(data, 100000, kEach, start));
    const int parent = WriteSalesmen(data, 200000, kEach, start);
    EXPECT_EQ(ExitCodeOf(child), 0);
    EXPECT_EQ(parent, 0);

    BackOffice office(data);
    EXPECT_EQ(office.salesmen.List().size(), 2u * kEach);
}

TEST(TwoPrograms, ASaveWaitsForAnotherProgramsLongWrite) {
    testing::TempFolder folder;
    const auto data = folder.Path() / "data";
    BackOffice::Create(data);
    // Holds the write lock for most of a second, then commits.
    const pid_t child = StartProgramHoldingALock([&data](const std::function<void()>& holding) {
        BackOffice office(data);
        Transaction transaction(office.GetDatabase());
        Statement insert(office.GetDatabase(),
                         "INSERT INTO warehouses (WarehouseID, Description) VALUES (?,?)");
        insert.Bind({Variant(std::int32_t{3}), Variant("Armazém da outra aplicação")}).Run();
        holding();
        std::this_thread::sleep_for(800ms);
        transaction.Commit();
        return 0;
    });
    ASSERT_GT(child, 0);

    BackOffice office(data);
    const auto before = Clock::now();
    EXPECT_NO_THROW(office.warehouses.Save({4, "Armazém deste programa"}, 4, true));
    const auto waited = Clock::now() - before;
    EXPECT_EQ(ExitCodeOf(child), 0);
    EXPECT_GT(waited, 300ms) << "the save should have waited for the other program's lock";
    EXPECT_TRUE(office.warehouses.Exists(3));
    EXPECT_TRUE(office.warehouses.Exists(4));
}

TEST(TwoPrograms, CreatingTheSameBackOfficeAtOnceSucceedsOnlyOnce) {
    testing::TempFolder folder;
    const auto data = folder.Path() / "data";
    const Clock::time_point start = Clock::now() + 200ms;
    pid_t children[2];
    for (pid_t& child : children) {
        child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            std::this_thread::sleep_until(start);
            try {
                BackOffice::Create(data);
                ::_exit(0);
            } catch (const Error&) {
                ::_exit(1);
            }
        }
    }
    const int first = ExitCodeOf(children[0]);
    const int second = ExitCodeOf(children[1]);
    EXPECT_EQ((first == 0) + (second == 0), 1) << first << " " << second;
    EXPECT_EQ((first == 1) + (second == 1), 1) << first << " " << second;
    BackOffice office(data);
    EXPECT_TRUE(office.tenders.Exists(1));
    // No draft file is left behind.
    for (const auto& entry : std::filesystem::directory_iterator(data)) {
        const std::string name = entry.path().filename().string();
        EXPECT_TRUE(name.rfind(kBackOfficeFileName, 0) == 0 || name == "logs") << name;
    }
}

// A program that opens or closes the back office holds the whole file for a moment (SQLite's
// recovery of the WAL, its last checkpoint); one that opens it meanwhile waits, rather than
// saying the file is not a database.
TEST(TwoPrograms, OpeningWaitsForAProgramThatHoldsTheWholeFile) {
    testing::TempFolder folder;
    const auto data = folder.Path() / "data";
    BackOffice::Create(data);
    const pid_t child = StartProgramHoldingALock([&data](const std::function<void()>& holding) {
        sqlite3* db = nullptr;
        const std::string file = BackOffice::FileIn(data).string();
        if (sqlite3_open(file.c_str(), &db) != SQLITE_OK) return 1;
        // Exclusive locking keeps every lock of the file, readers' included, until the close.
        if (sqlite3_exec(db, "PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE; COMMIT;", nullptr,
                         nullptr, nullptr) != SQLITE_OK)
            return 2;
        holding();
        std::this_thread::sleep_for(800ms);
        sqlite3_close(db);
        return 0;
    });
    ASSERT_GT(child, 0);

    const auto before = Clock::now();
    std::optional<BackOffice> office;
    EXPECT_NO_THROW(office.emplace(data));
    const auto waited = Clock::now() - before;
    EXPECT_EQ(ExitCodeOf(child), 0);
    EXPECT_GT(waited, 300ms) << "the open should have waited for the other program";
    ASSERT_TRUE(office);
    EXPECT_TRUE(office->tenders.Exists(1));
}

}  // namespace
}  // namespace kitra::backoffice
