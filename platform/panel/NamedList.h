// A list of items with names, in order of creation. Names are case-insensitive. Finding, adding and removing items by
// name is fast in a long list, too; an index counts from the beginning.
#pragma once

#include "platform/panel/Text.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace panel {

// `Item` has a field `name`, which does not change while the item is in the list.
template<class Item>
class NamedList {
    using Items = std::map<std::uint64_t, Item>; // by serial number

public:
    // Visits the items in order of creation.
    struct Iterator {
        typename Items::const_iterator at;

        const Item& operator*() const {
            return at->second;
        }
        Iterator& operator++() {
            ++at;
            return *this;
        }
        bool operator==(const Iterator& other) const {
            return at == other.at;
        }
    };

    // Returns the item of this name, or null.
    const Item* find(std::string_view name) const {
        const auto found = serials.find(fold(name));
        return found == serials.end() ? nullptr : &items.at(found->second);
    }
    Item* find(std::string_view name) {
        return const_cast<Item*>(std::as_const(*this).find(name));
    }
    // Appends an item. The list must not have an item of this name.
    Item& add(Item made) {
        serials.emplace(fold(made.name), ++last);
        return items.emplace_hint(items.end(), last, std::move(made))->second;
    }
    // Returns false if the list has no item of this name.
    bool remove(std::string_view name) {
        const auto found = serials.find(fold(name));
        if (found == serials.end())
            return false;
        items.erase(found->second);
        serials.erase(found);
        return true;
    }

    std::size_t size() const {
        return items.size();
    }
    const Item& operator[](std::size_t index) const {
        return std::next(items.begin(), static_cast<std::ptrdiff_t>(index))->second;
    }
    Iterator begin() const {
        return {items.begin()};
    }
    Iterator end() const {
        return {items.end()};
    }

private:
    Items items;
    std::unordered_map<std::string, std::uint64_t> serials; // by folded name
    std::uint64_t last = 0; // the latest serial number
};

} // namespace panel
