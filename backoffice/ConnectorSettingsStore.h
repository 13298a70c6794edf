#pragma once
// The back office's connector-settings store: table `connector_settings`, one row per pair of
// keys.
#include <optional>
#include <string>

#include "backoffice/Database.h"
#include "host/IConnectorSettingsStore.h"

namespace kitra::backoffice {

class ConnectorSettingsStore final : public host::IConnectorSettingsStore {
public:
    explicit ConnectorSettingsStore(Database& database) : database_(database) {}
    void Save(const host::IGenericSetting& setting) override;
    void Delete(const host::IGenericSetting& setting) override;
    bool Load(host::IGenericSetting& setting) const override;
    // The text filed under the two keys, as it is filed; nothing when nothing is filed there.
    std::optional<std::string> StoredText(const std::string& key1, const std::string& key2) const;

private:
    Database& database_;
};

}  // namespace kitra::backoffice
