#include "backoffice/Application.h"

#include <map>

#include <fmt/format.h>

#include "backoffice/PrivateFiles.h"
#include "core/Paths.h"
#include "host/IDocumentSeriesService.h"

namespace kitra::backoffice {
namespace {

// The texts other components take from the back office by number. Those that end in a blank
// are the start of a sentence that the caller completes with the caption of a field.
const std::map<long, std::string>& Texts() {
    static const std::map<long, std::string> texts = {
        // A choice is missing (or must be another one) in the field whose caption follows.
        {4130001, "Seleccione um valor em "},
        // A grid, named by the caption that follows, has a row with an empty cell.
        {4130002, "Existem linhas incompletas em "},
        // A list, named by the caption that follows, needs at least one entry.
        {4130004, "Tem que definir pelo menos um registo em "},
        // A record's name is empty.
        {4130005, "Preencha o nome."},
        // No supplier is chosen.
        {4130008, "Indique o fornecedor."},
        // No document series is chosen.
        {4130009, "Seleccione a série dos documentos."},
        // Title of the boxes that report what is missing in a form.
        {4130010, "Atenção"},
        // Title of the import log list.
        {4130011, "Log de Importações"},
        // Title of one import's log; the restaurant and the moment follow.
        {4130012, "Log da Importação - "},
        // Caption of the button that closes one import's log.
        {4130013, "OK"},
        // Caption of the connector's settings dialog.
        {4130014, "Configuração do Integrador KitranaII"},
        // Caption of the restaurant editor.
        {4130015, "Restaurante"},
    };
    return texts;
}

}  // namespace

bool Application::ExternalUnsignedSeriesActive() const {
    Statement active(database_, "SELECT 1 FROM document_series WHERE Kind=? AND Active<>0");
    active.Bind({Variant(static_cast<std::int32_t>(host::SeriesKind::ExternalUnsigned))});
    return active.Step();
}

std::string Application::Title() const { return "Kitrana Retaguarda"; }

std::string Application::LogFolder() const {
    const std::filesystem::path folder = dataFolder_ / "logs";
    std::error_code error;
    // A missing folder is made again; a file in its place is the user's and stays.
    if (std::filesystem::exists(folder, error) && !std::filesystem::is_directory(folder, error)) {
        throw Error(fmt::format("A pasta de registos '{}' é um ficheiro, não uma pasta: mude-lhe "
                                "o nome ou apague-o.",
                                Utf8FromPath(folder)));
    }
    MakePrivateFolder(folder, "a pasta de registos");
    return Utf8FromPath(folder);
}

std::string Application::Text(long id) const {
    const auto found = Texts().find(id);
    return found != Texts().end() ? found->second : std::string();
}

std::string Application::GeneralDateForm() const { return "dd-mm-yyyy hh:nn:ss"; }

char Application::DecimalSeparator() const { return ','; }

}  // namespace kitra::backoffice
