#include "platform/tool/loader/Image.h"

#include "platform/panel/PortableExecutable.h"
#include "platform/panel/kernel/Host.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <strings.h>
#include <sys/mman.h>
#include <vector>

namespace loader {

namespace {

namespace pe = panel::pe;

constexpr std::uint32_t page = 0x1000;
constexpr std::uint32_t byOrdinal = 0x80000000;
constexpr std::uint32_t longestName = 255;
constexpr unsigned importBlocks = 2; // the imports of the program and of its run time

[[noreturn]] void refuse(const std::string& why) {
    throw std::runtime_error(why);
}

// Reads and checks the headers of the file.
class Headers {
public:
    explicit Headers(const std::string& content) : file(content), start(at<std::uint32_t>(pe::signaturePlace)) {}

    std::uint16_t half(std::uint32_t offset) const {
        return at<std::uint16_t>(std::uint64_t{start} + offset);
    }
    std::uint32_t word(std::uint32_t offset) const {
        return at<std::uint32_t>(std::uint64_t{start} + offset);
    }
    std::vector<pe::Section> sections() const {
        std::vector<pe::Section> found(half(pe::sectionCount));
        std::uint64_t place = std::uint64_t{start} + pe::sections;
        for (pe::Section& section : found) {
            section = at<pe::Section>(place);
            place += sizeof section;
        }
        return found;
    }

private:
    template<class Record>
    Record at(std::uint64_t offset) const {
        Record record{};
        if (offset + sizeof record > file.size())
            refuse("the file is cut short");
        std::memcpy(&record, file.data() + offset, sizeof record);
        return record;
    }

    const std::string& file;
    std::uint32_t start;
};

std::uint32_t sizeOf(const pe::Section& section) {
    return std::max(section.virtualSize, section.fileSize);
}

bool inside(const std::vector<pe::Section>& sections, std::uint32_t flag, std::uint32_t address, std::uint32_t bytes) {
    return std::any_of(sections.begin(), sections.end(), [&](const pe::Section& section) {
        return section.flags & flag && address >= section.address &&
               std::uint64_t{address} + bytes <= std::uint64_t{section.address} + sizeOf(section);
    });
}

void check(const Headers& headers, const std::string& file, const std::vector<pe::Section>& sections) {
    if (file.compare(0, 2, "MZ") != 0 || headers.word(0) != pe::signature || headers.half(pe::machine) != pe::arm)
        refuse("it is not a program for this panel's machine");
    if (headers.half(pe::optionalSize) != pe::wholeOptionalHeader || headers.half(pe::magic) != pe::pe32)
        refuse("its optional header is not a PE32 header");
    if (headers.half(pe::subsystem) != pe::panelSubsystem)
        refuse("it is for another subsystem than the panel's");
    if ((headers.half(pe::characteristics) & (pe::executable | pe::isLibrary)) != pe::executable)
        refuse("it is a library, or was not completely linked");
    for (const pe::Section& section : sections) {
        if (std::uint64_t{section.place} + section.fileSize > file.size())
            refuse("the file is cut short");
        if (section.address % page != 0)
            refuse("a section does not begin with a page");
        if (std::uint64_t{section.address} + sizeOf(section) > headers.word(pe::imageSize))
            refuse("a section reaches beyond its image");
    }
    if (!inside(sections, pe::canExecute, headers.word(pe::entryPoint), 4))
        refuse("its entry lies outside of its code");
}

// The image in memory. Addresses count from its base.
class Memory {
public:
    Memory(std::uint32_t base, std::uint32_t bytes)
        : start(reinterpret_cast<char*>(static_cast<std::uintptr_t>(base))), size(bytes) {
        const int flags = MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE;
        if (size == 0 || std::uint64_t{base} + size > 0x80000000 ||
            mmap(start, size, PROT_READ | PROT_WRITE, flags, -1, 0) != start)
            refuse("there is no room for its image at its base");
    }
    char* at(std::uint64_t address, std::uint64_t bytes) const {
        if (address + bytes > size)
            refuse("its imports lie outside of its image");
        return start + address;
    }
    std::uint32_t word(std::uint64_t address) const {
        std::uint32_t value = 0;
        std::memcpy(&value, at(address, sizeof value), sizeof value);
        return value;
    }
    std::string text(std::uint64_t address) const {
        std::string found;
        for (; const char character = *at(address, 1); ++address) {
            if (found.size() == longestName)
                refuse("a name in its imports has no end");
            found += character;
        }
        return found;
    }

private:
    char* start;
    std::uint32_t size;
};

std::string printable(const std::string& name) {
    constexpr const char* digits = "0123456789ABCDEF";
    std::string text;
    for (const char character : name) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte > ' ' && byte < 0x7F)
            text += character;
        else
            (((text += "\\x") += digits[byte >> 4]) += digits[byte & 15]);
    }
    return text;
}

// A record of the import directory.
struct ImportBlock {
    std::uint32_t lookup;
    std::uint32_t time;
    std::uint32_t forwarders;
    std::uint32_t library;
    std::uint32_t slots;
};

void bindBlock(const Memory& memory, const std::vector<pe::Section>& sections, const ImportBlock& block, bool runTime,
               std::string& missing) {
    for (std::uint32_t offset = 0; const std::uint32_t entry = memory.word(std::uint64_t{block.lookup} + offset);
         offset += 4) {
        if (entry & byOrdinal)
            refuse("it imports a function by its number");
        const std::string name = memory.text(std::uint64_t{entry} + 2); // the name follows a 16-bit hint
        const auto address = reinterpret_cast<std::uintptr_t>(functionNamed(name, runTime));
        if (address == 0)
            missing += (missing.empty() ? " " : ", ") + printable(name);
        const std::uint64_t slot = std::uint64_t{block.slots} + offset;
        if (slot > UINT32_MAX || !inside(sections, pe::canWrite, static_cast<std::uint32_t>(slot), 4))
            refuse("its imports' addresses lie outside of its writable sections");
        std::memcpy(memory.at(slot, 4), &address, 4);
    }
}

void bindImports(const Memory& memory, const std::vector<pe::Section>& sections, std::uint64_t directory) {
    std::string missing;
    for (unsigned index = 0;; ++index) {
        ImportBlock block{};
        std::memcpy(&block, memory.at(directory + index * sizeof block, sizeof block), sizeof block);
        if (block.library == 0)
            break;
        const std::string library = memory.text(block.library);
        if (strcasecmp(library.c_str(), "coredll.dll") != 0)
            refuse("it imports from " + printable(library) + ", not from coredll.dll alone");
        if (index == importBlocks)
            refuse("it has more import blocks than its own and its run time's");
        bindBlock(memory, sections, block, index > 0, missing);
    }
    if (!missing.empty())
        refuse("the panel has no" + missing);
}

// Returns the memory protection of a section.
int protectionOf(std::uint32_t flags) {
    return (flags & pe::canRead ? PROT_READ : 0) | (flags & pe::canWrite ? PROT_WRITE : 0) |
           (flags & pe::canExecute ? PROT_EXEC : 0);
}

} // namespace

Image load(const std::string& hostPath) {
    const std::string file = panel::host::readFile(hostPath);
    const Headers headers(file);
    const std::vector<pe::Section> sections = headers.sections();
    check(headers, file, sections);
    const std::uint32_t base = headers.word(pe::imageBase);
    const std::uint32_t size = headers.word(pe::imageSize);
    const Memory memory(base, size);
    for (const pe::Section& section : sections)
        std::memcpy(memory.at(section.address, section.fileSize), file.data() + section.place, section.fileSize);
    if (const std::uint32_t directory = headers.word(pe::importDirectory))
        bindImports(memory, sections, directory);
    // The code was written as data, so the instruction cache must be cleared before it runs.
    char* const start = memory.at(0, size);
    __builtin___clear_cache(start, start + size);
    mprotect(start, size, PROT_READ);
    for (const pe::Section& section : sections)
        if (mprotect(start + section.address, sizeOf(section), protectionOf(section.flags)) != 0)
            refuse("a section cannot be protected as its flags demand");
    return {base + headers.word(pe::entryPoint)};
}

} // namespace loader
