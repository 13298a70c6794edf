#pragma once
// The back office's signature service: the SHA-256 of the text's UTF-8 bytes, in hex.
#include "host/ISignatureService.h"

namespace kitra::backoffice {

class SignatureService final : public host::ISignatureService {
public:
    std::string Sign(const std::string& text) const override;
};

}  // namespace kitra::backoffice
