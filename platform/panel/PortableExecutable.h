// The fields of a PE32 file's headers that matter to a panel, from the public description of the format.
//
// Offsets are in bytes. signaturePlace counts from the beginning of the file, all others from the PE signature. A field
// has 16 bits, unless its comment says "word": a word has 32 bits.
#pragma once

#include <cstdint>

namespace panel::pe {

inline constexpr std::uint32_t signaturePlace = 0x3C; // word: the signature's offset in the file

inline constexpr std::uint32_t machine = 4;
inline constexpr std::uint32_t sectionCount = 6;
inline constexpr std::uint32_t optionalSize = 20;
inline constexpr std::uint32_t characteristics = 22;
inline constexpr std::uint32_t optionalHeader = 24;
inline constexpr std::uint32_t magic = optionalHeader;
inline constexpr std::uint32_t entryPoint = optionalHeader + 16; // word
inline constexpr std::uint32_t imageBase = optionalHeader + 28; // word
inline constexpr std::uint32_t imageSize = optionalHeader + 56; // word
inline constexpr std::uint32_t subsystem = optionalHeader + 68;
inline constexpr std::uint32_t importDirectory = optionalHeader + 104; // word
inline constexpr std::uint32_t sections = optionalHeader + 0xE0;

// A record of the section table.
struct Section {
    char name[8];
    std::uint32_t virtualSize;
    std::uint32_t address;
    std::uint32_t fileSize;
    std::uint32_t place; // offset in the file
    std::uint32_t unused[3];
    std::uint32_t flags;
};
static_assert(sizeof(Section) == 40);

// Values of the fields.
inline constexpr std::uint32_t signature = 0x4550; // "PE", 0, 0
inline constexpr std::uint16_t arm = 0x01C0;
inline constexpr std::uint16_t wholeOptionalHeader = 0xE0;
inline constexpr std::uint16_t pe32 = 0x010B;
inline constexpr std::uint16_t panelSubsystem = 9;
inline constexpr std::uint16_t executable = 0x0002;
inline constexpr std::uint16_t isLibrary = 0x2000;
// Flags of a section.
inline constexpr std::uint32_t canExecute = 0x20000000;
inline constexpr std::uint32_t canRead = 0x40000000;
inline constexpr std::uint32_t canWrite = 0x80000000;

} // namespace panel::pe
