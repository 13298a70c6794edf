#pragma once
// The host's entries of a settings rule as the entries of a Windows two-column list.
#include <vector>

#include "core/win32/Dialog.h"
#include "settings/RestaurantEditor.h"

namespace kitra::win32 {

inline std::vector<ListChoice> Choices(const std::vector<ListEntry>& entries) {
    std::vector<ListChoice> choices;
    for (const ListEntry& entry : entries) choices.push_back({entry.code, entry.description});
    return choices;
}

}  // namespace kitra::win32
