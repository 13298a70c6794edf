#include "import/ImportDateGuard.h"

#include "core/Error.h"

namespace kitra {

bool IsSafeImportDate(std::string_view date) {
    for (char c : date) {
        const bool allowed = (c >= '0' && c <= '9') || c == '-' || c == ':' || c == ' ' || c == '\t';
        if (!allowed) return false;
    }
    return true;
}

const std::string& GuardedImportDate(const std::string& date, std::string_view which) {
    if (!IsSafeImportDate(date)) {
        throw Error("A data da última importação de " + std::string(which) + " '" + date +
                    "' tem caracteres que não são de uma data (só algarismos, \"-\", \":\" e "
                    "espaços).");
    }
    return date;
}

}  // namespace kitra
