// kitra-host series: the back office's document series. Each restaurant imports into a series of
// its own, external and unsigned (its documents are numbered by the restaurant), so a back office
// with several restaurants needs one such series per restaurant.
#include <ostream>

#include <fmt/format.h>

#include "backoffice/BackOffice.h"
#include "backoffice/cli/Command.h"
#include "backoffice/cli/JsonText.h"
#include "core/Error.h"

namespace kitra::backoffice::cli {
namespace {

constexpr const char* kUsage = "Uso: kitra-host series list [--json] | series add CÓDIGO DESCRIÇÃO";

const char* KindName(host::SeriesKind kind) {
    switch (kind) {
        case host::SeriesKind::Signed: return "assinada";
        case host::SeriesKind::ExternalUnsigned: return "externa";
        case host::SeriesKind::Manual: return "manual";
    }
    return "?";
}

}  // namespace

int RunSeries(CommandContext& context) {
    if (context.arguments.empty()) throw UsageError(kUsage);
    const std::string& action = context.arguments.front();
    BackOffice office(context.dataFolder);
    const bool json = action == "list" && context.TakeFlag("--json");
    if (action == "list" && context.arguments.size() == 1) {
        std::string list;
        for (const host::DocumentSeries& series : office.documentSeries.List()) {
            if (json) {
                list += fmt::format("{}{{\"code\":{},\"kind\":{},\"active\":{},\"description\":{}}}",
                                    list.empty() ? "" : ",", Json(series.SeriesID),
                                    Json(KindName(series.Kind)), series.Active, Json(series.Description));
            } else {
                context.out << fmt::format("{}\t{}\t{}\t{}\n", series.SeriesID, KindName(series.Kind),
                                           series.Active ? "activa" : "inactiva", series.Description);
            }
        }
        if (json) context.out << "[" << list << "]\n";
        return kExitOk;
    }
    if (action != "add" || context.arguments.size() != 3) throw UsageError(kUsage);
    const std::string& code = context.arguments[1];
    if (code.empty() || code.size() > 10 || code.find_first_of(" \t;'\"") != std::string::npos)
        throw UsageError("O código da série deve ter de 1 a 10 caracteres, sem espaços nem aspas.");
    const host::DocumentSeries series{code, context.arguments[2],
                                      host::SeriesKind::ExternalUnsigned, true};
    office.documentSeries.Save(series, code, true);
    context.out << "Série externa '" << code << "' criada.\n";
    return kExitOk;
}

}  // namespace kitra::backoffice::cli
