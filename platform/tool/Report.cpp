#include "platform/tool/Report.h"

#include "platform/panel/Json.h"
#include "platform/panel/Mapping.h"
#include "platform/panel/kernel/Host.h"
#include "platform/tool/Interruption.h"
#include "platform/tool/OutputFile.h"
#include "platform/tool/Progress.h"
#include "platform/tool/Tool.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <set>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>

namespace tool {

namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t lockPatience = 2000; // real ms
constexpr const char* notAReport = "not a report of a panel: ";

// A folder that goes with all that is in it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string name = (fs::temp_directory_path() / "panel-report-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("cannot create a folder in " + fs::temp_directory_path().string());
        path = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    fs::path path;
};

struct Streams {
    fs::path errors;
    fs::path input = "/dev/null";
    fs::path output = "/dev/null";
    int descriptor = -1; // an open file instead of `output`
};

// Runs a program, without a shell, and waits for its end. Returns its exit code, 128 plus the number of the signal that
// ended it, or -1 if it cannot be run. Throws after a signal to this command.
int run(std::vector<std::string> words, const Streams& streams) {
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    constexpr int flags = O_WRONLY | O_CREAT | O_APPEND;
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, 0, streams.input.c_str(), O_RDONLY, 0);
    if (streams.descriptor >= 0)
        posix_spawn_file_actions_adddup2(&files, streams.descriptor, 1);
    else
        posix_spawn_file_actions_addopen(&files, 1, streams.output.c_str(), flags, 0644);
    posix_spawn_file_actions_addopen(&files, 2, streams.errors.c_str(), flags, 0644);
    pid_t pid = 0;
    const bool started = posix_spawnp(&pid, arguments[0], &files, nullptr, arguments.data(), environ) == 0;
    posix_spawn_file_actions_destroy(&files);
    if (!started)
        return -1;
    const int status = OrderlyEnd::wait(pid);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// Runs tar or gzip. Returns its warnings. Throws with the first line of its errors. A file that changes meanwhile is no
// error.
std::string pack(const std::vector<std::string>& words, const Streams& streams, const std::string& failure) {
    for (const char* name : {"TAR_OPTIONS", "GZIP", "POSIXLY_CORRECT"}) // options of the user's own
        unsetenv(name);
    const int code = [&] {
        const Progress progress(words.front() == "tar" ? "Copying ..." : "Compressing ...");
        return run(words, streams);
    }();
    std::string text = panel::host::readFile(streams.errors.string());
    const int warned = words.front() == "tar" ? 1 : 2;
    if (code == 0 || code == warned)
        return text;
    text.erase(0, text.find_first_not_of('\n')); // gzip begins with an empty line
    if (text.empty())
        text = words.front() + (code < 0 ? " cannot be run" : " failed");
    throw std::runtime_error(failure + text.substr(0, text.find('\n')));
}

std::vector<std::string> tar(std::vector<std::string> words) {
    words.insert(words.begin(), {"tar", "--force-local", "--format=pax"});
    return words;
}

// What a report takes from the panel's directory.
struct Content {
    std::set<fs::path> links; // those that count as folders
    std::string names; // files and folders, each with a zero behind it
    std::vector<fs::path> gone; // folders of this machine that were plugged in place, and do not exist any more
};

// Adds what is below a folder of the panel. tar complains about a folder that cannot be read.
void list(const fs::path& root, const fs::path& folder, Content& content) {
    std::error_code unreadable;
    std::error_code none;
    for (fs::directory_iterator entry(root / folder, unreadable), end; entry != end; entry.increment(unreadable)) {
        const fs::path name = folder / entry->path().filename();
        if (entry->is_symlink(none) && !content.links.contains(name))
            continue;
        if (!entry->exists(none))
            content.gone.push_back(name);
        if (entry->is_directory(none) || entry->is_regular_file(none))
            content.names += name.string() + '\0';
        if (entry->is_directory(none))
            list(root, name, content);
    }
}

std::set<fs::path> foldersInPlace(const panel::Panel& panel) {
    std::set<fs::path> links;
    for (const panel::Disk& disk : panel.disks().list())
        for (const panel::Partition& partition : disk.partitions)
            if (disk.inPlace)
                for (const char* place : {"fs", "unmounted"})
                    links.insert(fs::path(place) / partition.volume);
    return links;
}

// Throws unless all names lie in one folder.
void checkNames(const std::string& names, const std::string& failure) {
    std::string folder;
    std::istringstream lines(names);
    for (std::string line; std::getline(lines, line);) {
        const fs::path name(line);
        const fs::path normal = name.lexically_normal(); // without "./" at the beginning
        const std::string first = normal.begin()->string();
        const bool outside = name.is_absolute() || first == "." ||
                             std::any_of(name.begin(), name.end(), [](const fs::path& part) { return part == ".."; });
        if (outside || (!folder.empty() && first != folder))
            throw std::runtime_error(failure + "\"" + line + "\" does not lie in its only folder");
        folder = first;
    }
    if (folder.empty())
        throw std::runtime_error(failure + "it is empty");
}

// Throws if there is anything else than files and folders. Makes all folders removable before.
void checkUnpacked(const fs::path& place, const std::string& failure) {
    fs::path odd;
    fs::permissions(place, fs::perms::owner_all, fs::perm_options::add);
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(place)) {
        const bool isFile = entry.is_regular_file() && entry.hard_link_count() == 1;
        if (entry.is_symlink() || !(entry.is_directory() || isFile))
            odd = entry.path();
        else if (entry.is_directory())
            fs::permissions(entry.path(), fs::perms::owner_all, fs::perm_options::add);
    }
    if (!odd.empty())
        throw std::runtime_error(failure + "\"" + odd.lexically_relative(place).string() +
                                 "\" is neither a file nor a folder");
}

// Throws unless these files are a panel that commands can work with.
void checkIsPanel(const fs::path& place, const std::string& failure) {
    try {
        const panel::Panel panel(place);
        panel.options();
        for (const panel::registry::Copy copy : {panel::registry::Copy::now, panel::registry::Copy::flash})
            panel::registry::load(place, copy);
        for (const panel::DeviceFacts& device : panel::knownDevices())
            panel.devices().state(device.name);
        panel.devices().tags();
        std::vector<std::string> folders{"NANDFlash", "Windows"};
        for (const panel::Volume& volume : panel.disks().volumes())
            folders.push_back(volume.name);
        for (const std::string& folder : folders)
            if (!fs::is_directory(place / "fs" / folder))
                throw std::runtime_error("it has no folder fs/" + folder);
    } catch (const std::exception& error) {
        std::string reason = error.what();
        if (const auto at = reason.find(place.string() + '/'); at != std::string::npos)
            reason.erase(at, place.string().size() + 1); // the place is gone when somebody reads this
        throw std::runtime_error(failure + reason);
    }
}

// The host's folders were packed with the panel.
void forgetThatDisksWereInPlace(const fs::path& place) {
    const std::string file = (place / "devices/disks.json").string();
    panel::Json disks = panel::parseJson(panel::host::readFile(file));
    for (panel::Json& disk : disks)
        disk["inPlace"] = false;
    panel::host::writeFile(file, panel::jsonText(disks) + '\n');
}

void unpack(const fs::path& file, const fs::path& directory) {
    const std::string failure = notAReport + file.string() + ": ";
    const TemporaryFolder work;
    const Streams streams{.errors = work.path / "errors", .output = work.path / "names"};
    const fs::path tree = directory / "unpacking";
    fs::create_directories(tree);
    const std::string archive = "--file=" + fs::absolute(file).string();
    pack(tar({"--gzip", "--list", "--absolute-names", "--quoting-style=escape", archive}), streams, failure);
    checkNames(panel::host::readFile(streams.output.string()), failure);
    pack(tar({"--gzip", "--extract", "--no-same-owner", "--no-same-permissions", "--delay-directory-restore", archive,
              "--directory=" + tree.string()}),
         streams, "cannot unpack " + file.string() + ": ");
    checkUnpacked(tree, failure);
    if (fs::is_empty(tree)) // the list may name what is no file, such as a label
        throw std::runtime_error(failure + "it is empty");
    const fs::path place = *fs::directory_iterator(tree);
    checkIsPanel(place, failure);
    forgetThatDisksWereInPlace(place);
    fs::remove(place / "run/kernel"); // a damaged one would keep the panel from booting
    for (const fs::directory_entry& entry : fs::directory_iterator(place))
        fs::rename(entry.path(), directory / entry.path().filename());
    fs::remove_all(tree);
}

// Packs the panel's files without compressing them. The locks keep programs and commands from changing them meanwhile.
// A damaged kernel file or a stuck lock is no reason to give up: that is what a report is for.
void packFiles(const panel::Panel& panel, const fs::path& archive, const fs::path& work, const std::string& failure) {
    const fs::path root = panel.directory();
    const panel::Change alone(root, lockPatience);
    std::unique_ptr<const panel::Mapping> kernel;
    std::optional<panel::Lock> lock;
    try {
        kernel = std::make_unique<panel::Mapping>(root);
    } catch (const std::runtime_error& error) {
        complain(std::string("warning: ") + error.what());
    }
    const bool locked = !kernel || !kernel->image || lock.emplace(*kernel->image, lockPatience).isHeld();
    if (!locked)
        complain("warning: a process holds the panel's kernel, so the files may be from different moments");
    if (!alone.isHeld())
        complain("warning: another command is changing the panel, so the files may be from different moments");
    Content content{foldersInPlace(panel), {}, {}};
    for (const std::string part : {"devices", "fs", "registry", "run", "unmounted"}) {
        if (!fs::is_directory(root / part))
            continue;
        content.names += part + '\0';
        list(root, part, content);
    }
    const fs::path names = work / "names";
    panel::host::writeFile(names.string(), content.names);
    std::vector<std::string> words =
        tar({"--create", "--file=" + archive.string(), "--no-recursion", "--ignore-failed-read", "--dereference",
             "--hard-dereference", "--owner=0", "--group=0", "--numeric-owner", "--transform=flags=r;s,^,panel/,",
             "--directory=" + root.string(), "--null", "--files-from=" + names.string(), "--directory=" + work.string(),
             "report"});
    for (const fs::directory_entry& part : fs::directory_iterator(work / "report"))
        words.push_back("report/" + part.path().filename().string());
    for (const fs::path& folder : content.gone) {
        complain("warning: the folder that was plugged in place is gone: " + folder.string());
        fs::create_directories(work / folder);
        words.push_back(folder.string());
    }
    std::istringstream warnings(pack(words, {.errors = work / "errors"}, failure));
    for (std::string line; std::getline(warnings, line);)
        complain("warning: " + line);
}

} // namespace

void writeReport(const panel::Panel& panel, const fs::path& file) {
    OutputFile output(file);
    const OrderlyEnd orderly;
    const TemporaryFolder work;
    const fs::path self = fs::read_symlink("/proc/self/exe");
    const struct {
        const char* file;
        std::vector<std::string> words;
    } parts[] = {{"version.txt", {"--version"}},
                 {"status.txt", {"status"}},
                 {"status.json", {"status", "--json"}},
                 {"programs.txt", {"ps", "--all"}},
                 {"log.txt", {"log"}}};
    fs::create_directory(work.path / "report");
    for (const auto& part : parts) { // if the panel is damaged, an error message is the content
        std::vector<std::string> command{self, "-C", panel.directory(), "--patience", "5s"};
        command.insert(command.end(), part.words.begin(), part.words.end());
        const fs::path text = work.path / "report" / part.file;
        run(command, {.errors = text, .output = text});
    }
    const std::string failure = "cannot write " + file.string() + ": ";
    const fs::path archive = work.path / "archive";
    packFiles(panel, archive, work.path, failure);
    pack({"gzip", "--stdout"}, {.errors = work.path / "gzip", .input = archive, .descriptor = output.descriptor()},
         failure);
    output.finish("the panel", " (panel create DIR --from FILE makes a panel of it)");
}

panel::Panel panelFromReport(const fs::path& file, const fs::path& directory) {
    const OrderlyEnd orderly;
    if (!fs::is_regular_file(file))
        throw std::runtime_error(notAReport + file.string() + ": no such file");
    return panel::Panel::createFilled(directory, [&](const fs::path& made) {
        unpack(file, fs::absolute(made));
        OrderlyEnd::check();
    });
}

} // namespace tool
