// A list of items with names, in order of creation. Names are case-insensitive. Finding an item is as fast in a long list as
// in a short one; removing one is not.
#pragma once

#include "platform/panel/Text.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace panel {

// `Item` has a field `name`, which does not change while the item is in the list.
template<class Item>
class NamedList {
public:
    // Returns the item of this name, or null.
    const Item* find(std::string_view name) const {
        const auto found = places.find(fold(name));
        return found == places.end() ? nullptr : &items[found->second];
    }
    Item* find(std::string_view name) {
        return const_cast<Item*>(std::as_const(*this).find(name));
    }
    // Appends an item. The list must not have an item of this name.
    Item& add(Item made) {
        places.emplace(fold(made.name), items.size());
        return items.emplace_back(std::move(made));
    }
    // Returns false if the list has no item of this name.
    bool remove(std::string_view name) {
        const auto found = places.find(fold(name));
        if (found == places.end())
            return false;
        const std::size_t gone = found->second;
        items.erase(items.begin() + static_cast<std::ptrdiff_t>(gone));
        places.erase(found);
        for (auto& [other, place] : places)
            place -= place > gone;
        return true;
    }

    std::size_t size() const {
        return items.size();
    }
    const Item& operator[](std::size_t index) const {
        return items[index];
    }
    auto begin() const {
        return items.begin();
    }
    auto end() const {
        return items.end();
    }

private:
    std::vector<Item> items;
    std::unordered_map<std::string, std::size_t> places; // index by folded name
};

} // namespace panel
