#include "backoffice/cli/Command.h"

namespace kitra::backoffice::cli {

const std::vector<Command>& AllCommands() {
    static const std::vector<Command> commands = {
        {"init", "", "Cria uma retaguarda nova na pasta de dados, com uma empresa de exemplo.",
         &RunInit},
        {"info", "", "Mostra a identificação do conector.", &RunInfo},
        {"settings", "load FICHEIRO|show|delete",
         "Guarda (do ficheiro XML), mostra ou apaga as configurações do conector.", &RunSettings},
        {"validate", "", "Valida as configurações guardadas.", &RunValidate},
        {"execute", "", "Importa os restaurantes configurados.", &RunExecute},
        {"log", "list|show|delete ...",
         "Lista os registos de log; mostra ou apaga um: RESTAURANTE \"aaaa-mm-dd hh:mm:ss\".",
         &RunLog},
        {"reset-data", "", "Esvazia o log de importações (as datas ficam).", &RunResetData},
        {"register", "[MÓDULO]", "Regista o componente POSConnectorKitra.", &RunRegister},
        {"unregister", "", "Anula o registo do componente.", &RunUnregister},
        {"series", "list|add CÓDIGO DESCRIÇÃO",
         "Lista as séries de documentos, ou cria uma série externa (uma por restaurante).",
         &RunSeries},
        {"report", "sales|cash [--from DATA] [--to DATA] | account CLIENTE",
         "Vendas (por dia, tipo e modalidade; stock dos mais vendidos), movimentos de caixa, ou "
         "a conta corrente de um cliente.",
         &RunReport, {"--from", "--to"}},
    };
    return commands;
}

}  // namespace kitra::backoffice::cli
