#pragma once
// How a master-data record maps onto its table, and the one implementation of the master-data
// contract over such a mapping: exists, get, save (insert or overwrite, one transaction each)
// and list. Column names come from the mapping, never from callers; values are always bound.
#include <functional>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include <fmt/format.h>

#include "backoffice/Database.h"
#include "backoffice/KeptReads.h"
#include "core/DateTime.h"
#include "core/Numbers.h"
#include "core/Variant.h"

namespace kitra::backoffice {

template <class Record>
struct ColumnMapping {
    std::string column;
    std::function<Variant(const Record&)> read;
    std::function<void(Record&, const Variant&)> write;
};

// A column bound to a record member; the member's type decides the conversions.
template <class Record, class Member>
ColumnMapping<Record> MapColumn(std::string column, Member Record::*member) {
    ColumnMapping<Record> mapping;
    mapping.column = std::move(column);
    mapping.read = [member](const Record& record) -> Variant {
        const Member& value = record.*member;
        if constexpr (std::is_enum_v<Member>) {
            return Variant(static_cast<std::int32_t>(value));
        } else {
            return Variant(value);
        }
    };
    mapping.write = [member](Record& record, const Variant& value) {
        Member& target = record.*member;
        if constexpr (std::is_same_v<Member, std::string>) {
            target = value.IsNull() || value.IsEmpty() ? std::string() : value.ToText();
        } else if constexpr (std::is_same_v<Member, DateTime>) {
            target = value.IsNull() || value.IsEmpty() ? DateTime{} : value.ToDate();
        } else if constexpr (std::is_same_v<Member, bool>) {
            target = !value.IsNull() && value.ToBool();
        } else if constexpr (std::is_same_v<Member, double>) {
            target = value.IsNull() ? 0.0 : value.ToDouble();
        } else if constexpr (std::is_same_v<Member, std::int16_t>) {
            target = value.IsNull() ? std::int16_t{0} : value.ToInt16();
        } else if constexpr (std::is_same_v<Member, std::int32_t> || std::is_same_v<Member, int>) {
            target = value.IsNull() ? 0 : value.ToInt32();
        } else if constexpr (std::is_enum_v<Member>) {
            target = static_cast<Member>(value.IsNull() ? 0 : value.ToInt32());
        } else {
            static_assert(sizeof(Member) == 0, "no column conversion for this member type");
        }
    };
    return mapping;
}

// The value a key is filed under: numeric keys are whole 32-bit numbers in the tables, so a
// fractional key rounds half to even and a key out of range fails with "Overflow".
inline Variant KeyValue(double key) { return Variant(RoundToInt32(key)); }
inline Variant KeyValue(std::int16_t key) { return Variant(key); }
inline Variant KeyValue(std::int32_t key) { return Variant(key); }
inline Variant KeyValue(const std::string& key) { return Variant(key); }

inline std::string KeyText(double key) { return FormatHostNumber(key); }
inline std::string KeyText(std::int16_t key) { return std::to_string(key); }
inline std::string KeyText(std::int32_t key) { return std::to_string(key); }
inline std::string KeyText(const std::string& key) { return key; }

template <class Record>
struct TableMapping {
    std::string table;
    // How the user calls one record, with its article: "o vendedor", "a família".
    std::string recordName;
    ColumnMapping<Record> key;
    std::vector<ColumnMapping<Record>> columns;  // every other column
    // The tables of the record's rows in other tables (LoadChildren reads them).
    std::vector<std::string> childTables = {};
};

// The tables a mapping reads a record from.
template <class Record>
std::vector<std::string_view> TablesOf(const TableMapping<Record>& mapping) {
    std::vector<std::string_view> tables{mapping.table};
    tables.insert(tables.end(), mapping.childTables.begin(), mapping.childTables.end());
    return tables;
}

// The master-data contract `Interface` (an IMasterData<Record, Key>) over one table.
// Services whose records have rows in other tables override the two child hooks.
template <class Interface>
class MasterDataTable : public Interface {
public:
    using Record = typename Interface::RecordType;
    using Key = typename Interface::KeyType;

    MasterDataTable(Database& database, TableMapping<Record> mapping)
        : database_(database),
          mapping_(std::move(mapping)),
          existing_(database, TablesOf(mapping_)),
          records_(database, TablesOf(mapping_)) {
        const std::string table = QuoteIdentifier(mapping_.table);
        const std::string key = QuoteIdentifier(mapping_.key.column);
        std::string columns = key, placeholders = "?", assignments;
        for (const auto& column : mapping_.columns) {
            const std::string name = QuoteIdentifier(column.column);
            columns += "," + name;
            placeholders += ",?";
            assignments += (assignments.empty() ? "" : ",") + name + "=?";
        }
        existsSql_ = fmt::format("SELECT 1 FROM {} WHERE {}=?", table, key);
        selectSql_ = fmt::format("SELECT {} FROM {} WHERE {}=?", columns, table, key);
        listSql_ = fmt::format("SELECT {} FROM {} ORDER BY {}", columns, table, key);
        insertSql_ = fmt::format("INSERT INTO {} ({}) VALUES ({})", table, columns, placeholders);
        updateSql_ = fmt::format("UPDATE {} SET {} WHERE {}=?", table, assignments, key);
        deleteSql_ = fmt::format("DELETE FROM {} WHERE {}=?", table, key);
    }

    // A run asks for the same few records again and again (each document its type, customer,
    // salesman, tenders): they are kept while they hold (KeptReads).
    bool Exists(const Key& key) const override {
        return existing_.Get(key, [&] {
            Statement exists(database_, existsSql_);
            exists.Bind({KeyValue(key)});
            return exists.Step();
        });
    }

    std::optional<Record> Get(const Key& key) const override {
        return records_.Get(key, [&]() -> std::optional<Record> {
            Statement select(database_, selectSql_);
            select.Bind({KeyValue(key)});
            if (!select.Step()) return std::nullopt;
            Record record = ReadRow(select);
            LoadChildren(record, KeyValue(key));
            return record;
        });
    }

    void Save(const Record& record, const Key& key, bool isNew) override {
        const Variant keyValue = KeyValue(key);
        Transaction transaction(database_, TransactionKind::Record);
        if (isNew) {
            if (Exists(key)) {
                throw Error(fmt::format("Já existe {} com o código {}.", mapping_.recordName,
                                        KeyText(key)));
            }
            std::vector<Variant> values{keyValue};
            for (const auto& column : mapping_.columns) values.push_back(column.read(record));
            Statement insert(database_, insertSql_);
            insert.Bind(values).Run();
        } else {
            if (!Exists(key)) {
                throw Error(fmt::format("Não existe {} com o código {}.", mapping_.recordName,
                                        KeyText(key)));
            }
            std::vector<Variant> values;
            for (const auto& column : mapping_.columns) values.push_back(column.read(record));
            values.push_back(keyValue);
            Statement update(database_, updateSql_);
            update.Bind(values).Run();
        }
        SaveChildren(record, keyValue);
        transaction.Commit();
    }

    std::vector<Record> List() const override {
        std::vector<Record> records;
        Statement list(database_, listSql_);
        while (list.Step()) records.push_back(ReadRow(list));
        for (auto& record : records) LoadChildren(record, mapping_.key.read(record));
        return records;
    }

    // Deletes the record and its rows in other tables (their foreign keys cascade); fails when
    // there is no such record. Whether anything still refers to it is the caller's question:
    // references between master records are plain columns.
    void Remove(const Key& key) {
        Transaction transaction(database_, TransactionKind::Record);
        if (!Exists(key)) {
            throw Error(fmt::format("Não existe {} com o código {}.", mapping_.recordName,
                                    KeyText(key)));
        }
        Statement remove(database_, deleteSql_);
        remove.Bind({KeyValue(key)}).Run();
        transaction.Commit();
    }

    const std::string& RecordName() const { return mapping_.recordName; }

protected:
    // Inside the save's transaction, after the record's own row is written.
    virtual void SaveChildren(const Record&, const Variant& /*key*/) {}
    virtual void LoadChildren(Record&, const Variant& /*key*/) const {}

    Database& database_;

private:
    Record ReadRow(const Statement& row) const {
        Record record;
        mapping_.key.write(record, row.Column(0));
        for (std::size_t i = 0; i < mapping_.columns.size(); ++i)
            mapping_.columns[i].write(record, row.Column(static_cast<int>(i + 1)));
        return record;
    }

    TableMapping<Record> mapping_;  // every table has at least one column besides its key
    KeptReads<Key, bool> existing_;
    KeptReads<Key, std::optional<Record>> records_;
    std::string existsSql_, selectSql_, listSql_, insertSql_, updateSql_, deleteSql_;
};

}  // namespace kitra::backoffice
