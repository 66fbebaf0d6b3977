#pragma once

namespace OrvaUtils {

template<class Item>
// Walks a sequence once, from front to back: `for (; !it.atEnd(); it.advance()) use(it.current());`
//
// Only one thread may use an iterator. The factory function that creates it says who owns it.
class Iterator {
public:
    // Tells whether no items are left. It stays true once it is true.
    virtual bool atEnd() const = 0;
    // Returns the current item. Call it only before the end. The reference is valid until the next `advance`.
    virtual const Item& current() const = 0;
    // Moves on to the next item. Call it only before the end.
    virtual void advance() = 0;
    virtual ~Iterator() = default;
};

} // namespace OrvaUtils
