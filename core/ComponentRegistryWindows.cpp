// The component registry on Windows is the system's registry of classes: a class is the key
// HKEY_CLASSES_ROOT\CLSID\{class id} with its module under InprocServer32, and its programmatic
// id is a key of HKEY_CLASSES_ROOT that names the class id back. Registering writes exactly
// these keys and unregistering removes exactly them.
#include <windows.h>

#include "core/ComponentRegistry.h"
#include "core/Error.h"
#include "core/Text.h"

namespace kitra {
namespace {

const std::string kClasses = "CLSID\\";

void SetText(HKEY key, const char* name, const std::string& value, const std::string& where) {
    const LONG status = ::RegSetValueExA(key, name, 0, REG_SZ,
                                         reinterpret_cast<const BYTE*>(value.c_str()),
                                         static_cast<DWORD>(value.size() + 1));
    if (status != ERROR_SUCCESS) {
        throw Error("Não foi possível escrever o valor '" + std::string(name ? name : "") +
                    "' da chave HKEY_CLASSES_ROOT\\" + where);
    }
}

// Creates (or opens) HKEY_CLASSES_ROOT\<path> and gives it a default value.
void WriteKey(const std::string& path, const std::string& defaultValue,
              const char* name = nullptr, const std::string& value = {}) {
    HKEY key = nullptr;
    if (::RegCreateKeyExA(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                          KEY_WRITE, nullptr, &key, nullptr) != ERROR_SUCCESS) {
        throw Error("Não foi possível criar a chave HKEY_CLASSES_ROOT\\" + path);
    }
    try {
        SetText(key, nullptr, defaultValue, path);
        if (name != nullptr) SetText(key, name, value, path);
    } catch (...) {
        ::RegCloseKey(key);
        throw;
    }
    ::RegCloseKey(key);
}

// The default value (name null) or a named text value of HKEY_CLASSES_ROOT\<path>.
std::optional<std::string> ReadText(const std::string& path, const char* name = nullptr) {
    char value[2048];
    DWORD size = sizeof value;
    if (::RegGetValueA(HKEY_CLASSES_ROOT, path.c_str(), name, RRF_RT_REG_SZ, nullptr, value,
                       &size) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return std::string(value);
}

bool DeleteTree(const std::string& path) {
    const LONG status = ::RegDeleteTreeA(HKEY_CLASSES_ROOT, path.c_str());
    if (status == ERROR_FILE_NOT_FOUND) return false;
    if (status != ERROR_SUCCESS) {
        throw Error("Não foi possível apagar a chave HKEY_CLASSES_ROOT\\" + path);
    }
    return true;
}

std::optional<ComponentEntry> EntryOfClass(const std::string& clsid) {
    const auto module = ReadText(kClasses + clsid + "\\InprocServer32");
    if (!module) return std::nullopt;
    return ComponentEntry{clsid, ReadText(kClasses + clsid + "\\ProgID").value_or(""), *module};
}

}  // namespace

void RegisterComponent(const ComponentEntry& entry) {
    const std::string classKey = kClasses + entry.clsid;
    WriteKey(classKey, entry.progId);
    // Apartment: the host creates and calls the component on its one user-interface thread.
    WriteKey(classKey + "\\InprocServer32", entry.modulePath, "ThreadingModel", "Apartment");
    WriteKey(classKey + "\\ProgID", entry.progId);
    WriteKey(entry.progId, entry.progId);
    WriteKey(entry.progId + "\\CLSID", entry.clsid);
}

bool UnregisterComponent(std::string_view clsid) {
    const std::string classKey = kClasses + std::string(clsid);
    // The programmatic id goes only while it still names this class: another registration may
    // have taken it over since.
    if (const auto progId = ReadText(classKey + "\\ProgID"); progId && !progId->empty()) {
        const auto named = ReadText(*progId + "\\CLSID");
        if (named && EqualsNoCase(*named, clsid)) DeleteTree(*progId);
    }
    return DeleteTree(classKey);
}

std::optional<ComponentEntry> FindComponent(std::string_view clsidOrProgId) {
    const std::string name(clsidOrProgId);
    if (auto entry = EntryOfClass(name)) return entry;
    if (const auto clsid = ReadText(name + "\\CLSID")) return EntryOfClass(*clsid);
    return std::nullopt;
}

}  // namespace kitra
