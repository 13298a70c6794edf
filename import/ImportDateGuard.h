#pragma once
// The guard every importer puts an import date through before pasting it into its statement.
// The date goes into the statement as text, inside STR_TO_DATE('...','%Y-%m-%d %H:%i:%s'), and
// MySQL reads more than the strict "yyyy-mm-dd hh:mm:ss" there ("2024-1-5 10:00:00" too), so the
// guard refuses only what could change the statement: any character but digits, "-", ":" and
// blanks. Refusing a date MySQL reads would import nothing while the run still moves the dates
// past the data.
#include <string>
#include <string_view>

namespace kitra {

// Whether the date text is made only of digits, "-", ":" and blanks.
bool IsSafeImportDate(std::string_view date);

// The date as it is when it is safe; otherwise fails with an Error that names the date and which
// of the restaurant's import dates it is ("entidades" or "transacções").
const std::string& GuardedImportDate(const std::string& date, std::string_view which);

}  // namespace kitra
