#pragma once
// One row of the import log table Kitra2Log: which restaurant, when, and the whole text log of
// that import.
#include <string>

#include "core/DateTime.h"

namespace kitra {

struct KitraLog {
    std::string RestaurantID;
    std::string Contents;
    DateTime ImportDate;
    // True for a record that is not yet in the table: Save inserts it, otherwise updates.
    bool IsNew = true;

    KitraLog Copy() const { return *this; }
};

}  // namespace kitra
