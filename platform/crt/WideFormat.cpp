// _vsnwprintf. Numbers are formatted by the C library and have ASCII alone; text is copied as it is.
#include <crt.h>

#include <algorithm>
#include <cstring>

namespace {

struct Conversion { // "%", flags, width, precision, lengths, letter
    char narrow[24] = "%"; // up to the precision, for the C library
    std::size_t used = 1; // of it
    bool leftAligned = false;
    int width = 0;
    int precision = -1; // none
    int longs = 0;
    wchar_t letter = 0;
};

const wchar_t* parse(const wchar_t* at, Conversion& conversion) {
    const auto take = [&] {
        if (conversion.used < sizeof conversion.narrow - 3) // room for lengths and letter
            conversion.narrow[conversion.used++] = static_cast<char>(*at);
        return *at++;
    };
    while (*at && *at < 128 && std::strchr("-+ #0", static_cast<char>(*at)))
        conversion.leftAligned |= take() == L'-';
    while (*at >= L'0' && *at <= L'9')
        conversion.width = conversion.width * 10 + static_cast<int>(take() - L'0');
    if (*at == L'.') {
        take();
        conversion.precision = 0;
        while (*at >= L'0' && *at <= L'9')
            conversion.precision = conversion.precision * 10 + static_cast<int>(take() - L'0');
    }
    for (; *at == L'l' || *at == L'h'; ++at)
        conversion.longs += *at == L'l';
    conversion.letter = *at;
    return *at ? at + 1 : at;
}

class Output {
public:
    Output(wchar_t* target, std::size_t capacity) : buffer(target), count(capacity) {}

    void put(wchar_t character) {
        if (length < count)
            buffer[length] = character;
        ++length;
    }
    template<class Character>
    void put(const Character* text, std::size_t characters) {
        for (std::size_t index = 0; index < characters; ++index)
            put(static_cast<wchar_t>(text[index]));
    }
    void text(const wchar_t* value, const Conversion& conversion) {
        std::size_t characters = 0;
        while (characters < static_cast<std::size_t>(conversion.precision) && value[characters])
            ++characters;
        const auto width = static_cast<std::size_t>(conversion.width);
        const std::size_t padding = width > characters ? width - characters : 0;
        for (std::size_t index = 0; !conversion.leftAligned && index < padding; ++index)
            put(L' ');
        put(value, characters);
        for (std::size_t index = 0; conversion.leftAligned && index < padding; ++index)
            put(L' ');
    }
    template<class Value>
    void number(Value value, Conversion& conversion) {
        constexpr std::size_t enough = 160; // more than a width that anybody asks for
        char text[enough];
        if (conversion.longs)
            conversion.narrow[conversion.used++] = 'l';
        conversion.narrow[conversion.used++] = static_cast<char>(conversion.letter);
        conversion.narrow[conversion.used] = 0;
        const int written = std::snprintf(text, enough, conversion.narrow, value);
        put(text, std::min(static_cast<std::size_t>(std::max(written, 0)), enough - 1));
    }
    int end() {
        if (length < count)
            buffer[length] = 0;
        return length <= count ? static_cast<int>(length) : -1;
    }

private:
    wchar_t* buffer;
    std::size_t count;
    std::size_t length = 0; // of the whole text
};

} // namespace

int _vsnwprintf(wchar_t* buffer, std::size_t count, const wchar_t* format, std::va_list arguments) noexcept {
    Output output(buffer, count);
    while (*format) {
        if (*format != L'%') {
            output.put(*format++);
            continue;
        }
        Conversion conversion;
        const wchar_t* const start = format;
        format = parse(format + 1, conversion);
        switch (conversion.letter) {
        case L'd':
        case L'i':
        case L'u':
        case L'x':
        case L'X':
            // "%ld" is 32 bits wide on a panel; what is pushed for it is what the machine calls long.
            if (conversion.longs)
                output.number(va_arg(arguments, long), conversion);
            else
                output.number(va_arg(arguments, int), conversion);
            break;
        case L's': {
            const auto* value = va_arg(arguments, const wchar_t*);
            output.text(value ? value : L"(null)", conversion);
            break;
        }
        case L'c':
            output.put(static_cast<wchar_t>(va_arg(arguments, int)));
            break;
        case L'%':
            output.put(L'%');
            break;
        default: // not a conversion that this system uses
            output.put(start, static_cast<std::size_t>(format - start));
        }
    }
    return output.end();
}
