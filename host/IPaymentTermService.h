#pragma once
// The host's payment terms: how long a customer has to pay a credit sale.
#include <cstdint>
#include <string>

#include "host/IMasterData.h"

namespace kitra::host {

struct PaymentTerm {
    std::int32_t PaymentTermID = 0;
    std::string Description;
    std::int32_t DueDays = 0;  // 0: due at once

    bool operator==(const PaymentTerm&) const = default;
};

class IPaymentTermService : public IMasterData<PaymentTerm, std::int32_t> {};

}  // namespace kitra::host
