#pragma once
// The back office's connector-settings store: table `connector_settings`, one row per pair of
// keys. Before a text is replaced or deleted it is kept in `connector_settings_history`, with
// who stored it and who replaced it, so a settings text is never lost to a mistaken load or to
// a run that could not read it; the newest kHistoryVersionsKept versions per pair of keys stay.
#include <optional>
#include <string>
#include <vector>

#include "backoffice/Database.h"
#include "core/DateTime.h"
#include "host/IConnectorSettingsStore.h"

namespace kitra::backoffice {

inline constexpr int kHistoryVersionsKept = 50;

// One kept version of a settings text.
struct SettingsVersion {
    long id = 0;
    std::string xml;
    DateTime storedDate;
    std::string storedBy;
    DateTime replacedDate;
    std::string replacedBy;
};

class ConnectorSettingsStore final : public host::IConnectorSettingsStore {
public:
    explicit ConnectorSettingsStore(Database& database) : database_(database) {}
    void Save(const host::IGenericSetting& setting) override;
    void Delete(const host::IGenericSetting& setting) override;
    bool Load(host::IGenericSetting& setting) const override;
    // The text filed under the two keys, as it is filed; nothing when nothing is filed there.
    std::optional<std::string> StoredText(const std::string& key1, const std::string& key2) const;

    // Files `xml` under the keys as it is, keeping the text it replaces.
    void SaveText(const std::string& key1, const std::string& key2, const std::string& xml);
    // The kept versions under the keys, newest first.
    std::vector<SettingsVersion> History(const std::string& key1, const std::string& key2) const;
    // One kept version under the keys; nothing when there is no such number.
    std::optional<SettingsVersion> Version(const std::string& key1, const std::string& key2,
                                           long id) const;

    // Who saves and deletes from now on, as the history shows it: a command ("settings load")
    // or a run ("execute").
    void SetOrigin(std::string origin) { origin_ = std::move(origin); }

private:
    // Copies what is filed under the keys (if anything) into the history, inside the caller's
    // transaction, and drops the versions beyond the newest kHistoryVersionsKept.
    void KeepCurrent(const std::string& key1, const std::string& key2);
    void Write(const std::string& key1, const std::string& key2, const std::string& xml,
               bool exportToBranch);

    Database& database_;
    std::string origin_ = "kitra-host";
};

}  // namespace kitra::backoffice
