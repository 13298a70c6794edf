// The back office's private files on Windows. There a folder made in the user's profile takes
// the profile's access list, which already keeps other users out, and modes do not exist: the
// folders are made plainly, files keep what they inherit, and there is nothing to warn about.
#include "backoffice/PrivateFiles.h"

#include <fmt/format.h>

#include "core/Error.h"

namespace kitra::backoffice {
namespace fs = std::filesystem;

OwnerOnlyFiles::OwnerOnlyFiles() : former_(0) {}

OwnerOnlyFiles::~OwnerOnlyFiles() = default;

void MakePrivateFolder(const fs::path& folder, const std::string& what) {
    std::error_code error;
    if (fs::is_directory(folder, error)) return;
    fs::create_directories(folder, error);
    if (error && !fs::is_directory(folder)) {
        throw Error(fmt::format("Não foi possível criar {} '{}': {}", what, folder.string(),
                                error.message()));
    }
}

void MakePrivateFile(const fs::path&) {}

std::vector<std::string> AccessWarnings(const fs::path&) { return {}; }

}  // namespace kitra::backoffice
