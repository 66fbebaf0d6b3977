// _vsnwprintf. The C library formats the numbers, whose text is ASCII. Wide text is copied unchanged.
#include <crt.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr int widest = 100000; // cap for widths and precisions in the format
constexpr int mostDigits = 100; // digits of a number at most

// A conversion: "%", flags, width, precision, length, letter.
struct Conversion {
    bool leftAligned = false;
    bool zeros = false;
    char flags[4] = ""; // the flags that are passed to the C library
    int width = 0;
    int precision = -1; // -1: no precision
    int longs = 0;
    bool isShort = false;
    wchar_t letter = 0; // 0: unknown conversion
};

const wchar_t* parseNumber(const wchar_t* at, int& number) {
    for (number = 0; *at >= L'0' && *at <= L'9'; ++at)
        number = std::min(number * 10 + static_cast<int>(*at - L'0'), widest);
    return at;
}

const wchar_t* parse(const wchar_t* at, Conversion& conversion) {
    std::size_t used = 0;
    for (; *at && *at < 128 && std::strchr("-0+ #", static_cast<char>(*at)); ++at) {
        const auto flag = static_cast<char>(*at);
        conversion.leftAligned |= flag == '-';
        conversion.zeros |= flag == '0';
        if (flag != '-' && flag != '0' && !std::strchr(conversion.flags, flag))
            conversion.flags[used++] = flag;
    }
    at = parseNumber(at, conversion.width);
    if (*at == L'.')
        at = parseNumber(at + 1, conversion.precision);
    for (; *at == L'l' && conversion.longs < 2; ++at)
        ++conversion.longs;
    if (*at == L'h' && !conversion.longs) {
        conversion.isShort = true;
        ++at;
    }
    if (!*at || *at >= 128 || !std::strchr("diuxXsc%", static_cast<char>(*at)))
        return at;
    conversion.letter = *at;
    return at + 1;
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
    void text(const Character* value, std::size_t characters, const Conversion& conversion) {
        const std::size_t padding = paddingFor(characters, conversion);
        repeat(L' ', conversion.leftAligned ? 0 : padding);
        put(value, characters);
        repeat(L' ', conversion.leftAligned ? padding : 0);
    }
    template<class Character>
    void text(const Character* value, const Conversion& conversion) {
        std::size_t characters = 0;
        while (characters < static_cast<std::size_t>(conversion.precision) && value[characters])
            ++characters;
        text(value, characters, conversion);
    }
    // For unsigned conversions `value` holds the bits of the number.
    void number(long long value, const Conversion& conversion) {
        char pattern[12] = "%";
        char digits[mostDigits + 8];
        std::strcat(pattern, conversion.flags);
        std::strcat(pattern, ".*ll");
        pattern[std::strlen(pattern)] = static_cast<char>(conversion.letter);
        const int precision = std::min(conversion.precision, mostDigits); // below 0 means no precision
        const auto characters =
            static_cast<std::size_t>(std::max(std::snprintf(digits, sizeof digits, pattern, precision, value), 0));
        if (!conversion.zeros || conversion.leftAligned || conversion.precision >= 0)
            return text(digits, characters, conversion);
        const std::size_t sign = std::strchr("+- ", digits[0]) ? 1 : std::strchr("xX", digits[1]) && digits[1] ? 2 : 0;
        put(digits, sign);
        repeat(L'0', paddingFor(characters, conversion));
        put(digits + sign, characters - sign);
    }
    int end() {
        if (length < count)
            buffer[length] = 0;
        return length <= count ? static_cast<int>(length) : -1;
    }

private:
    static std::size_t paddingFor(std::size_t characters, const Conversion& conversion) {
        const auto width = static_cast<std::size_t>(conversion.width);
        return width > characters ? width - characters : 0;
    }
    void repeat(wchar_t character, std::size_t times) {
        for (; times > 0; --times)
            put(character);
    }
    template<class Character>
    void put(const Character* text, std::size_t characters) {
        for (std::size_t index = 0; index < characters; ++index)
            put(widened(text[index]));
    }
    static wchar_t widened(wchar_t character) {
        return character;
    }
    static wchar_t widened(char character) {
        return static_cast<wchar_t>(static_cast<unsigned char>(character));
    }

    wchar_t* buffer;
    std::size_t count;
    std::size_t length = 0; // length of the whole text, even if it was cut
};

// "%ld" formats 32 bits, as on a panel. The argument itself has the width of the machine's long.
long long nextNumber(std::va_list& arguments, const Conversion& conversion) {
    const bool hasSign = conversion.letter == L'd' || conversion.letter == L'i';
    if (conversion.longs == 2)
        return va_arg(arguments, long long);
    if (conversion.longs == 1)
        return hasSign ? va_arg(arguments, long) : static_cast<long long>(va_arg(arguments, unsigned long));
    const int value = va_arg(arguments, int);
    if (conversion.isShort)
        return hasSign ? static_cast<short>(value) : static_cast<unsigned short>(value);
    return hasSign ? value : static_cast<long long>(static_cast<unsigned>(value));
}

} // namespace

int _vsnwprintf(wchar_t* buffer, std::size_t count, const wchar_t* format, std::va_list passed) noexcept {
    std::va_list arguments;
    va_copy(arguments, passed);
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
        case L's':
            if (conversion.isShort) {
                const auto* value = va_arg(arguments, const char*);
                output.text(value ? value : "(null)", conversion);
            } else {
                const auto* value = va_arg(arguments, const wchar_t*);
                output.text(value ? value : L"(null)", conversion);
            }
            break;
        case L'c': {
            const auto character = static_cast<wchar_t>(va_arg(arguments, int));
            output.text(&character, 1, conversion);
            break;
        }
        case L'%':
            output.put(L'%');
            break;
        case 0: // the size of its argument is unknown, so no later argument can be read
            for (format = start; *format; ++format)
                output.put(*format);
            break;
        default:
            output.number(nextNumber(arguments, conversion), conversion);
        }
    }
    va_end(arguments);
    return output.end();
}
