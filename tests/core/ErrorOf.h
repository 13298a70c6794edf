#pragma once
// The description of the Error a call raises, or "no error": lets a test compare the exact text
// the import log would show.
#include <string>

#include "core/Error.h"

namespace kitra::testing {

template <typename Call>
std::string ErrorOf(Call&& call) {
    try {
        call();
    } catch (const Error& e) {
        return e.Description();
    }
    return "no error";
}

}  // namespace kitra::testing
