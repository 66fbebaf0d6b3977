// What the sweeps over platform calls share: the calls of a recorded run, who takes which of them, and how what one of
// them costs is found among the known losses.
#pragma once

#include "tests/scenario/SweptPanel.h"

#include <span>

// With names in the place of handles among its arguments: "\\file"#2 is what the second opening of the file has given.
struct Call : TracedCall {
    std::uint32_t occurrence = 1; // among the process's calls with the same arguments
    bool commits = false; // closes a file that was opened for writing
    std::size_t logged = 0; // the bytes of the log before the call
    std::size_t committed = 0; // those of them that were written through handles that are closed
};

// When a test fails: what a row of KnownLosses.cpp needs. The other: as tests are named.
void PrintTo(const Call& call, std::ostream* stream);
void PrintTo(Story story, std::ostream* stream);

// Which helper, or which ones: it may be several of these.
enum Where : unsigned {
    installer = 1, // started from the disk
    installed = 2, // by the one before
    inPlace = 4,
    alive = 8, // in place, through a whole life
};

// In place of a function: WriteFile, or the CloseHandle that commits what was written.
inline constexpr std::string_view written = "written";

struct KnownLoss {
    unsigned where;
    std::string_view function; // or `written`
    std::string_view arguments; // what the call's arguments begin with
    std::string_view loss; // of the end state: - missing, + left over, ~ other; flashWritable until the next boot
    std::uint32_t occurrence = 0; // which of the calls with these arguments; 0: each
};

// In KnownLosses.cpp: of one failing call, of a function that fails from then on, of a power cut.
extern const std::span<const KnownLoss> knownLosses;
extern const std::span<const KnownLoss> lastingLosses;
extern const std::span<const KnownLoss> cutLosses;

inline constexpr const char* flashWritable = "the flash is writable";

// An undisturbed run: those of its calls that are wanted, a thread's after the other's, and the state that it leads to.
struct Recording {
    std::vector<Call> calls;
    Tree endState;
    std::string log;
};

Recording recorded(Story story, bool (*isWanted)(const Call& call));
// The platform's list says that it can fail.
bool canFail(const Call& call);

// The shard's part of the calls: all of it if PANEL_SWEEP is "all" or names the sweep (without it, if the build's
// PANEL_SWEEP_OF_BUILD does), otherwise a sample.
std::vector<Call> dealt(const std::vector<Call>& calls, const char* sweep, std::size_t shard, std::size_t shards);

// Empty: none.
std::string knownLoss(std::span<const KnownLoss> losses, Story story, const Call& call);
// A row that no call meets any more says something that is no longer true.
void expectEachLossToBeOfACall(std::span<const KnownLoss> losses, Story story, const std::vector<Call>& calls);

// "-missing ~other +left over": names, by which two states differ.
std::string differences(const Tree& expected, const Tree& found);
// Those of the differences that are not among others.
std::string beyond(const std::string& others, const std::string& found);
