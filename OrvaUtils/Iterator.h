#pragma once

namespace OrvaUtils {

// Walks a sequence once, front to back: `for (; !it.atEnd(); it.advance()) use(it.current());`
template<class Item>
class Iterator {
public:
    virtual bool atEnd() const = 0;
    // Only before the end; the reference lasts until the next `advance`.
    virtual const Item& current() const = 0;
    virtual void advance() = 0;
    virtual ~Iterator() = default;
};

} // namespace OrvaUtils
