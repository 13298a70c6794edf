#include "connector/Platform.h"

#include "core/ModulePath.h"

namespace kitra::connector {

std::string ModulePath() { return ModulePathOf(reinterpret_cast<const void*>(&ModulePath)); }

}  // namespace kitra::connector
