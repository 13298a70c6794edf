#pragma once
// The component registry: where in-process components record their class id, programmatic id
// and module path when they register, and where a host looks them up. It is one text file,
// one line per class: "{CLSID}<TAB>ProgID<TAB>module path". Its place, first that applies:
// $KITRA_COMPONENT_REGISTRY, $XDG_CONFIG_HOME/kitra/components.registry,
// $HOME/.config/kitra/components.registry. Without $KITRA_COMPONENT_REGISTRY a class the user's
// registry lacks is looked up in the machine's, /etc/kitra/components.registry, where the
// installed package registers the connector (with KITRA_COMPONENT_REGISTRY naming that file).
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
std::filesystem::path MachineComponentRegistryPath();

// All entries; an absent file is an empty registry. Throws Error on an unreadable file.
std::vector<ComponentEntry> ReadComponentRegistry();
#endif

// Adds the entry, replacing one with the same class id. The file is rewritten atomically.
void RegisterComponent(const ComponentEntry& entry);

// Removes exactly the entry with this class id (case-insensitive); false when there was none.
bool UnregisterComponent(std::string_view clsid);

// The entry whose class id or programmatic id is the given text (case-insensitive), in the
// registry in use and then, unless $KITRA_COMPONENT_REGISTRY chose one, in the machine's.
std::optional<ComponentEntry> FindComponent(std::string_view clsidOrProgId);

}  // namespace kitra
