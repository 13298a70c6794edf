#pragma once
// The shape every host master-data service has: one record type filed under one key.
// Each service header (ISalesmanService.h, ...) names its record and its key type.
#include <optional>
#include <vector>

namespace kitra::host {

template <class Record, class Key>
class IMasterData {
public:
    using RecordType = Record;
    using KeyType = Key;

    virtual ~IMasterData() = default;
    virtual bool Exists(const Key& key) const = 0;
    // The record filed under the key, or nothing.
    virtual std::optional<Record> Get(const Key& key) const = 0;
    // Files the record under the key (the record's own key field is set to it), in one
    // transaction of its own. New: inserts, and fails with an Error when the key is taken.
    // Not new: overwrites every field, and fails with an Error when the key is not filed.
    virtual void Save(const Record& record, const Key& key, bool isNew) = 0;
    // Every record, in key order.
    virtual std::vector<Record> List() const = 0;
};

}  // namespace kitra::host
