// What the documentation quotes of the import-date guard is what the guard says.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "core/Error.h"
#include "import/ImportDateGuard.h"

namespace kitra {
namespace {

std::string Description(const std::string& date, std::string_view which) {
    try {
        GuardedImportDate(date, which);
    } catch (const Error& error) {
        return error.Description();
    }
    return "(accepted)";
}

TEST(ImportDateDoc, TheRunsDocumentQuotesTheGuardsOwnMessage) {
    std::ifstream in(KITRA_CONNECTOR_RUN_DOC);
    ASSERT_TRUE(in) << KITRA_CONNECTOR_RUN_DOC;
    const std::string doc((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::string quoted = "\"" + Description("...", "entidades") + "\"";
    EXPECT_NE(doc.find(quoted), std::string::npos) << quoted;
    EXPECT_EQ(doc.find("não é uma data válida no"), std::string::npos);
    EXPECT_EQ(Description("2024-01-01 00:00:00", "entidades"), "(accepted)");
}

}  // namespace
}  // namespace kitra
