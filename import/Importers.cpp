#include "import/Importers.h"

namespace kitra {

const std::vector<ImporterStep>& ImporterOrder() {
    static const std::vector<ImporterStep> order = {};
    return order;
}

}  // namespace kitra
