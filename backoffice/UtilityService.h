#pragma once
// The reference host's utility service: its strict number parser and its key limits.
#include "host/IUtilityService.h"

namespace kitra::backoffice {

class UtilityService final : public host::IUtilityService {
public:
    double ParseNumber(std::string_view text, char decimalSeparator) const override;
    double KeyLimit(int digits) const override;
    double Round(double value, int decimals) const override;
};

}  // namespace kitra::backoffice
