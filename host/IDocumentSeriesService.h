#pragma once
// The host's document series and their kind. Documents made outside the host (by a restaurant
// system, which numbers and signs them itself) go into an external unsigned series.
#include <cstdint>
#include <string>

#include "host/IMasterData.h"

namespace kitra::host {

enum class SeriesKind : std::int16_t {
    Signed = 1,            // numbered and signed by the host
    ExternalUnsigned = 2,  // numbered elsewhere; the host does not sign them
    Manual = 3,            // pre-printed paper, entered afterwards
};

struct DocumentSeries {
    std::string SeriesID;  // the code
    std::string Description;
    SeriesKind Kind = SeriesKind::Signed;
    bool Active = true;

    bool operator==(const DocumentSeries&) const = default;
};

class IDocumentSeriesService : public IMasterData<DocumentSeries, std::string> {};

}  // namespace kitra::host
