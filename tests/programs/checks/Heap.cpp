// The heap: past its first step, by several threads, and at its end.
#include "OrvaUtils/Xml/DocumentFile.h"
#include "tests/programs/checks/Check.h"
#include "tests/programs/checks/Team.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <tinyxml2.h>
#include <vector>

using OrvaUtils::Xml::loadDocument;
using OrvaUtils::Xml::saveDocument;

namespace {

constexpr std::size_t step = 0x10000; // what is committed at a time
constexpr std::size_t megabyte = 0x100000;

using Block = std::unique_ptr<unsigned char[]>;

bool holds(const Block& block, std::size_t size, unsigned char value) {
    for (std::size_t index = 0; index < size; ++index)
        if (block[index] != value)
            return false;
    return true;
}

void growth() {
    constexpr std::size_t size = 5000; // not a divisor of a step
    std::vector<Block> blocks;
    for (std::size_t index = 0; index < 4 * megabyte / size; ++index) {
        blocks.emplace_back(new unsigned char[size]);
        std::memset(blocks.back().get(), static_cast<int>(index & 0xFF), size);
    }
    for (std::size_t index = 0; index < blocks.size(); ++index)
        CHECK(holds(blocks[index], size, static_cast<unsigned char>(index)));
    blocks.clear();
    std::string text;
    while (text.size() < megabyte)
        text += "reallocated again and again, ";
    CHECK(text.compare(megabyte - 29 - megabyte % 29, 11, "reallocated") == 0);
    for (std::size_t around = step - 2; around <= step + 2; ++around) {
        const Block block(new unsigned char[around]);
        std::memset(block.get(), 0xA5, around);
        CHECK(holds(block, around, 0xA5));
        CHECK(reinterpret_cast<std::uintptr_t>(block.get()) % 8 == 0);
    }
}

void severalThreads() {
    checks::MeetingPoint start(4, 1);
    checks::onThreads(4, [&](unsigned thread) {
        std::vector<Block> blocks(32);
        start.meet(0);
        for (unsigned turn = 0; turn < 2000; ++turn) {
            const std::size_t index = turn * 7 % blocks.size();
            const std::size_t size = 1 + turn * 37 % 3000;
            if (blocks[index])
                CHECK(blocks[index][0] == thread);
            blocks[index].reset(new unsigned char[size]);
            std::memset(blocks[index].get(), static_cast<int>(thread), size);
        }
    });
}

// How much there is, in blocks of that size, until the heap answers with std::bad_alloc. Keeps what it gets.
std::size_t exhaust(std::size_t size, std::vector<Block>& blocks) {
    std::size_t total = 0;
    try {
        for (;; total += size)
            blocks.emplace_back(new unsigned char[size]);
    } catch (const std::bad_alloc&) {
    }
    return total;
}

void end() {
    tinyxml2::XMLDocument document;
    document.Parse("<Settings><Value>1</Value></Settings>");
    const std::wstring path = L"\\Temp\\heap.xml";
    CHECK(saveDocument(document, path));
    std::vector<Block> large;
    std::vector<Block> small;
    small.reserve(megabyte / 16); // so that the vectors do not ask when there is nothing
    large.reserve(64);
    const std::size_t total = exhaust(megabyte, large) + exhaust(1000, small) + exhaust(8, small);
    CHECK(total > 6 * megabyte && total < 8 * megabyte);
    CHECK((new (std::nothrow) unsigned char[1000]) == nullptr);
    CHECK(std::malloc(2 * megabyte) == nullptr);
    CHECK(!saveDocument(document, path));
    // A thread that has met no exception before meets its first one now.
    static HANDLE done; // no room for anything that must be allocated
    static std::size_t caught;
    done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE thread = CreateThread(
        nullptr, 0,
        [](LPVOID) -> DWORD {
            try {
                const Block none(new unsigned char[megabyte]);
            } catch (const std::bad_alloc&) {
                caught = 1;
            }
            EventModify(done, EVENT_SET);
            return 0;
        },
        nullptr, 0, nullptr);
    CHECK(thread != nullptr);
    CHECK(WaitForSingleObject(done, INFINITE) == WAIT_OBJECT_0);
    CHECK(caught == 1);
    large.clear();
    small.clear();
    CHECK(loadDocument(document, path)); // as it was
    const Block again(new unsigned char[3 * megabyte]);
    std::memset(again.get(), 1, 3 * megabyte);
    CHECK(holds(again, 3 * megabyte, 1));
}

} // namespace

void checks::heap() {
    growth();
    severalThreads();
    end();
}
