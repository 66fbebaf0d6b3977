// Text of 16-bit characters: surrogates through the conversions, files, formatting and the library's own algorithms.
#include "OrvaUtils/Text.h"

#include "OrvaUtils/IO/IFileSystem.h"
#include "tests/programs/checks/Check.h"

#include <crt.h>
#include <windows.h>

#include <tinyxml2.h>

using OrvaUtils::toUtf8;
using OrvaUtils::toWide;

namespace {

constexpr wchar_t high = 0xD83D;
constexpr wchar_t low = 0xDE00;
const std::wstring smile{high, low}; // U+1F600
constexpr const char* smileUtf8 = "\xF0\x9F\x98\x80";
constexpr const char* replaced = "\xEF\xBF\xBD";

void surrogates() {
    CHECK(std::wstring(L"a\U0001F600z") == L'a' + smile + L'z');
    CHECK(toWide(smileUtf8) == smile);
    CHECK(toUtf8(smile) == smileUtf8);
    CHECK(toWide("\xF0\x90\x80\x80\xF4\x8F\xBF\xBF") == (std::wstring{0xD800, 0xDC00, 0xDBFF, 0xDFFF})); // first, last
    CHECK(toUtf8(std::wstring{0xD800, 0xDC00, 0xDBFF, 0xDFFF}) == "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
    CHECK(toUtf8(std::wstring{high, high, low}) == std::string(replaced) + smileUtf8);
    CHECK(toUtf8(std::wstring{low, high}) == std::string(replaced) + replaced);
    CHECK(toUtf8(std::wstring{L'a', high}) == std::string("a") + replaced);
    CHECK(toWide("\xED\xA0\xBD\xED\xB8\x80") == std::wstring(2, 0xFFFD)); // each half by itself is no UTF-8
    CHECK(toUtf8(std::wstring{0xFFFF, 0xD7FF, 0xE000}) == "\xEF\xBF\xBF\xED\x9F\xBF\xEE\x80\x80");
}

// What the ready-made library would do for 32-bit characters.
void algorithms() {
    CHECK((L"one " + smile + L" two").find(L"two") == 7);
    CHECK(std::wstring(L"\uFFFF") > L"a"); // characters have no sign
    std::wstring overlapping = L"0123456789";
    overlapping.replace(0, 2, L"abcd"); // moves the rest up
    CHECK(overlapping == L"abcd23456789");
    CHECK(OrvaUtils::equalIgnoringCase(L"\u00C9" + smile, L"\u00E9" + smile));
    CHECK(!OrvaUtils::equalIgnoringCase(L"\u0141", L"A")); // the same lower byte as "A"
}

int format(wchar_t* buffer, std::size_t count, const wchar_t* pattern, ...) {
    std::va_list arguments;
    va_start(arguments, pattern);
    const int length = _vsnwprintf(buffer, count, pattern, arguments);
    va_end(arguments);
    return length;
}

void formatting() {
    wchar_t buffer[32];
    CHECK(format(buffer, 32, L"%s|%4d|%08X|%ld", smile.c_str(), -5, 0xDEADBEEFU, -2147483647L - 1) == 28);
    CHECK(buffer == smile + L"|  -5|DEADBEEF|-2147483648");
    CHECK(format(buffer, 3, L"a%s", smile.c_str()) == 3); // it fits without its zero
    CHECK(buffer[1] == high && buffer[2] == low);
    CHECK(format(buffer, 2, L"a%s", smile.c_str()) == -1);
    CHECK(format(buffer, 32, L"%lld|%05d|%hs|%c", -9223372036854775807LL - 1, -5, "z", L'c') == 30);
    CHECK(std::wstring(buffer, 30) == L"-9223372036854775808|-0005|z|c");
    CHECK(OrvaUtils::decimal(-9223372036854775807LL - 1) == L"-9223372036854775808");
    CHECK(OrvaUtils::decimal(4294967296LL) == L"4294967296");
    CHECK(_wtol(L" -2147483648x") == -2147483647L - 1);
}

// The XML library formats and reads them by the C library, which here knows whole numbers alone.
void numbers() {
    const struct {
        const char* text;
        bool isNumber;
        int value;
        unsigned unsignedValue;
    } cases[] = {
        {"0", true, 0, 0},
        {" \t+17 rest", true, 17, 17},
        {"-2147483648", true, -2147483647 - 1, 2147483648U},
        {"99999999999", true, 2147483647, 4294967295U},
        {"4294967295", true, 2147483647, 4294967295U},
        {"0x1F", true, 31, 31},
        {"\n0Xffffffff", true, -1, 4294967295U},
        {"1.9e3", true, 1, 1},
        {"010", true, 10, 10},
        {"", false, -5, 5},
        {"0x", true, 0, 0},
        {"- 1", false, -5, 5},
        {"x1", false, -5, 5},
    };
    for (const auto& each : cases) {
        int value = -5;
        unsigned unsignedValue = 5;
        CHECK(tinyxml2::XMLUtil::ToInt(each.text, &value) == each.isNumber && value == each.value);
        CHECK(tinyxml2::XMLUtil::ToUnsigned(each.text, &unsignedValue) == each.isNumber &&
              unsignedValue == each.unsignedValue);
    }
    tinyxml2::XMLDocument document;
    CHECK(document.Parse("<Text>\n<Open>") != tinyxml2::XML_SUCCESS);
    CHECK(document.ErrorStr() ==
          std::string("Error=XML_ERROR_MISMATCHED_ELEMENT ErrorID=14 (0xe) Line number=2: XMLElement name=Open"));
    tinyxml2::XMLPrinter printer;
    printer.OpenElement("N");
    printer.PushAttribute("a", -2147483647 - 1);
    printer.PushAttribute("b", ~0U);
    printer.PushAttribute("c", -9223372036854775807LL - 1);
    printer.PushAttribute("d", static_cast<std::uint64_t>(~0ULL));
    printer.CloseElement();
    CHECK(printer.CStr() == std::string("<N a=\"-2147483648\" b=\"4294967295\" c=\"-9223372036854775808\" "
                                        "d=\"18446744073709551615\"/>\n"));
}

// The host finds "\Temp\<smile>.xml" under its UTF-8 name.
void files() {
    const std::wstring path = L"\\Temp\\" + smile + L".xml";
    tinyxml2::XMLDocument written;
    tinyxml2::XMLElement* const element = written.NewElement("Text");
    element->SetAttribute("Value", toUtf8(L"\u20AC" + smile).c_str());
    element->SetAttribute("Number", -2147483647 - 1);
    written.InsertEndChild(element);
    std::FILE* file = _wfopen(path.c_str(), L"wb");
    CHECK(file != nullptr);
    if (file == nullptr)
        return;
    CHECK(written.SaveFile(file) == tinyxml2::XML_SUCCESS);
    CHECK(std::fclose(file) == 0);

    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(L"\\Temp\\*.xml", &found);
    CHECK(search != INVALID_HANDLE_VALUE);
    CHECK(found.cFileName == smile + L".xml");
    CHECK(found.nFileSizeHigh == 0 && found.nFileSizeLow > 0);
    FindClose(search);

    file = _wfopen((L"\\Temp\\" + std::wstring(found.cFileName)).c_str(), L"rb");
    CHECK(file != nullptr);
    if (file == nullptr)
        return;
    tinyxml2::XMLDocument read;
    CHECK(read.LoadFile(file) == tinyxml2::XML_SUCCESS);
    std::fclose(file);
    const tinyxml2::XMLElement* const root = read.FirstChildElement("Text");
    CHECK(root != nullptr && toWide(root->Attribute("Value")) == L"\u20AC" + smile);
    CHECK(root != nullptr && root->IntAttribute("Number") == -2147483647 - 1);
}

} // namespace

void checks::text() {
    surrogates();
    algorithms();
    formatting();
    numbers();
    files();
}
