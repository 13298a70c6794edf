// Counting the error and warning lines of an import log from its text.
#include "backoffice/LogProblems.h"

#include <gtest/gtest.h>

namespace kitra::backoffice {
namespace {

TEST(LogProblems, ACleanLogHasNone) {
    EXPECT_EQ(CountLogProblems(" - # START # 01-03-2011 09:05:07 #\r\nRestaurantes - A integrar "
                               "Restaurante: Centro\r\n\r\nVendedores - Registos importados:3\r\n"),
              (LogProblems{0, 0}));
    EXPECT_EQ(CountLogProblems(""), (LogProblems{0, 0}));
}

TEST(LogProblems, ErrorLinesCarryTheErrorMark) {
    const std::string log =
        "Vendedores - ## Erro ## Não foi possível estabelecer comunicação com o Servidor.\r\n"
        "Clientes - ## Erro ## ao importar a tabela de clientes. Cliente: 7 : x - y\r\n"
        "Clientes - Registos importados:0\r\n";
    EXPECT_EQ(CountLogProblems(log), (LogProblems{2, 0}));
    EXPECT_EQ(CountLogProblems("Erro na leitura do ficheiro de log '/x/Centro.txt'"),
              (LogProblems{1, 0}));
}

TEST(LogProblems, WarningLinesTellOfARecordLeftOut) {
    const std::string log =
        "SubFamílias - Não foi possível adicionar a SubFamília 'X' porque não existe a família com "
        "o código '9'\r\n"
        "SubFamílias - Não foi possível adicionar o Artigo 'Y' porque não existe a subfamília\n"
        "Transacções - Não foi possível adicionar a Transacção '1' porque ...\r\n"
        // Not at the start of the line's text: not a warning.
        "Artigos - O texto Não foi possível adicionar aparece no meio\r\n";
    EXPECT_EQ(CountLogProblems(log), (LogProblems{0, 3}));
    EXPECT_EQ(WarningLines(log),
              (std::vector<std::string>{
                  "SubFamílias - Não foi possível adicionar a SubFamília 'X' porque não existe a "
                  "família com o código '9'",
                  "SubFamílias - Não foi possível adicionar o Artigo 'Y' porque não existe a subfamília",
                  "Transacções - Não foi possível adicionar a Transacção '1' porque ..."}));
}

TEST(LogProblems, TheErrorLinesThemselvesComeInTheirOrderWithoutLineEnds) {
    const std::string log =
        " - # START # 01-06-2024 10:00:00 #\r\n"
        "Vendedores - ## Erro ## ao importar a tabela de vendedores. Vendedor: 11 : Telephone - "
        "Invalid use of Null\r\n"
        "Clientes - Não foi possível adicionar o Cliente '3' porque ...\r\n"
        "Erro na leitura do ficheiro de log 'x'\n"
        "Recibos - ## Erro ## Não foi possível estabelecer comunicação com o Servidor.";
    EXPECT_EQ(ErrorLines(log),
              (std::vector<std::string>{
                  "Vendedores - ## Erro ## ao importar a tabela de vendedores. Vendedor: 11 : "
                  "Telephone - Invalid use of Null",
                  "Erro na leitura do ficheiro de log 'x'",
                  "Recibos - ## Erro ## Não foi possível estabelecer comunicação com o Servidor."}));
    EXPECT_TRUE(ErrorLines(" - # START # #\r\n").empty());
}

}  // namespace
}  // namespace kitra::backoffice
