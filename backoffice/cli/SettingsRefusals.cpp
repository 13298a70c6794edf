#include "backoffice/cli/SettingsRefusals.h"

#include "backoffice/SettingsDocument.h"
#include "backoffice/SettingsRecords.h"
#include "core/Error.h"

namespace kitra::backoffice::cli {

std::vector<std::string> ImportRefusals(ConnectorSession& session, const std::string& storedText) {
    std::vector<std::string> refusals;
    for (const std::string& rule : session.ConnectorRefusals())
        refusals.push_back("O conector recusa as configurações: " + rule);
    try {
        const std::vector<std::string> missing = MissingRecordProblems(
            session.Office().GetDatabase(), SettingsDocument::Parse(storedText).Restaurants());
        refusals.insert(refusals.end(), missing.begin(), missing.end());
    } catch (const Error& error) {
        refusals.push_back("As configurações guardadas não se deixam ler: " + error.Description());
    }
    return refusals;
}

}  // namespace kitra::backoffice::cli
