#pragma once
// The host's connector-settings store: files a settings object's XML under the object's two
// keys (Key1, Key2), one text per pair of keys.
#include "host/IGenericSetting.h"

namespace kitra::host {

class IConnectorSettingsStore {
public:
    virtual ~IConnectorSettingsStore() = default;
    // Writes the object's XML under its keys, replacing what was there.
    virtual void Save(const IGenericSetting& setting) = 0;
    // Removes what is filed under the object's keys; nothing filed is not an error.
    virtual void Delete(const IGenericSetting& setting) = 0;
    // Fills the object from what is filed under its keys; false, and the object untouched,
    // when nothing is filed there.
    virtual bool Load(IGenericSetting& setting) const = 0;
};

}  // namespace kitra::host
