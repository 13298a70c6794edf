#pragma once
// The host's salesmen. Numeric keys are whole numbers: a key with a fraction is rounded half to
// even, and a key beyond the 32-bit range fails with "Overflow".
#include <string>

#include "host/IMasterData.h"

namespace kitra::host {

struct Salesman {
    double SalesmanID = 0;
    std::string Name;
    std::string Password;
    std::string Telephone;
    std::string MobilePhone;
    std::string AddressLine1;
    std::string AddressLine2;
    std::string Locality;
    std::string PostalCode;
    std::string Email;

    bool operator==(const Salesman&) const = default;
};

class ISalesmanService : public IMasterData<Salesman, double> {};

}  // namespace kitra::host
