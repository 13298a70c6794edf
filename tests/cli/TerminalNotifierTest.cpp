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

// What an importer sends: its start, then for each record a progress step and the record's own
// status text.
void Importer(TerminalNotifier& notifier, const std::string& start, const std::string& record, long records) {
    notifier.NotifyStatus(start);
    for (long row = 1; row <= records; ++row) {
        notifier.NotifyProgress(row, records - 1, start);
        notifier.NotifyStatus(record + std::to_string(row));
    }
}

void Summary(TerminalNotifier& notifier) {
    for (const char* line : {"----------------", "Resumo Importação Restaurante: Centro", "----------------",
                             " - Clientes: 3", " - Recibos: 0"}) {
        notifier.NotifyStatus(line);
    }
}

TEST(TerminalNotifier, NormalDetailLeavesOutTheRecordsOwnLines) {
    std::ostringstream plain;
    {
        TerminalNotifier notifier(plain, false, ProgressDetail::Normal);
        notifier.NotifyStatus("A integrar Restaurante: Centro");
        Importer(notifier, "A importar Clientes", "Cliente: ", 3);
        Importer(notifier, "A importar Artigos", "Artigo: ", 2);
        Summary(notifier);
    }
    EXPECT_EQ(plain.str(),
              "A integrar Restaurante: Centro\nA importar Clientes\nA importar Clientes: 1/3\n"
              "A importar Clientes: 2/3\nA importar Clientes: 3/3\nA importar Artigos\n"
              "A importar Artigos: 1/2\nA importar Artigos: 2/2\n----------------\n"
              "Resumo Importação Restaurante: Centro\n----------------\n - Clientes: 3\n - Recibos: 0\n");

    std::ostringstream terminal;
    {
        TerminalNotifier notifier(terminal, true, ProgressDetail::Normal);
        Importer(notifier, "A importar Clientes", "Cliente: ", 3);
        Importer(notifier, "A importar Artigos", "Artigo: ", 2);
        Summary(notifier);
    }
    const std::string text = terminal.str();
    // One line per importer, redrawn with the count and the record in hand.
    EXPECT_EQ(Lines(text), 2 + 2 + 5) << text;
    EXPECT_NE(text.find("] 3/3 A importar Clientes - Cliente: 3\nA importar Artigos\n"), std::string::npos) << text;
}

TEST(TerminalNotifier, VerboseDetailShowsEveryStatusText) {
    std::ostringstream out;
    {
        TerminalNotifier notifier(out, false, ProgressDetail::Verbose);
        Importer(notifier, "A importar Clientes", "Cliente: ", 2);
    }
    EXPECT_EQ(out.str(),
              "A importar Clientes\nA importar Clientes: 1/2\nCliente: 1\nA importar Clientes: 2/2\nCliente: 2\n");
}

// A record left out (a receipt without a valid invoice) shows its reason, never its record line
// as if it had been imported.
TEST(TerminalNotifier, VerboseDetailShowsARecordLeftOutOnlyByItsReason) {
    const std::string refused =
        "Não foi possível adicionar o Recibo '7' porque não existe nenhuma factura válida associada";
    for (bool terminal : {false, true}) {
        std::ostringstream out;
        {
            TerminalNotifier notifier(out, terminal, ProgressDetail::Verbose);
            notifier.NotifyStatus("A importar Recibos");
            notifier.NotifyProgress(1, 1, "A importar Recibos");
            notifier.NotifyStatus("Recibo: 7");
            notifier.NotifyStatus(refused);
            notifier.NotifyProgress(2, 1, "A importar Recibos");
            notifier.NotifyStatus("Recibo: 8");
            notifier.NotifyStatus("Registos importados:1");
        }
        const std::string text = out.str();
        EXPECT_EQ(text.find("Recibo: 7"), std::string::npos) << text;
        EXPECT_NE(text.find(refused + "\n"), std::string::npos) << text;
        EXPECT_NE(text.find("Recibo: 8\nRegistos importados:1\n"), std::string::npos) << text;
        if (!terminal) {
            EXPECT_EQ(text, "A importar Recibos\nA importar Recibos: 1/2\n" + refused +
                                "\nA importar Recibos: 2/2\nRecibo: 8\nRegistos importados:1\n");
        }
    }
}

TEST(TerminalNotifier, QuietDetailShowsOnlyTheSummary) {
    for (bool terminal : {false, true}) {
        std::ostringstream out;
        {
            TerminalNotifier notifier(out, terminal, ProgressDetail::Quiet);
            notifier.NotifyStatus("A integrar Restaurante: Centro");
            Importer(notifier, "A importar Clientes", "Cliente: ", 3);
            Summary(notifier);
            notifier.NotifyStatus("Vai-se proceder à compactação da base de dados. ");
        }
        EXPECT_EQ(out.str(),
                  "----------------\nResumo Importação Restaurante: Centro\n----------------\n"
                  " - Clientes: 3\n - Recibos: 0\n");
    }
}

}  // namespace
}  // namespace kitra::backoffice::cli
