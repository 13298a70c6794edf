#include "settings/Restaurants.h"

#include <algorithm>

#include "core/Error.h"
#include "core/Text.h"
#include "settings/SettingsXml.h"

namespace kitra {
namespace {

Error InvalidArgument() { return Error("Invalid procedure call or argument", 5); }
Error DuplicateKey() {
    return Error("This key is already associated with an element of this collection", 457);
}

}  // namespace

void Restaurants::Add(const Restaurant& restaurant) {
    std::string key = FoldCase(restaurant.Name);
    if (Find(key)) throw DuplicateKey();
    Append(restaurant, std::move(key));
}

void Restaurants::Append(Restaurant restaurant, std::optional<std::string> key) {
    // Room in both first, so a failure cannot leave the two lists out of step. The room grows
    // by doubling: growing by one each time made reading n restaurants cost n * n copies.
    if (items_.size() == items_.capacity() || keys_.size() == keys_.capacity()) {
        const std::size_t room = std::max<std::size_t>(8, items_.size() * 2);
        items_.reserve(room);
        keys_.reserve(room);
    }
    items_.push_back(std::move(restaurant));
    keys_.push_back(std::move(key));
}

std::optional<std::size_t> Restaurants::Find(std::string_view key) const {
    const std::string folded = FoldCase(key);
    for (std::size_t i = 0; i < keys_.size(); ++i) {
        if (keys_[i] && *keys_[i] == folded) return i;
    }
    return std::nullopt;
}

std::size_t Restaurants::PositionOf(std::int32_t index) const {
    if (index < 1 || static_cast<std::size_t>(index) > items_.size()) throw InvalidArgument();
    return static_cast<std::size_t>(index) - 1;
}

std::size_t Restaurants::PositionOf(std::string_view key) const {
    const std::optional<std::size_t> position = Find(key);
    if (!position) throw InvalidArgument();
    return *position;
}

Restaurant& Restaurants::Item(std::int32_t index) { return items_[PositionOf(index)]; }
const Restaurant& Restaurants::Item(std::int32_t index) const { return items_[PositionOf(index)]; }
Restaurant& Restaurants::Item(std::string_view key) { return items_[PositionOf(key)]; }
const Restaurant& Restaurants::Item(std::string_view key) const { return items_[PositionOf(key)]; }

void Restaurants::Remove(std::int32_t index) {
    const std::size_t position = PositionOf(index);
    items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(position));
    keys_.erase(keys_.begin() + static_cast<std::ptrdiff_t>(position));
}

void Restaurants::Remove(std::string_view key) {
    const std::size_t position = PositionOf(key);
    items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(position));
    keys_.erase(keys_.begin() + static_cast<std::ptrdiff_t>(position));
}

std::int32_t Restaurants::Count() const noexcept { return static_cast<std::int32_t>(items_.size()); }

bool Restaurants::Exists(std::string_view name) const noexcept {
    if (items_.empty()) return false;
    try {
        return Find(name).has_value();
    } catch (...) {
        return false;
    }
}

void Restaurants::Clear() noexcept {
    items_.clear();
    keys_.clear();
}

pugi::xml_node Restaurants::WriteXml(pugi::xml_document& document) const {
    pugi::xml_node element = document.append_child("Restaurants");
    if (!element) return element;
    for (const Restaurant& restaurant : items_) {
        settings_xml::MoveUnder(element, restaurant.WriteXml(document));
    }
    return element;
}

void Restaurants::ReadXml(pugi::xml_node element, const host::IUtilityService& numbers) noexcept {
    Clear();
    settings_xml::Guarded([&] {
        for (pugi::xml_node child : element.children()) {
            Restaurant restaurant;
            restaurant.ReadXml(child, numbers);
            Append(std::move(restaurant), std::nullopt);
        }
    });
}

}  // namespace kitra
