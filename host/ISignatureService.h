#pragma once
// The host's signature service: the host's own signature of a text.
#include <string>

namespace kitra::host {

class ISignatureService {
public:
    virtual ~ISignatureService() = default;
    // The signature of the text; the same text always gives the same signature.
    virtual std::string Sign(const std::string& text) const = 0;
};

}  // namespace kitra::host
