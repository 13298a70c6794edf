#include "backoffice/cli/Command.h"

namespace kitra::backoffice::cli {

const std::vector<Command>& AllCommands() {
    static const std::vector<Command> commands = {
        {"init", "", "Cria uma retaguarda nova na pasta de dados, com uma empresa de exemplo.",
         &RunInit},
        {"info", "", "Mostra a identificação do conector.", &RunInfo},
        {"settings", "load FICHEIRO|show|delete",
         "Guarda (do ficheiro XML), mostra ou apaga as configurações do conector.", &RunSettings},
        {"validate", "", "Valida as configurações guardadas e mostra cada regra que falha.",
         &RunValidate},
        {"config", "", "Abre a janela de configuração do conector (precisa de um ecrã).",
         &RunConfig},
        {"execute", "", "Importa os restaurantes configurados.", &RunExecute},
        {"log", "list|show|delete ...",
         "Lista os registos de log com os erros e avisos de cada um; mostra ou apaga um: "
         "RESTAURANTE \"aaaa-mm-dd hh:mm:ss\"; 'show latest' e 'show RESTAURANTE' mostram o "
         "mais recente.",
         &RunLog},
        {"trace", "", "Abre a janela do log de importações (precisa de um ecrã).", &RunTrace},
        {"reset-data", "", "Esvazia o log de importações (as datas ficam).", &RunResetData},
        {"register", "[MÓDULO]", "Regista o componente POSConnectorKitra.", &RunRegister},
        {"unregister", "", "Anula o registo do componente.", &RunUnregister},
    };
    return commands;
}

}  // namespace kitra::backoffice::cli
