#pragma once
// SHA-256 (FIPS 180-4) of a byte string, as 64 lower-case hex digits.
#include <string>
#include <string_view>

namespace kitra::backoffice {

std::string Sha256Hex(std::string_view bytes);

}  // namespace kitra::backoffice
