// The driver name "MySQL ODBC 5.1 Driver" resolved the way a host program resolves it: the
// program starts without ODBCSYSINI and calls EnsureDriverRegistration before its first ODBC
// call. Each test runs in a process of its own (ctest), as unixODBC reads ODBCSYSINI once.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "ado/Connection.h"
#include "ado/DriverRegistration.h"
#include "ado/Recordset.h"
#include "tests/support/Process.h"
#include "tests/support/ScratchDatabase.h"

namespace kitra::ado {
namespace {

std::string ReadText(const std::filesystem::path& path) {
    std::ifstream in(path);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(DriverRegistration, TheBuildRegistersTheDriverNameInItsOwnFolder) {
    const std::filesystem::path ini = std::filesystem::path(KITRA_ODBC_SYSINI_DIR) / "odbcinst.ini";
    ASSERT_TRUE(std::filesystem::exists(ini)) << ini;
    const std::string text = ReadText(ini);
    EXPECT_NE(text.find("[MySQL ODBC 5.1 Driver]"), std::string::npos) << text;
    const auto driverLine = text.find("Driver = ");
    ASSERT_NE(driverLine, std::string::npos) << text;
    const std::string library = text.substr(driverLine + 9, text.find('\n', driverLine) - driverLine - 9);
    EXPECT_TRUE(std::filesystem::exists(library)) << library;
    EXPECT_EQ(std::filesystem::path(library).filename(), "libmaodbc.so");
}

TEST(DriverRegistration, FindsTheProjectsFolder) {
    EXPECT_EQ(std::filesystem::path(FindProjectDriverFolder()),
              std::filesystem::weakly_canonical(KITRA_ODBC_SYSINI_DIR));
}

TEST(DriverRegistration, WithoutAnyRegistrationPointsOdbcAtTheProjectsFolderAndConnects) {
    ASSERT_EQ(std::getenv("ODBCSYSINI"), nullptr) << "the test must start without ODBCSYSINI";
    // Asked of unixODBC's own tool, so that this process's ODBC stays untouched.
    const test::ProcessResult drivers = test::RunProcess({"odbcinst", "-q", "-d"});
    const bool registeredForTheMachine =
        drivers.out.find("[MySQL ODBC 5.1 Driver]") != std::string::npos;
    const DriverRegistration registration = EnsureDriverRegistration();
    if (registeredForTheMachine) {
        // The machine's own registration wins and nothing is changed.
        EXPECT_EQ(registration.source, DriverSource::System);
        EXPECT_EQ(std::getenv("ODBCSYSINI"), nullptr);
    } else {
        EXPECT_EQ(registration.source, DriverSource::ProjectFolder);
        ASSERT_NE(std::getenv("ODBCSYSINI"), nullptr);
        EXPECT_EQ(std::string(std::getenv("ODBCSYSINI")), registration.folder);
        EXPECT_EQ(std::filesystem::path(registration.folder),
                  std::filesystem::weakly_canonical(KITRA_ODBC_SYSINI_DIR));
        EXPECT_TRUE(IsDriverRegistered(kRestaurantDriverName));
    }

    // The connection string, unchanged, now finds its driver.
    test::ScratchDatabase database("driver_registration");
    Connection connection(database.ConnectionString());
    connection.Open();
    Recordset one;
    one.Open("SELECT 1 AS one", connection);
    EXPECT_EQ(one.Field("one"), Variant(std::int32_t{1}));
}

TEST(DriverRegistration, CallingItAgainChangesNothing) {
    const DriverRegistration first = EnsureDriverRegistration();
    const char* after = std::getenv("ODBCSYSINI");
    const DriverRegistration second = EnsureDriverRegistration();
    if (first.source == DriverSource::ProjectFolder) {
        // The folder it set is now the user's ODBCSYSINI as far as the second call can tell.
        EXPECT_EQ(second.source, DriverSource::Environment);
        EXPECT_EQ(second.folder, first.folder);
    } else {
        EXPECT_EQ(second.source, first.source);
    }
    EXPECT_EQ(std::getenv("ODBCSYSINI"), after);
}

TEST(DriverRegistration, AnOdbcSysIniTheUserSetIsLeftAlone) {
    setenv("ODBCSYSINI", "/somewhere/the/user/chose", 1);
    const DriverRegistration registration = EnsureDriverRegistration();
    EXPECT_EQ(registration.source, DriverSource::Environment);
    EXPECT_EQ(registration.folder, "/somewhere/the/user/chose");
    EXPECT_STREQ(std::getenv("ODBCSYSINI"), "/somewhere/the/user/chose");
    unsetenv("ODBCSYSINI");
}

}  // namespace
}  // namespace kitra::ado
