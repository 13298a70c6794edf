#pragma once
// The ordered collection of the restaurants to import from, in the order the import walks them.
//
// Restaurants added with Add are keyed by their Name (case-insensitive); restaurants read from the
// settings XML carry no key. So Exists, Item and Remove by name find only restaurants added since
// the last read; code that must find a restaurant by name in a list read from XML walks the list
// and compares Name.
//
// Reading numbers needs the host's number parser, so ReadXml takes it as a second argument.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

#include "host/IUtilityService.h"
#include "settings/Restaurant.h"

namespace kitra {

class Restaurants {
public:
    using iterator = std::vector<Restaurant>::iterator;
    using const_iterator = std::vector<Restaurant>::const_iterator;

    // Appends a copy keyed by its Name. A name already used as a key (in any letter case) fails
    // with Error 457 "This key is already associated with an element of this collection".
    void Add(const Restaurant& restaurant);

    // By position (1 to Count) or by key. A position out of range or an unknown key fails with
    // Error 5 "Invalid procedure call or argument". References stay valid until the collection
    // changes.
    Restaurant& Item(std::int32_t index);
    const Restaurant& Item(std::int32_t index) const;
    Restaurant& Item(std::string_view key);
    const Restaurant& Item(std::string_view key) const;

    // By position (1 to Count) or by key, failing as Item does.
    void Remove(std::int32_t index);
    void Remove(std::string_view key);

    std::int32_t Count() const noexcept;

    // Whether a restaurant was added under this name (case-insensitive). Never throws.
    bool Exists(std::string_view name) const noexcept;

    void Clear() noexcept;

    // for-each in collection order.
    iterator begin() noexcept { return items_.begin(); }
    iterator end() noexcept { return items_.end(); }
    const_iterator begin() const noexcept { return items_.begin(); }
    const_iterator end() const noexcept { return items_.end(); }

    // Creates a `Restaurants` element holding one `Restaurant` element per restaurant in order.
    // Like Restaurant::WriteXml, the element is left at the document's top level for the caller
    // to move where it belongs.
    pugi::xml_node WriteXml(pugi::xml_document& document) const;

    // Replaces the contents with one restaurant per child node of `element`, in document order,
    // whatever the child's name (stray text gives a restaurant with nothing set; comments are
    // not kept by the parser); they are appended without a key. Never throws.
    void ReadXml(pugi::xml_node element, const host::IUtilityService& numbers) noexcept;

private:
    std::size_t PositionOf(std::int32_t index) const;
    std::size_t PositionOf(std::string_view key) const;
    std::optional<std::size_t> Find(std::string_view key) const;
    void Append(Restaurant restaurant, std::optional<std::string> key);

    std::vector<Restaurant> items_;
    // Parallel to items_: the folded key, or nothing for restaurants read from XML.
    std::vector<std::optional<std::string>> keys_;
};

}  // namespace kitra
