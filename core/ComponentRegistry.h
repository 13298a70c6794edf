#pragma once
// The component registry: where in-process components record their class id, programmatic id
// and module path when they register, and where a host looks them up. It is one text file,
// one line per class: "{CLSID}<TAB>ProgID<TAB>module path". Its place, first that applies:
// $KITRA_COMPONENT_REGISTRY, $XDG_CONFIG_HOME/kitra/components.registry,
// $HOME/.config/kitra/components.registry.
// On Windows the registry is the system's registry of classes (HKEY_CLASSES_ROOT): Register,
// Unregister and Find work there, and there is no registry file (no ComponentRegistryPath, no
// ReadComponentRegistry).
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kitra {

struct ComponentEntry {
    std::string clsid;  // "{XXXXXXXX-...}"
    std::string progId;
    std::string modulePath;
};

#if !defined(_WIN32)
std::filesystem::path ComponentRegistryPath();

// All entries; an absent file is an empty registry. Throws Error on an unreadable file.
std::vector<ComponentEntry> ReadComponentRegistry();
#endif

// Adds the entry, replacing one with the same class id. The file is rewritten atomically.
void RegisterComponent(const ComponentEntry& entry);

// Removes exactly the entry with this class id (case-insensitive); false when there was none.
bool UnregisterComponent(std::string_view clsid);

// The entry whose class id or programmatic id is the given text (case-insensitive).
std::optional<ComponentEntry> FindComponent(std::string_view clsidOrProgId);

}  // namespace kitra
