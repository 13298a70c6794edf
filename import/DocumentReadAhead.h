#pragma once
// How far the documents importer reads its headers' lines and payments ahead of the document it
// saves. Kept apart so that the benchmark's fetch floor reads with the very same connections and
// window as the import it is set against.
#include <cstddef>

#include "core/Environment.h"

namespace kitra {

// Three further connections: each statement is a round trip that is mostly waiting for the
// server, and with two the saving still waited for the lines it was about to save.
inline constexpr std::size_t kDocumentReadAheadConnections = 3;
// At most this many statements ahead of the document being saved.
inline constexpr std::size_t kDocumentReadAheadWindow = 64;

// The further connections ($KITRA_READ_AHEAD_CONNECTIONS, 0 to read each statement where it is
// needed).
inline std::size_t DocumentReadAheadConnections() {
    return static_cast<std::size_t>(WholeNumberFromEnvironment(
        "KITRA_READ_AHEAD_CONNECTIONS", static_cast<long>(kDocumentReadAheadConnections), 0, 16));
}

}  // namespace kitra
