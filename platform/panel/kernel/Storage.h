// What a power cut takes from the files of the panel's own storage, by the policy Image::storage. A plugged disk is not
// part of that storage: its files keep every completed call.
//
// Names, lengths that an opening sets, and attributes are committed at once. What WriteFile writes is committed when
// its handle is closed, be it by the program or by the program's end. Until then run/uncommitted has a folder for the
// file, named by the file's identity on the host:
//     committed    the content that a power cut restores
//     path         the file's place below the panel's directory; a folder without it does not count
//     42           offset and length of each write through the open file with the object 42
// A copy of the panel therefore carries all that its next boot needs. With StoragePolicy::kept nothing is recorded.
//
// If a person changes, replaces or deletes a file on the host, everything in that file counts as committed.
//
// Functions that take an image need the kernel's lock.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <filesystem>
#include <string>

namespace panel::storage {

inline constexpr std::size_t sectorSize = 512; // bytes
// The text for people who want sectors to stay with another policy.
inline constexpr const char* onlyTorn = "sectors stay only with the storage policy torn (panel storage torn)";

// Records a write of `bytes` bytes at the current position of an open file. Call it before the write. Returns false if
// the host cannot store the record.
bool beforeWrite(const Image& image, Slot file, int hostFile, std::uint64_t bytes);
// Commits what was written through an open file.
void commit(const Image& image, Slot file);
// Notes that an opening has emptied a file: nothing that was written to it before counts any more.
void emptied(const Image& image, const ObjectRecord& file);
// Notes that a file or folder was renamed. Both places are host paths relative to the panel's directory.
void renamed(const Image& image, const std::string& from, const std::string& to);

// Commits all files. The programs of the panel must not run, or the caller holds the kernel's lock.
void commitAll(const std::filesystem::path& root);
// Takes what is not committed from all files, except for its first `sectors` aligned sectors in each file. The
// programs of the panel must not run, or the caller holds the kernel's lock. `copied`: the panel may be a copy of one
// that was on; the identities and write times of its files then say nothing about changes by a person. Throws
// std::runtime_error if the host cannot store a file; a repeated call then goes on.
void cutPower(const std::filesystem::path& root, std::uint32_t sectors, bool copied = false);

} // namespace panel::storage
