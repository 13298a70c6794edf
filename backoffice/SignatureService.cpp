#include "backoffice/SignatureService.h"

#include "backoffice/Sha256.h"

namespace kitra::backoffice {

std::string SignatureService::Sign(const std::string& text) const { return Sha256Hex(text); }

}  // namespace kitra::backoffice
