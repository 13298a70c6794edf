#include "core/ComponentRegistry.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

#include <unistd.h>

#include "core/Error.h"
#include "core/Text.h"

namespace kitra {
namespace fs = std::filesystem;

#ifndef KITRA_MACHINE_COMPONENT_REGISTRY
#define KITRA_MACHINE_COMPONENT_REGISTRY "/etc/kitra/components.registry"
#endif

fs::path MachineComponentRegistryPath() { return KITRA_MACHINE_COMPONENT_REGISTRY; }

fs::path ComponentRegistryPath() {
    if (const char* explicitPath = std::getenv("KITRA_COMPONENT_REGISTRY");
        explicitPath != nullptr && *explicitPath != '\0') {
        return explicitPath;
    }
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config != nullptr && *config != '\0') {
        return fs::path(config) / "kitra" / "components.registry";
    }
    const char* home = std::getenv("HOME");
    return fs::path(home != nullptr ? home : ".") / ".config" / "kitra" / "components.registry";
}

namespace {
std::vector<ComponentEntry> ReadRegistryFile(const fs::path& path) {
    std::vector<ComponentEntry> entries;
    std::error_code ec;
    if (!fs::exists(path, ec)) return entries;
    std::ifstream in(path);
    if (!in) throw Error("Não foi possível ler o registo de componentes " + path.string());
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        const auto first = line.find('\t');
        const auto second = first == std::string::npos ? first : line.find('\t', first + 1);
        if (second == std::string::npos) continue;  // not an entry: comments, blank lines
        entries.push_back(
            {line.substr(0, first), line.substr(first + 1, second - first - 1), line.substr(second + 1)});
    }
    return entries;
}
}  // namespace

std::vector<ComponentEntry> ReadComponentRegistry() { return ReadRegistryFile(ComponentRegistryPath()); }

namespace {
// Folders made for the registry, and the registry itself, are readable by everyone: it holds
// no secret, and the machine's registry is read by every user that runs a host.
void MakeReadableFolders(const fs::path& folder) {
    if (folder.empty()) return;
    std::error_code ec;
    if (fs::exists(folder, ec)) return;
    MakeReadableFolders(folder.parent_path());
    fs::create_directory(folder, ec);
    if (!ec) {
        fs::permissions(folder,
                        fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                            fs::perms::others_read | fs::perms::others_exec,
                        ec);
    }
}

void WriteRegistry(const std::vector<ComponentEntry>& entries) {
    const fs::path path = ComponentRegistryPath();
    if (path.has_parent_path()) {
        MakeReadableFolders(path.parent_path());
        fs::create_directories(path.parent_path());
    }
    // Written beside and renamed over, so a reader never sees half a registry.
    const fs::path temp = path.string() + ".tmp" + std::to_string(::getpid());
    {
        std::ofstream out(temp, std::ios::trunc);
        if (!out) throw Error("Não foi possível escrever o registo de componentes " + path.string());
        for (const auto& e : entries) out << e.clsid << '\t' << e.progId << '\t' << e.modulePath << '\n';
        if (!out.flush()) throw Error("Não foi possível escrever o registo de componentes " + path.string());
    }
    std::error_code ignored;
    fs::permissions(temp,
                    fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read |
                        fs::perms::others_read,
                    ignored);
    fs::rename(temp, path);
}
}  // namespace

void RegisterComponent(const ComponentEntry& entry) {
    std::vector<ComponentEntry> entries = ReadComponentRegistry();
    std::erase_if(entries, [&](const ComponentEntry& e) { return EqualsNoCase(e.clsid, entry.clsid); });
    entries.push_back(entry);
    WriteRegistry(entries);
}

bool UnregisterComponent(std::string_view clsid) {
    std::vector<ComponentEntry> entries = ReadComponentRegistry();
    const auto removed =
        std::erase_if(entries, [&](const ComponentEntry& e) { return EqualsNoCase(e.clsid, clsid); });
    if (removed == 0) return false;
    WriteRegistry(entries);
    return true;
}

std::optional<ComponentEntry> FindComponent(std::string_view clsidOrProgId) {
    std::vector<fs::path> registries{ComponentRegistryPath()};
    // The user's own registry first; then the machine's, where an installed package registers.
    const char* chosen = std::getenv("KITRA_COMPONENT_REGISTRY");
    if ((chosen == nullptr || *chosen == '\0') && MachineComponentRegistryPath() != registries[0]) {
        registries.push_back(MachineComponentRegistryPath());
    }
    for (const fs::path& registry : registries) {
        for (const auto& e : ReadRegistryFile(registry)) {
            if (EqualsNoCase(e.clsid, clsidOrProgId) || EqualsNoCase(e.progId, clsidOrProgId)) return e;
        }
    }
    return std::nullopt;
}

}  // namespace kitra
