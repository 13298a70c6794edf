#pragma once
// Why an import over the stored settings would not import what it should, decided before the
// connector runs: the connector's own rules (its settings dialog's validation: a document type
// not chosen, say, which would leave every counter sale out as a warning while the dates move
// past it), then each record a restaurant names that the back office does not have. 'execute'
// refuses to start over them; 'settings load', 'settings set', 'validate' and 'check' tell them.
#include <string>
#include <vector>

#include "backoffice/cli/ConnectorSession.h"

namespace kitra::backoffice::cli {

// One text per reason, each naming what it is about; empty when an import may start.
std::vector<std::string> ImportRefusals(ConnectorSession& session, const std::string& storedText);

}  // namespace kitra::backoffice::cli
