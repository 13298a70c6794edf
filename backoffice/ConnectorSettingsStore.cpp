#include "backoffice/ConnectorSettingsStore.h"

namespace kitra::backoffice {

void ConnectorSettingsStore::Save(const host::IGenericSetting& setting) {
    Statement save(database_,
                   "INSERT INTO connector_settings (Key1, Key2, SettingXml, ExportToBranch, "
                   "UpdateDate) VALUES (?,?,?,?,strftime('%Y-%m-%d %H:%M:%S','now','localtime')) "
                   "ON CONFLICT (Key1, Key2) DO UPDATE SET SettingXml=excluded.SettingXml, "
                   "ExportToBranch=excluded.ExportToBranch, UpdateDate=excluded.UpdateDate");
    save.Bind({Variant(setting.Key1()), Variant(setting.Key2()), Variant(setting.ToXML()),
               Variant(setting.ExportToBranch())})
        .Run();
}

void ConnectorSettingsStore::Delete(const host::IGenericSetting& setting) {
    Statement remove(database_, "DELETE FROM connector_settings WHERE Key1=? AND Key2=?");
    remove.Bind({Variant(setting.Key1()), Variant(setting.Key2())}).Run();
}

std::optional<std::string> ConnectorSettingsStore::StoredText(const std::string& key1,
                                                              const std::string& key2) const {
    Statement load(database_, "SELECT SettingXml FROM connector_settings WHERE Key1=? AND Key2=?");
    load.Bind({Variant(key1), Variant(key2)});
    if (!load.Step()) return std::nullopt;
    return load.ColumnText(0);
}

bool ConnectorSettingsStore::Load(host::IGenericSetting& setting) const {
    const auto xml = StoredText(setting.Key1(), setting.Key2());
    if (!xml) return false;
    setting.FromXML(*xml);
    return true;
}

}  // namespace kitra::backoffice
