#include "platform/tool/loader/Image.h"

#include "platform/panel/kernel/Host.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <sys/mman.h>

namespace loader {

namespace {

// Offsets in the headers of a PE32 file, as the public format description has them.
constexpr std::uint32_t signatureOffset = 0x3C;
constexpr std::uint32_t machine = 4; // from the signature on
constexpr std::uint32_t sectionCount = 6;
constexpr std::uint32_t optionalHeader = 24;
constexpr std::uint32_t entryPoint = optionalHeader + 16;
constexpr std::uint32_t imageBase = optionalHeader + 28;
constexpr std::uint32_t imageSize = optionalHeader + 56;
constexpr std::uint32_t importDirectory = optionalHeader + 104;
constexpr std::uint32_t sectionTable = optionalHeader + 0xE0;
constexpr std::uint32_t sectionRecord = 40;
constexpr std::uint16_t arm = 0x01C0;

template<class Number>
Number at(const std::string& file, std::uint64_t offset) {
    Number number{};
    if (offset + sizeof number > file.size())
        throw std::runtime_error("the file is cut short");
    std::memcpy(&number, file.data() + offset, sizeof number);
    return number;
}

std::uint32_t word(const void* address) {
    std::uint32_t value = 0;
    std::memcpy(&value, address, sizeof value);
    return value;
}

struct ImportBlock { // one record of the import directory
    std::uint32_t lookup;
    std::uint32_t time;
    std::uint32_t forwarders;
    std::uint32_t library;
    std::uint32_t slots;
};

void bindImports(char* base, std::uint32_t directory) {
    std::string missing;
    bool runTime = false;
    for (ImportBlock block{};; directory += sizeof block) {
        std::memcpy(&block, base + directory, sizeof block);
        if (block.library == 0)
            break;
        for (std::uint32_t index = 0; const std::uint32_t entry = word(base + block.lookup + 4 * index); ++index) {
            const char* name = base + entry + 2; // behind the hint
            const auto address = reinterpret_cast<std::uintptr_t>(functionNamed(name, runTime));
            if (address == 0)
                missing += std::string(" ") + name;
            std::memcpy(base + block.slots + 4 * index, &address, 4);
        }
        runTime = true;
    }
    if (!missing.empty())
        throw std::runtime_error("the panel has no" + missing);
}

// Who may do what with a section: its flags' upper bits.
int protectionOf(std::uint32_t flags) {
    return (flags & 0x40000000 ? PROT_READ : 0) | (flags & 0x80000000 ? PROT_WRITE : 0) |
           (flags & 0x20000000 ? PROT_EXEC : 0);
}

} // namespace

Image load(const std::string& hostPath) {
    const std::string file = panel::host::readFile(hostPath);
    const auto header = at<std::uint32_t>(file, signatureOffset);
    if (at<std::uint32_t>(file, header) != 0x4550 || at<std::uint16_t>(file, header + machine) != arm)
        throw std::runtime_error("it is no program for this panel");
    auto* const wanted =
        reinterpret_cast<char*>(static_cast<std::uintptr_t>(at<std::uint32_t>(file, header + imageBase)));
    const auto size = at<std::uint32_t>(file, header + imageSize);
    void* const base =
        mmap(wanted, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    if (base != wanted)
        throw std::runtime_error("the address of its image is taken");
    const auto sections = at<std::uint16_t>(file, header + sectionCount);
    for (std::uint32_t index = 0; index < sections; ++index) {
        const std::uint32_t section = header + sectionTable + index * sectionRecord;
        const auto target = at<std::uint32_t>(file, section + 12);
        const auto length = at<std::uint32_t>(file, section + 16);
        const auto source = at<std::uint32_t>(file, section + 20);
        if (std::uint64_t{source} + length > file.size() || std::uint64_t{target} + length > size)
            throw std::runtime_error("the file is cut short");
        std::memcpy(wanted + target, file.data() + source, length);
    }
    bindImports(wanted, at<std::uint32_t>(file, header + importDirectory));
    __builtin___clear_cache(wanted, wanted + size);
    mprotect(wanted, size, PROT_READ);
    for (std::uint32_t index = 0; index < sections; ++index) {
        const std::uint32_t section = header + sectionTable + index * sectionRecord;
        const auto target = at<std::uint32_t>(file, section + 12);
        const auto length = std::max(at<std::uint32_t>(file, section + 8), at<std::uint32_t>(file, section + 16));
        if (mprotect(wanted + target, length, protectionOf(at<std::uint32_t>(file, section + 36))) != 0)
            throw std::runtime_error("its sections overlap or lie outside of its image");
    }
    return {static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(wanted)) +
            at<std::uint32_t>(file, header + entryPoint)};
}

} // namespace loader
