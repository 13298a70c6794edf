#include "backoffice/cli/Command.h"

#include <algorithm>

namespace kitra::backoffice::cli {

bool CommandContext::TakeFlag(const std::string& flag) {
    const auto found = std::find(arguments.begin(), arguments.end(), flag);
    if (found == arguments.end()) return false;
    arguments.erase(found);
    return true;
}

std::optional<std::string> CommandContext::TakeOption(const std::string& name) {
    for (auto it = arguments.begin(); it != arguments.end(); ++it) {
        if (*it == name) {
            if (it + 1 == arguments.end()) throw UsageError("Falta o valor depois de '" + name + "'.");
            std::string value = *(it + 1);
            arguments.erase(it, it + 2);
            return value;
        }
        if (it->starts_with(name + "=")) {
            std::string value = it->substr(name.size() + 1);
            arguments.erase(it);
            return value;
        }
    }
    return std::nullopt;
}

void ExpectArguments(const CommandContext& context, std::size_t count, const std::string& usage) {
    for (const std::string& argument : context.arguments) {
        if (argument.size() > 1 && argument[0] == '-')
            throw UsageError("Opção desconhecida: '" + argument + "'. Uso: kitra-host " + usage);
    }
    if (context.arguments.size() != count) throw UsageError("Uso: kitra-host " + usage);
}

const std::vector<Command>& AllCommands() {
    static const std::vector<Command> commands = {
        {"init", "", "Cria uma retaguarda nova na pasta de dados, com uma empresa de exemplo.",
         &RunInit},
        {"info", "", "Mostra a identificação do conector.", &RunInfo},
        {"settings",
         "load [--dates-from-file] FICHEIRO|set RESTAURANTE ATRIBUTO VALOR|show [--reveal]|"
         "delete --yes|history|restore N",
         "Guarda (do ficheiro XML; as datas de importação e as palavras-passe mascaradas de cada "
         "restaurante já guardado ficam as guardadas, as datas só vêm do ficheiro com "
         "--dates-from-file), muda um atributo de um restaurante, mostra (palavras-passe "
         "escondidas), apaga, lista as versões guardadas ou repõe uma versão das configurações "
         "do conector.",
         &RunSettings},
        {"validate", "", "Valida as configurações guardadas e mostra cada regra que falha.",
         &RunValidate},
        {"config", "", "Abre a janela de configuração do conector (precisa de um ecrã).",
         &RunConfig},
        {"check", "[--json]",
         "Verifica cada restaurante sem importar: ligação, relógio do servidor, registos "
         "pendentes, configurações.",
         &RunCheck},
        {"reconcile", "[RESTAURANTE] [--from DATA] [--to DATA] [--json] [--all]",
         "Compara os documentos, movimentos de caixa e recibos de cada restaurante com a "
         "retaguarda (DATA: aaaa-mm-dd ou \"aaaa-mm-dd hh:mm:ss\"), mostra o que falta ou difere "
         "e o 'state set' que o volta a importar.",
         &RunReconcile},
        {"document", "void|remove|history TIPO SÉRIE/NÚMERO",
         "Anula ou remove da retaguarda um documento (venda, venda a crédito, devolução, guia, "
         "autoconsumo) que só ela tem, ou mostra o seu histórico; recusa o que outro documento "
         "refere (uma venda a crédito que um recibo liquida). A versão anterior fica no histórico.",
         &RunDocument},
        {"cash-movement", "void|remove|history TIPO SÉRIE/NÚMERO",
         "O mesmo para um movimento de caixa (entrada, saída, adiantamento).", &RunCashMovement},
        {"receipt", "void|remove|history TIPO SÉRIE/NÚMERO",
         "O mesmo para um recibo; o que ele liquidou volta a ficar em aberto.", &RunReceipt},
        {"execute", "[--quiet|--verbose]",
         "Importa os restaurantes configurados, cada um desde um segundo antes do início da "
         "sua importação anterior; recusa configurações que o conector rejeita ou que nomeiam "
         "registos que a retaguarda não tem. --quiet mostra só os resumos, --verbose também "
         "cada registo importado (códigos de saída abaixo).",
         &RunExecute},
        {"state", "[set RESTAURANTE [--entities DATA] [--transactions DATA]]",
         "Mostra as datas da última importação de cada restaurante, o início da sua importação "
         "anterior e de onde parte a próxima, ou muda-as (DATA: \"aaaa-mm-dd hh:mm:ss\", ou "
         "aaaa-mm-dd para as 00:00:00).",
         &RunState},
        {"log", "list|show|delete ...",
         "Lista os registos de log com os erros e avisos de cada um; mostra ou apaga um: "
         "RESTAURANTE \"aaaa-mm-dd hh:mm:ss\"; 'show latest' e 'show RESTAURANTE' mostram o "
         "mais recente.",
         &RunLog},
        {"trace", "", "Abre a janela do log de importações (precisa de um ecrã).", &RunTrace},
        {"reset-data", "", "Esvazia o log de importações (as datas ficam).", &RunResetData},
        {"register", "[MÓDULO]", "Regista o componente POSConnectorKitra.", &RunRegister},
        {"unregister", "", "Anula o registo do componente.", &RunUnregister},
        {"series", "list [--json]|add CÓDIGO DESCRIÇÃO",
         "Lista as séries de documentos, ou cria uma série externa (uma por restaurante).",
         &RunSeries},
        // The back office's own records that the settings name.
        {"document-type", "list|add|set|remove ...",
         "Tipos de documento e a sua natureza (venda, venda-a-crédito, devolução, transporte, "
         "entrada-de-caixa, saída-de-caixa, recibo, adiantamento, autoconsumo): list [--json]; "
         "add CÓDIGO DESCRIÇÃO NATUREZA; set CÓDIGO [--description TEXTO] [--kind NATUREZA]; "
         "remove CÓDIGO.",
         &RunDocumentType},
        {"tender", "list|add|set|remove ...",
         "Modalidades de pagamento e o seu tipo (dinheiro, cheque, transferência, cartão, vale, "
         "conta-corrente): list [--json]; add CÓDIGO DESCRIÇÃO TIPO; set CÓDIGO [--description "
         "TEXTO] [--type TIPO]; remove CÓDIGO.",
         &RunTender},
        {"taxable-group", "list|add|set|remove ...",
         "Taxas de IVA e a taxa de cada região fiscal (1 Continente, 2 Açores, 3 Madeira): list "
         "[--json]; add CÓDIGO DESCRIÇÃO --rate REGIÃO=TAXA...; set CÓDIGO [--description TEXTO] "
         "[--rate REGIÃO=TAXA]...; remove CÓDIGO.",
         &RunTaxableGroup},
        {"warehouse", "list|add|set|remove ...",
         "Armazéns: list [--json]; add CÓDIGO DESCRIÇÃO; set CÓDIGO --description TEXTO; remove "
         "CÓDIGO.",
         &RunWarehouse},
        {"workstation", "list|add|set|remove ...",
         "Postos e o armazém dos seus documentos: list [--json]; add CÓDIGO DESCRIÇÃO "
         "[--warehouse ARMAZÉM]; set CÓDIGO [--description TEXTO] [--warehouse ARMAZÉM]; remove "
         "CÓDIGO.",
         &RunWorkstation},
        {"supplier", "list|add|set|remove ...",
         "Fornecedores: list [--json]; add CÓDIGO NOME [--tax-number NIF]; set CÓDIGO [--name "
         "NOME] [--tax-number NIF]; remove CÓDIGO.",
         &RunSupplier},
        {"company", "show [--json]|set ...",
         "A empresa: set [--name NOME] [--tax-number NIF] [--currency MOEDA] [--tax-region "
         "REGIÃO].",
         &RunCompany},
        {"report", "sales|cash [--from DATA] [--to DATA] | account CLIENTE",
         "Vendas (por dia, tipo e modalidade; stock dos mais vendidos), movimentos de caixa, ou "
         "a conta corrente de um cliente (DATA: como em 'state set'; --to aaaa-mm-dd inclui o "
         "dia todo; sem datas, todo o período).",
         &RunReport},
    };
    return commands;
}

}  // namespace kitra::backoffice::cli
