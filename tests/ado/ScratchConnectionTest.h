#pragma once
// A test on a scratch database of its own: its tables made as root through the mariadb client,
// then a client-cursor connection to it opened as the importers open theirs.
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "ado/Connection.h"
#include "ado/Recordset.h"
#include "tests/support/ScratchDatabase.h"

namespace kitra::ado {

class ScratchConnectionTest : public ::testing::Test {
protected:
    explicit ScratchConnectionTest(std::string_view label) : database(label) {}

    // Runs the SQL that makes the test's tables, then opens the connection.
    void OpenAfter(const std::string& tablesSql) {
        database.Execute(tablesSql);
        connection.SetConnectionString(database.ConnectionString());
        connection.SetCursorLocation(CursorLocationEnum::UseClient);
        connection.Open();
    }

    Recordset Select(const std::string& statement) {
        Recordset recordset;
        recordset.Open(statement, connection);
        return recordset;
    }

    test::ScratchDatabase database;
    Connection connection;
};

}  // namespace kitra::ado
