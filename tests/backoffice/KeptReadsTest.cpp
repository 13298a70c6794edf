// Look-ups kept between uses: within one write transaction of the connection they are read once,
// and every event that may change what they read (the transaction's end, a savepoint rolled
// back, a row of their table written by this connection, the table emptied or its schema
// changed) makes the next look-up read again. Another connection, as another program would
// have, changes the tables between transactions.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <optional>
#include <string>

#include "backoffice/Database.h"
#include "backoffice/KeptReads.h"
#include "core/Error.h"
#include "tests/backoffice/TempFolder.h"

namespace kitra::backoffice {
namespace {

using testing::TempBackOffice;

class KeptLookUps : public ::testing::Test {
protected:
    void SetUp() override {
        Db().Exec(
            "CREATE TABLE prices (code TEXT PRIMARY KEY, price INTEGER);"
            "CREATE TABLE notes (id INTEGER PRIMARY KEY, text TEXT);"
            "INSERT INTO prices VALUES ('A', 10), ('B', 20)");
        kept_.emplace(Db(), std::vector<std::string_view>{"prices"});
    }

    Database& Db() { return office_->GetDatabase(); }

    // The price of the code as the kept look-up gives it; reads_ counts the times it read.
    std::optional<int> Price(const std::string& code) {
        return kept_->Get(code, [&]() -> std::optional<int> {
            ++reads_;
            Statement price(Db(), "SELECT price FROM prices WHERE code=?");
            price.BindValues(code);
            if (!price.Step()) return std::nullopt;
            return price.Column(0).ToInt32();
        });
    }

    void Write(const std::string& sql) { Statement(Db(), sql).Run(); }

    // Another program changes the table (it waits for this connection's write lock, if held).
    void ElsewhereWrite(const std::string& sql) {
        Database other(office_.File(), Database::OpenMode::Existing);
        other.Exec(sql);
    }

    TempBackOffice office_;
    std::optional<KeptReads<std::string, std::optional<int>>> kept_;
    int reads_ = 0;
};

TEST_F(KeptLookUps, AreReadOnceWithinAWriteTransaction) {
    Transaction write(Db());
    EXPECT_EQ(Price("A"), 10);
    EXPECT_EQ(Price("A"), 10);
    EXPECT_EQ(Price("B"), 20);
    EXPECT_EQ(Price("Z"), std::nullopt);
    EXPECT_EQ(Price("Z"), std::nullopt);
    EXPECT_EQ(reads_, 3);
    // A row of another table written meanwhile changes nothing of them.
    Write("INSERT INTO notes (text) VALUES ('x')");
    EXPECT_EQ(Price("A"), 10);
    EXPECT_EQ(reads_, 3);
    write.Commit();
}

TEST_F(KeptLookUps, OutsideAWriteTransactionEveryLookUpReads) {
    EXPECT_EQ(Price("A"), 10);
    ElsewhereWrite("UPDATE prices SET price=11 WHERE code='A'");
    EXPECT_EQ(Price("A"), 11);
    EXPECT_EQ(reads_, 2);
}

TEST_F(KeptLookUps, WhatAnotherProgramCommittedBetweenTwoTransactionsIsRead) {
    {
        Transaction write(Db());
        EXPECT_EQ(Price("A"), 10);
        write.Commit();
    }
    ElsewhereWrite("UPDATE prices SET price=12 WHERE code='A'");
    Transaction write(Db());
    EXPECT_EQ(Price("A"), 12);
    EXPECT_EQ(reads_, 2);
}

TEST_F(KeptLookUps, ARowOfTheTableWrittenByThisConnectionIsReadAgain) {
    Transaction write(Db());
    EXPECT_EQ(Price("A"), 10);
    Write("UPDATE prices SET price=13 WHERE code='A'");
    EXPECT_EQ(Price("A"), 13);
    Write("INSERT INTO prices VALUES ('Z', 99)");
    EXPECT_EQ(Price("Z"), 99);
    Write("DELETE FROM prices WHERE code='B'");
    EXPECT_EQ(Price("B"), std::nullopt);
    EXPECT_EQ(reads_, 4);
}

TEST_F(KeptLookUps, ATableIsTheSameInAnyLetterCase) {
    KeptReads<std::string, int> counts(Db(), {"PRICES"});
    auto count = [&] {
        return counts.Get("all", [&] {
            Statement all(Db(), "SELECT COUNT(*) FROM prices");
            all.Step();
            return all.Column(0).ToInt32();
        });
    };
    Transaction write(Db());
    EXPECT_EQ(count(), 2);
    Write("INSERT INTO Prices VALUES ('C', 30)");
    EXPECT_EQ(count(), 3);
    Write("DELETE FROM PRICES");
    EXPECT_EQ(count(), 0);
}

TEST_F(KeptLookUps, ATableEmptiedAtOnceIsReadAgain) {
    Transaction write(Db());
    EXPECT_EQ(Price("A"), 10);
    Write("DELETE FROM prices");
    EXPECT_EQ(Price("A"), std::nullopt);
}

TEST_F(KeptLookUps, ASavepointRolledBackIsReadAgain) {
    Transaction write(Db());
    Db().Exec("SAVEPOINT change");
    Write("UPDATE prices SET price=14 WHERE code='A'");
    EXPECT_EQ(Price("A"), 14);
    Db().Exec("ROLLBACK TO change; RELEASE change");
    EXPECT_EQ(Price("A"), 10);
}

TEST_F(KeptLookUps, ATransactionRolledBackIsReadAgain) {
    {
        Transaction write(Db());
        Write("UPDATE prices SET price=15 WHERE code='A'");
        EXPECT_EQ(Price("A"), 15);
    }  // not committed: rolled back
    Transaction write(Db());
    EXPECT_EQ(Price("A"), 10);
}

TEST_F(KeptLookUps, ASchemaChangeIsReadAgainAndADroppedTableIsGone) {
    Transaction write(Db());
    EXPECT_EQ(Price("A"), 10);
    Write("DROP TABLE prices");
    Write("CREATE TABLE prices (code TEXT PRIMARY KEY, price INTEGER)");
    EXPECT_EQ(Price("A"), std::nullopt);
    write.Commit();
    Statement tables(Db(), "SELECT COUNT(*) FROM sqlite_master WHERE name='prices'");
    ASSERT_TRUE(tables.Step());
    EXPECT_EQ(tables.Column(0).ToInt32(), 1);
}

TEST_F(KeptLookUps, AReadThatFailsKeepsNothing) {
    Transaction write(Db());
    EXPECT_THROW(kept_->Get("A", []() -> std::optional<int> { throw Error("falhou"); }), Error);
    EXPECT_EQ(Price("A"), 10);
    EXPECT_EQ(Price("A"), 10);
    EXPECT_EQ(reads_, 1);
}

TEST_F(KeptLookUps, AGroupCommittedEndsWhatWasKept) {
    GroupedCommits grouped(Db(), 1000, 60000);
    auto saveNote = [&] {
        Transaction record(Db(), TransactionKind::Record);
        Write("INSERT INTO notes (text) VALUES ('x')");
        record.Commit();
    };
    saveNote();
    EXPECT_EQ(Price("A"), 10);
    EXPECT_EQ(Price("A"), 10);
    EXPECT_EQ(reads_, 1);
    Db().CommitGroup();
    ElsewhereWrite("UPDATE prices SET price=16 WHERE code='A'");
    saveNote();
    EXPECT_EQ(Price("A"), 16);
    grouped.End();
}

}  // namespace
}  // namespace kitra::backoffice
