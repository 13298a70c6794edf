#include "backoffice/RestaurantImports.h"

namespace kitra::backoffice {

std::optional<RestaurantImport> RestaurantImports::Last(const std::string& restaurant) const {
    Statement last(database_,
                   "SELECT RestaurantName, StartedAt, EntitiesLeft, TransactionsLeft "
                   "FROM restaurant_imports WHERE RestaurantKey=?");
    last.Bind({Variant(RestaurantNameKey(restaurant))});
    if (!last.Step()) return std::nullopt;
    RestaurantImport import;
    import.name = last.ColumnText(0);
    import.startedAt = last.Column(1).ToDate();
    import.entitiesLeft = last.ColumnText(2);
    import.transactionsLeft = last.ColumnText(3);
    return import;
}

void RestaurantImports::Record(const RestaurantImport& import) {
    Transaction write(database_);
    Statement keep(database_,
                   "INSERT INTO restaurant_imports (RestaurantKey, RestaurantName, StartedAt, "
                   "EntitiesLeft, TransactionsLeft) VALUES (?,?,?,?,?) ON CONFLICT (RestaurantKey) "
                   "DO UPDATE SET RestaurantName=excluded.RestaurantName, "
                   "StartedAt=excluded.StartedAt, EntitiesLeft=excluded.EntitiesLeft, "
                   "TransactionsLeft=excluded.TransactionsLeft");
    keep.Bind({Variant(RestaurantNameKey(import.name)), Variant(import.name),
               Variant(import.startedAt), Variant(import.entitiesLeft),
               Variant(import.transactionsLeft)})
        .Run();
    write.Commit();
}

std::string SecondBefore(const DateTime& moment) {
    return FormatIsoDateTime(DateTime::FromSerial(moment.ToSerial() - 1.0 / 86400));
}

NextImportDates NextImportFrom(const RestaurantSettings& restaurant,
                               const std::optional<RestaurantImport>& last) {
    NextImportDates next{restaurant.importDateEntities, restaurant.importDateTransactions};
    if (!last) return next;
    const std::string from = SecondBefore(last->startedAt);
    // Both texts are "yyyy-mm-dd hh:mm:ss", which compare as the moments they are.
    const auto back = [&](std::string& date, const std::string& left) {
        if (date == left && IsIsoDateTime(date) && from < date) date = from;
    };
    back(next.entities, last->entitiesLeft);
    back(next.transactions, last->transactionsLeft);
    return next;
}

}  // namespace kitra::backoffice
