// Group commit: records saved one after another share a write transaction, each still all or
// nothing; other writes stand on their own; a group that cannot be committed says so and lets
// nothing be written after it. A second connection, as another program would have, shows what
// is committed.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>

#include "backoffice/Database.h"
#include "core/Error.h"
#include "tests/backoffice/TempFolder.h"

namespace kitra::backoffice {
namespace {

using testing::TempBackOffice;

class GroupCommit : public ::testing::Test {
protected:
    void SetUp() override {
        Db().Exec(
            "CREATE TABLE parent (id INTEGER PRIMARY KEY);"
            "CREATE TABLE child (id INTEGER PRIMARY KEY, parent INTEGER REFERENCES parent (id)"
            " DEFERRABLE INITIALLY DEFERRED);"
            "INSERT INTO parent VALUES (1)");
    }

    Database& Db() { return office_->GetDatabase(); }

    // A record saved as the services save one: its own transaction, committed.
    void SaveRecord(int id, int parent = 1) {
        Transaction record(Db(), TransactionKind::Record);
        Statement insert(Db(), "INSERT INTO child (id, parent) VALUES (?, ?)");
        insert.Bind({Variant(id), Variant(parent)}).Run();
        record.Commit();
    }

    // Why saving a child of a parent that does not exist failed; the check is deferred, so the
    // record passes its own savepoint and the commit that holds it fails.
    std::string FailureOfAnOrphan(int id) {
        try {
            SaveRecord(id, 99);
        } catch (const Error& error) {
            return error.Description();
        }
        ADD_FAILURE() << "saving an orphan should have failed";
        return {};
    }

    // What another program sees.
    int CommittedChildren() {
        Database other(office_.File(), Database::OpenMode::Existing);
        Statement count(other, "SELECT COUNT(*) FROM child");
        return count.Step() ? count.Column(0).ToInt32() : -1;
    }

    TempBackOffice office_;
};

TEST_F(GroupCommit, RecordsAreCommittedTogetherWhenTheGroupIsFull) {
    GroupedCommits grouped(Db(), 3, 60000);
    SaveRecord(1);
    SaveRecord(2);
    EXPECT_EQ(CommittedChildren(), 0);
    SaveRecord(3);
    EXPECT_EQ(CommittedChildren(), 3);
    SaveRecord(4);
    grouped.End();
    EXPECT_EQ(CommittedChildren(), 4);
}

TEST_F(GroupCommit, AGroupIsCommittedWhenItIsOld) {
    GroupedCommits grouped(Db(), 1000, 0);
    SaveRecord(1);
    EXPECT_EQ(CommittedChildren(), 1);
}

TEST_F(GroupCommit, ARecordThatFailsLeavesTheOnesBeforeItSavedAndNothingOfItself) {
    {
        GroupedCommits grouped(Db(), 100, 60000);
        SaveRecord(1);
        try {
            Transaction record(Db(), TransactionKind::Record);
            Statement(Db(), "INSERT INTO child (id, parent) VALUES (2, 1)").Run();
            Statement(Db(), "INSERT INTO child (id, parent) VALUES (1, 1)").Run();  // a key twice
            record.Commit();
            ADD_FAILURE() << "the second insert should have failed";
        } catch (const Error&) {
        }
        SaveRecord(3);
        grouped.End();
    }
    Statement ids(Db(), "SELECT group_concat(id) FROM (SELECT id FROM child ORDER BY id)");
    ASSERT_TRUE(ids.Step());
    EXPECT_EQ(ids.ColumnText(0), "1,3");
}

TEST_F(GroupCommit, AWriteOfItsOwnCommitsTheGroupFirst) {
    GroupedCommits grouped(Db(), 100, 60000);
    SaveRecord(1);
    {
        Transaction own(Db());
        Statement(Db(), "INSERT INTO parent VALUES (2)").Run();
        own.Commit();
    }
    EXPECT_EQ(CommittedChildren(), 1);
}

TEST_F(GroupCommit, LeavingTheGroupWithoutEndStillCommitsIt) {
    {
        GroupedCommits grouped(Db(), 100, 60000);
        SaveRecord(1);
        SaveRecord(2);
    }
    EXPECT_EQ(CommittedChildren(), 2);
}

TEST_F(GroupCommit, AGroupThatCannotBeCommittedSaysSoAndNothingIsWrittenAfterIt) {
    GroupedCommits grouped(Db(), 2, 60000);
    SaveRecord(1);
    // The orphan fails the group's commit, which held record 1 too.
    const std::string failure = FailureOfAnOrphan(2);
    EXPECT_NE(failure.find("A retaguarda não guardou os últimos 2 registos gravados"), std::string::npos)
        << failure;
    EXPECT_NE(failure.find("FOREIGN KEY"), std::string::npos) << failure;
    EXPECT_EQ(CommittedChildren(), 0);
    // Neither a record nor a write of its own goes in after it.
    EXPECT_THROW(SaveRecord(3), Error);
    EXPECT_THROW(Transaction own(Db()), Error);
    EXPECT_THROW(grouped.End(), Error);
    EXPECT_EQ(CommittedChildren(), 0);
}

TEST_F(GroupCommit, AGroupOfOnlyTheFailingRecordFailsAsWithoutAGroup) {
    GroupedCommits grouped(Db(), 1, 60000);
    SaveRecord(1);
    const std::string failure = FailureOfAnOrphan(2);
    EXPECT_EQ(failure.find("não guardou"), std::string::npos) << failure;
    EXPECT_NE(failure.find("FOREIGN KEY"), std::string::npos) << failure;
    // Nothing else was lost, so later records go in.
    SaveRecord(3);
    grouped.End();
    EXPECT_EQ(CommittedChildren(), 2);
}

TEST_F(GroupCommit, WithoutAGroupEveryRecordIsCommittedAtOnce) {
    SaveRecord(1);
    EXPECT_EQ(CommittedChildren(), 1);
    EXPECT_FALSE(Db().Grouping());
}

// Another program's write, as `kitra-host warehouse add` makes it, on a connection of its own
// that waits `busyMilliseconds` at most for the lock: whether it went in.
bool AnotherProgramWrites(const std::filesystem::path& file, int busyMilliseconds) {
    Database other(file, Database::OpenMode::Existing);
    other.SetBusyWait(busyMilliseconds, {});
    try {
        Transaction own(other);
        Statement(other, "INSERT INTO parent (id) SELECT MAX(id) + 1 FROM parent").Run();
        own.Commit();
        return true;
    } catch (const Error& error) {
        ADD_FAILURE() << error.Description();
        return false;
    }
}

// The run saved a record and went to read its restaurant: the group is committed once it is as
// old as a group may be, without waiting for the run's next record, so another program's write
// goes in well within its busy time-out.
TEST_F(GroupCommit, AnotherProgramWaitsNoLongerThanTheGroupWhileTheRunIsAway) {
    GroupedCommits grouped(Db(), 1000, 200);
    SaveRecord(1);
    EXPECT_TRUE(AnotherProgramWrites(office_.File(), 10000));
    EXPECT_EQ(CommittedChildren(), 1);
    // The run goes on with a group of its own.
    SaveRecord(2);
    SaveRecord(3);
    grouped.End();
    EXPECT_EQ(CommittedChildren(), 3);
}

// A record held because its refund may follow is ended with the group, as by any other write.
TEST_F(GroupCommit, ARecordHeldWhileTheRunIsAwayIsEndedWithTheGroup) {
    GroupedCommits grouped(Db(), 1000, 200);
    bool ended = false;
    {
        Transaction record(Db(), TransactionKind::Record);
        Statement(Db(), "INSERT INTO child (id, parent) VALUES (1, 1)").Run();
        record.Hold(7, [&] { ended = true; });
    }
    EXPECT_TRUE(AnotherProgramWrites(office_.File(), 10000));
    EXPECT_EQ(CommittedChildren(), 1);
    grouped.End();
    EXPECT_TRUE(ended);
}

// Only between records: a record being saved is never cut by the group's commit.
TEST_F(GroupCommit, ARecordBeingSavedIsCommittedWholeAtItsEnd) {
    GroupedCommits grouped(Db(), 1000, 50);
    {
        Transaction record(Db(), TransactionKind::Record);
        Statement(Db(), "INSERT INTO child (id, parent) VALUES (1, 1)").Run();
        std::this_thread::sleep_for(std::chrono::milliseconds(400));
        EXPECT_EQ(CommittedChildren(), 0);
        Statement(Db(), "INSERT INTO child (id, parent) VALUES (2, 1)").Run();
        record.Commit();
    }
    // Due at its end: committed there.
    EXPECT_EQ(CommittedChildren(), 2);
    grouped.End();
}

// SQLite's page cache of a connection, in KiB (the pragma gives KiB as a negative number).
std::int64_t CacheKib(Database& database) {
    Statement cache(database, "PRAGMA cache_size");
    return cache.Step() ? -static_cast<std::int64_t>(cache.Column(0).ToDouble()) : 0;
}

std::int64_t FileKib(Database& database) {
    Statement pages(database,
                    "SELECT page_count * page_size / 1024 "
                    "FROM pragma_page_count(), pragma_page_size()");
    return pages.Step() ? static_cast<std::int64_t>(pages.Column(0).ToDouble()) : 0;
}

TEST_F(GroupCommit, ThePageCacheFollowsTheFileAsItsGroupsAreCommitted) {
    // A small file keeps the least cache: 32 MB.
    EXPECT_EQ(CacheKib(Db()), 32 * 1024);

    // A record that makes the file about 420 MB (more than twelve times the least cache).
    Db().Exec("CREATE TABLE bulk (id INTEGER PRIMARY KEY, data BLOB)");
    GroupedCommits grouped(Db(), 1000, 60000);
    {
        Transaction record(Db(), TransactionKind::Record);
        Db().Exec(
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 420) "
            "INSERT INTO bulk (id, data) SELECT i, zeroblob(1048576) FROM n");
        record.Commit();
    }
    // Not before the group is committed,
    EXPECT_EQ(CacheKib(Db()), 32 * 1024);
    grouped.End();

    // then a twelfth of the file.
    const std::int64_t fileKib = FileKib(Db());
    ASSERT_GT(fileKib, 420 * 1024);
    EXPECT_EQ(CacheKib(Db()), fileKib / 12);

    // A connection opened on a large file takes its share at once.
    Database other(office_.File(), Database::OpenMode::Existing);
    EXPECT_EQ(CacheKib(other), fileKib / 12);
}

}  // namespace
}  // namespace kitra::backoffice
