#include "backoffice/ConnectorSettingsStore.h"

namespace kitra::backoffice {
namespace {

constexpr const char* kNow = "strftime('%Y-%m-%d %H:%M:%S','now','localtime')";

SettingsVersion VersionFrom(const Statement& row) {
    SettingsVersion version;
    version.id = static_cast<long>(row.Column(0).ToDouble());
    version.xml = row.ColumnText(1);
    version.storedDate = row.Column(2).ToDate();
    version.storedBy = row.ColumnText(3);
    version.replacedDate = row.Column(4).ToDate();
    version.replacedBy = row.ColumnText(5);
    return version;
}

constexpr const char* kVersionColumns =
    "SELECT HistoryID, SettingXml, StoredDate, StoredBy, ReplacedDate, ReplacedBy "
    "FROM connector_settings_history WHERE Key1=? AND Key2=?";

}  // namespace

void ConnectorSettingsStore::KeepCurrent(const std::string& key1, const std::string& key2) {
    Statement keep(database_,
                   std::string("INSERT INTO connector_settings_history (Key1, Key2, SettingXml, "
                               "StoredDate, StoredBy, ReplacedDate, ReplacedBy) SELECT Key1, "
                               "Key2, SettingXml, UpdateDate, UpdatedBy, ") +
                       kNow + ", ? FROM connector_settings WHERE Key1=? AND Key2=?");
    keep.Bind({Variant(origin_), Variant(key1), Variant(key2)}).Run();
    Statement prune(database_,
                    "DELETE FROM connector_settings_history WHERE Key1=? AND Key2=? AND "
                    "HistoryID NOT IN (SELECT HistoryID FROM connector_settings_history "
                    "WHERE Key1=? AND Key2=? ORDER BY HistoryID DESC LIMIT ?)");
    prune.Bind({Variant(key1), Variant(key2), Variant(key1), Variant(key2),
                Variant(static_cast<std::int32_t>(kHistoryVersionsKept))})
        .Run();
}

void ConnectorSettingsStore::Write(const std::string& key1, const std::string& key2,
                                   const std::string& xml, bool exportToBranch) {
    Transaction transaction(database_);
    KeepCurrent(key1, key2);
    Statement save(database_,
                   std::string("INSERT INTO connector_settings (Key1, Key2, SettingXml, "
                               "ExportToBranch, UpdateDate, UpdatedBy) VALUES (?,?,?,?,") +
                       kNow +
                       ",?) ON CONFLICT (Key1, Key2) DO UPDATE SET "
                       "SettingXml=excluded.SettingXml, ExportToBranch=excluded.ExportToBranch, "
                       "UpdateDate=excluded.UpdateDate, UpdatedBy=excluded.UpdatedBy");
    save.Bind({Variant(key1), Variant(key2), Variant(xml), Variant(exportToBranch),
               Variant(origin_)})
        .Run();
    transaction.Commit();
}

void ConnectorSettingsStore::Save(const host::IGenericSetting& setting) {
    Write(setting.Key1(), setting.Key2(), setting.ToXML(), setting.ExportToBranch());
}

void ConnectorSettingsStore::SaveText(const std::string& key1, const std::string& key2,
                                      const std::string& xml) {
    Write(key1, key2, xml, false);
}

void ConnectorSettingsStore::Delete(const host::IGenericSetting& setting) {
    Transaction transaction(database_);
    KeepCurrent(setting.Key1(), setting.Key2());
    Statement remove(database_, "DELETE FROM connector_settings WHERE Key1=? AND Key2=?");
    remove.Bind({Variant(setting.Key1()), Variant(setting.Key2())}).Run();
    transaction.Commit();
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

std::vector<SettingsVersion> ConnectorSettingsStore::History(const std::string& key1,
                                                             const std::string& key2) const {
    Statement list(database_, std::string(kVersionColumns) + " ORDER BY HistoryID DESC");
    list.Bind({Variant(key1), Variant(key2)});
    std::vector<SettingsVersion> versions;
    while (list.Step()) versions.push_back(VersionFrom(list));
    return versions;
}

std::optional<SettingsVersion> ConnectorSettingsStore::Version(const std::string& key1,
                                                               const std::string& key2,
                                                               long id) const {
    Statement one(database_, std::string(kVersionColumns) + " AND HistoryID=?");
    one.Bind({Variant(key1), Variant(key2), Variant(static_cast<double>(id))});
    if (!one.Step()) return std::nullopt;
    return VersionFrom(one);
}

}  // namespace kitra::backoffice
