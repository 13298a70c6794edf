#include "backoffice/cli/TerminalNotifier.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

namespace kitra::backoffice::cli {
namespace {

long Lines(const std::string& text) { return std::count(text.begin(), text.end(), '\n'); }

TEST(TerminalNotifier, RedrawsOneBarOnATerminal) {
    std::ostringstream out;
    {
        TerminalNotifier notifier(out, true);
        notifier.NotifyStatus("A importar Artigos");
        for (long row = 1; row <= 4; ++row) notifier.NotifyProgress(row, 3, "A importar Artigos");
        notifier.NotifyStatus("Registos importados:4");
    }
    const std::string text = out.str();
    EXPECT_TRUE(text.starts_with("A importar Artigos\n")) << text;
    EXPECT_NE(text.find("\r\033[K[#######"), std::string::npos) << text;
    EXPECT_NE(text.find("] 4/4 A importar Artigos\nRegistos importados:4\n"), std::string::npos)
        << text;
    EXPECT_EQ(Lines(text), 3);  // the bar stays on one line
}

TEST(TerminalNotifier, PlainLinesWhenNotATerminal) {
    std::ostringstream out;
    TerminalNotifier notifier(out, false);
    notifier.NotifyStatus("A importar Clientes");
    for (long row = 1; row <= 1000; ++row) notifier.NotifyProgress(row, 999, "A importar Clientes");
    notifier.NotifyProgress(1, 0, "A importar Artigos");
    const std::string text = out.str();
    EXPECT_EQ(text.find('\r'), std::string::npos);
    EXPECT_EQ(text.find('\033'), std::string::npos);
    EXPECT_TRUE(text.starts_with("A importar Clientes\nA importar Clientes: 1/1000\n")) << text;
    EXPECT_NE(text.find("A importar Clientes: 1000/1000\n"), std::string::npos);
    EXPECT_TRUE(text.ends_with("A importar Artigos: 1/1\n")) << text;
    EXPECT_LE(Lines(text), 14);  // a line at each tenth of the way, not one per row
}

}  // namespace
}  // namespace kitra::backoffice::cli
