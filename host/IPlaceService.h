#pragma once
// The host's load/unload places: where the goods of a transport document are loaded and
// unloaded.
#include <cstdint>
#include <string>

#include "host/IMasterData.h"

namespace kitra::host {

struct Place {
    std::int32_t PlaceID = 0;
    std::string Description;

    bool operator==(const Place&) const = default;
};

class IPlaceService : public IMasterData<Place, std::int32_t> {};

}  // namespace kitra::host
