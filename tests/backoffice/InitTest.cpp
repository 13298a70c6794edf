// Creating a back office: its starting data, the refusal to touch an existing one, the
// kitra-host command line, and that the file has exactly the tables the schema document lists.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <set>
#include <sstream>

#include <sqlite3.h>

#include "backoffice/BackOffice.h"
#include "backoffice/Schema.h"
#include "backoffice/cli/KitraHost.h"
#include "tests/backoffice/TempFolder.h"

namespace kitra::backoffice {
namespace {

using namespace host;
using testing::TempFolder;

std::string ReadWholeFile(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::set<std::string> FilesIn(const std::filesystem::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        names.insert(std::filesystem::relative(entry.path(), folder).string());
    return names;
}

// ---------------------------------------------------------------- starting data

TEST(Init, StartsWithAPortugueseRestaurantCompany) {
    testing::TempBackOffice office;
    // VAT classes for 23, 13, 6 and 0 per cent on the mainland.
    for (double rate : {23.0, 13.0, 6.0, 0.0})
        EXPECT_NO_THROW(office->tax.TaxableGroupForRate(rate, {"PT", 1})) << rate;

    const auto cash = office->tenders.Get(1);
    ASSERT_TRUE(cash.has_value());
    EXPECT_EQ(cash->Description, "Dinheiro");
    std::set<std::int16_t> tenderTypes;
    for (const Tender& tender : office->tenders.List()) tenderTypes.insert(tender.TenderType);
    for (std::int16_t type : {tender_type::kCash, tender_type::kCard, tender_type::kVoucher,
                              tender_type::kOnAccount})
        EXPECT_TRUE(tenderTypes.count(type)) << type;

    for (const char* code : {"FAC", "VB", "DEV", "PCL"}) EXPECT_TRUE(office->documentTypes.Exists(code)) << code;
    std::set<DocumentKind> kinds;
    for (const DocumentType& type : office->documentTypes.List()) kinds.insert(type.Kind);
    for (DocumentKind kind : {DocumentKind::Sale, DocumentKind::CreditSale, DocumentKind::Return,
                              DocumentKind::StockTransport, DocumentKind::CashEntrance,
                              DocumentKind::CashWithdrawal, DocumentKind::CustomerPayment,
                              DocumentKind::CustomerPaymentOnAccount, DocumentKind::SelfConsumption})
        EXPECT_TRUE(kinds.count(kind)) << static_cast<int>(kind);

    std::set<SeriesKind> seriesKinds;
    for (const DocumentSeries& series : office->documentSeries.List()) {
        EXPECT_TRUE(series.Active);
        seriesKinds.insert(series.Kind);
    }
    EXPECT_EQ(seriesKinds, (std::set<SeriesKind>{SeriesKind::Signed, SeriesKind::ExternalUnsigned}));
    EXPECT_TRUE(office->application.ExternalUnsignedSeriesActive());

    EXPECT_EQ(office->warehouses.List().size(), 2u);
    EXPECT_TRUE(office->warehouses.Exists(1) && office->warehouses.Exists(2));
    EXPECT_EQ(office->workstations.List().size(), 3u);
    for (std::int16_t id : {1, 2, 3}) EXPECT_TRUE(office->workstations.Exists(id));
    ASSERT_TRUE(office->suppliers.Exists(1.0));
    EXPECT_FALSE(office->suppliers.Get(1.0)->OrganizationName.empty());
    EXPECT_TRUE(office->unitsOfSale.Exists("UN"));
    EXPECT_TRUE(office->unitsOfSale.Exists("KG"));
    EXPECT_TRUE(std::filesystem::is_directory(office.DataFolder() / "logs"));
}

TEST(Init, RefusesAnExistingBackOfficeAndChangesNothing) {
    testing::TempBackOffice office;
    office->salesmen.Save(testing::NamedSalesman(5, "Marta"), 5.0, true);
    office->compaction.CompactDatabase();  // everything in the file, nothing in the journal
    const std::string before = ReadWholeFile(office.File());
    const auto filesBefore = FilesIn(office.DataFolder());
    const auto modifiedBefore = std::filesystem::last_write_time(office.File());

    try {
        BackOffice::Create(office.DataFolder());
        FAIL() << "a second init must be refused";
    } catch (const Error& error) {
        EXPECT_EQ(error.Description(), "Já existe uma retaguarda na pasta '" +
                                           office.DataFolder().string() + "'. Nada foi alterado.");
    }
    EXPECT_EQ(ReadWholeFile(office.File()), before);
    EXPECT_EQ(FilesIn(office.DataFolder()), filesBefore);
    EXPECT_EQ(std::filesystem::last_write_time(office.File()), modifiedBefore);
    EXPECT_EQ(office->salesmen.Get(5.0)->Name, "Marta");
}

TEST(Init, MakesTheDataFolderWhenItIsMissing) {
    TempFolder folder;
    const auto data = folder.Path() / "a" / "b";
    BackOffice::Create(data);
    EXPECT_TRUE(std::filesystem::exists(data / "backoffice.sqlite"));
}

// ---------------------------------------------------------------- the command line, in-process

struct CommandRun {
    int exitCode;
    std::string out, err;
};

CommandRun KitraHost(const std::vector<std::string>& arguments) {
    std::ostringstream out, err;
    const int code = cli::RunKitraHost(arguments, nullptr, out, err);
    return {code, out.str(), err.str()};
}

TEST(KitraHostCommand, InitCreatesTheBackOfficeInTheDataFolder) {
    TempFolder folder;
    const std::string data = (folder.Path() / "d").string();
    const CommandRun run = KitraHost({"init", "--data", data});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(std::filesystem::exists(folder.Path() / "d" / "backoffice.sqlite"));
    EXPECT_NE(run.out.find("Retaguarda criada"), std::string::npos);

    const CommandRun again = KitraHost({"--data=" + data, "init"});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_NE(again.err.find("Já existe uma retaguarda"), std::string::npos) << again.err;
}

TEST(KitraHostCommand, TakesTheDataFolderFromTheEnvironmentWithoutTheOption) {
    TempFolder folder;
    const std::string data = (folder.Path() / "from-env").string();
    ::setenv("KITRA_HOST_DATA", data.c_str(), 1);
    EXPECT_EQ(cli::DefaultDataFolder(), data);
    const CommandRun run = KitraHost({"init"});
    ::unsetenv("KITRA_HOST_DATA");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(std::filesystem::exists(folder.Path() / "from-env" / "backoffice.sqlite"));
    EXPECT_EQ(cli::DefaultDataFolder(), "./kitra-data");
}

TEST(KitraHostCommand, HelpListsTheCommands) {
    for (const char* option : {"--help", "-h", "help"}) {
        const CommandRun run = KitraHost({option});
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_NE(run.out.find("Uso: kitra-host [--data PASTA] COMANDO"), std::string::npos);
        EXPECT_NE(run.out.find("\n  init "), std::string::npos);
        EXPECT_NE(run.out.find("KITRA_HOST_DATA"), std::string::npos);
    }
}

TEST(KitraHostCommand, BadUsageIsExplainedAndExitsWithTwo) {
    const std::vector<std::vector<std::string>> mistakes = {
        {}, {"bogus"}, {"--data"}, {"init", "--data"}, {"--data="}, {"--frobnicate", "init"},
        {"init", "extra"}};
    for (const auto& arguments : mistakes) {
        const CommandRun run = KitraHost(arguments);
        EXPECT_EQ(run.exitCode, 2) << ::testing::PrintToString(arguments);
        EXPECT_NE(run.err.find("kitra-host --help"), std::string::npos) << run.err;
        EXPECT_TRUE(run.out.empty());
    }
}

// ---------------------------------------------------------------- the program and sqlite3

struct Output {
    int exitCode;
    std::string text;
};

Output Shell(const std::string& command) {
    Output output{-1, {}};
    FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return output;
    std::array<char, 4096> buffer{};
    std::size_t n = 0;
    while ((n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0) output.text.append(buffer.data(), n);
    const int status = ::pclose(pipe);
    output.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return output;
}

std::string Quoted(const std::filesystem::path& path) { return "'" + path.string() + "'"; }

std::set<std::string> Words(const std::string& text) {
    std::set<std::string> words;
    std::istringstream in(text);
    for (std::string word; in >> word;) words.insert(word);
    return words;
}

// The tables docs/backoffice-schema.md describes: its "### `name`" headings.
std::set<std::string> DocumentedTables() {
    std::set<std::string> tables;
    std::ifstream doc(KITRA_SCHEMA_DOC);
    const std::string heading = "### `";
    for (std::string line; std::getline(doc, line);) {
        if (!line.starts_with(heading)) continue;
        const std::string rest = line.substr(heading.size());
        const auto end = rest.find('`');
        const std::string name = rest.substr(0, end);
        const bool plain = end != std::string::npos && !name.empty() &&
                           name.find_first_not_of("abcdefghijklmnopqrstuvwxyz_0123456789") ==
                               std::string::npos;
        if (plain) tables.insert(name);
    }
    return tables;
}

TEST(KitraHostProgram, InitThenSqlite3ShowsTheDocumentedTables) {
    TempFolder folder;
    const auto data = folder.Path() / "data";
    const Output init = Shell(std::string(KITRA_HOST_PROGRAM) + " init --data " + Quoted(data));
    ASSERT_EQ(init.exitCode, 0) << init.text;

    const Output tables =
        Shell(std::string(KITRA_SQLITE3_PROGRAM) + " " + Quoted(data / "backoffice.sqlite") + " .tables");
    ASSERT_EQ(tables.exitCode, 0) << tables.text;
    const auto schema = SchemaTables();
    EXPECT_EQ(Words(tables.text), std::set<std::string>(schema.begin(), schema.end()));
    EXPECT_EQ(DocumentedTables(), std::set<std::string>(schema.begin(), schema.end()));

    const Output again = Shell(std::string(KITRA_HOST_PROGRAM) + " --data " + Quoted(data) + " init");
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_NE(again.text.find("Nada foi alterado."), std::string::npos) << again.text;

    const Output wrong = Shell(std::string(KITRA_HOST_PROGRAM) + " iniciar");
    EXPECT_EQ(wrong.exitCode, 2);
    EXPECT_NE(wrong.text.find("Comando desconhecido: 'iniciar'."), std::string::npos) << wrong.text;
}

// The back office looks at an existing file before it opens it; that first look starts SQLite
// in the process, so it must not start it without the back office's settings.
TEST(KitraHostProgram, AnExistingBackOfficeOpensWithTheLibrarySettings) {
    TempFolder folder;
    const auto data = folder.Path() / "data";
    // Made by another process: nothing in this one has started SQLite yet.
    const Output init = Shell(std::string(KITRA_HOST_PROGRAM) + " init --data " + Quoted(data));
    ASSERT_EQ(init.exitCode, 0) << init.text;

    BackOffice office(data);
    // A record's journal in memory by the library's setting, not by temp_store=MEMORY.
    Statement tempStore(office.GetDatabase(), "PRAGMA temp_store");
    ASSERT_TRUE(tempStore.Step());
    EXPECT_EQ(tempStore.Column(0).ToInt32(), 1);
    // No memory statistics: SQLite counts nothing.
    EXPECT_TRUE(office.tenders.Exists(1));
    EXPECT_EQ(sqlite3_memory_used(), 0);
}

}  // namespace
}  // namespace kitra::backoffice
