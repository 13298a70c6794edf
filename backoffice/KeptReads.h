#pragma once
// Look-ups a run asks again and again of tables it does not write while it asks (a document
// type's kind, whether a series is active, whether an item keeps stock, the company's tax
// context), kept between uses for as long as they are what the tables hold: within the write
// transaction they were read in, since no other program writes before it ends, and until this
// connection changes a row of one of the tables (Database::ReadStamp). Outside a write
// transaction, or after such an event, every look-up reads the tables again.
#include <cstdint>
#include <functional>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "backoffice/Database.h"

namespace kitra::backoffice {

template <class Key, class Value, class Hash = std::hash<Key>>
class KeptReads {
public:
    KeptReads(const Database& database, const std::vector<std::string_view>& tables)
        : database_(database), tables_(database.WatchTables(tables)) {}

    // The value kept for `key`, or `read()`'s (which reads the tables), kept when it may be.
    // A read that throws keeps nothing.
    template <class Read>
    Value Get(const Key& key, Read&& read) const {
        const std::uint64_t stamp = database_.ReadStamp(tables_);
        if (stamp != stamp_) {
            values_.clear();
            stamp_ = stamp;
        }
        if (stamp != 0) {
            if (auto kept = values_.find(key); kept != values_.end()) return kept->second;
        }
        Value value = std::forward<Read>(read)();
        // Kept only when nothing that may change it happened during the read itself (the
        // connection's next use commits a group that is due, for one).
        if (stamp != 0 && database_.ReadStamp(tables_) == stamp) values_.emplace(key, value);
        return value;
    }

private:
    const Database& database_;
    Database::WatchedTables tables_;
    mutable std::uint64_t stamp_ = 0;
    mutable std::unordered_map<Key, Value, Hash> values_;
};

}  // namespace kitra::backoffice
