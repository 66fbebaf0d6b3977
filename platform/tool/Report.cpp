#include "platform/tool/Report.h"

#include "platform/panel/Json.h"
#include "platform/panel/Mapping.h"
#include "platform/panel/kernel/Host.h"
#include "platform/tool/Tool.h"

#include <algorithm>
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

// Runs a program, without a shell, and waits for its end. Returns its exit code, or -1.
int run(std::vector<std::string> words, const fs::path& output, const fs::path& errors) {
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    constexpr int flags = O_WRONLY | O_CREAT | O_APPEND;
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&files, 1, output.c_str(), flags, 0644);
    posix_spawn_file_actions_addopen(&files, 2, errors.c_str(), flags, 0644);
    pid_t pid = 0;
    const bool started = posix_spawnp(&pid, arguments[0], &files, nullptr, arguments.data(), environ) == 0;
    posix_spawn_file_actions_destroy(&files);
    int status = -1;
    while (started && waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return started && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Runs tar. Throws with the first line of its errors. A file that changes meanwhile is no error.
void tar(std::vector<std::string> words, const fs::path& output, const fs::path& errors, const std::string& failure) {
    words.insert(words.begin(), {"tar", "--gzip", "--force-local", "--format=pax"});
    const int code = run(std::move(words), output, errors);
    if (code == 0 || code == 1)
        return;
    std::string text = panel::host::readFile(errors.string());
    text.erase(0, text.find_first_not_of('\n')); // gzip begins with an empty line
    throw std::runtime_error(failure + (code < 0 ? "tar cannot be run" : text.substr(0, text.find('\n'))));
}

// Adds the names of the files below a folder of the panel, each with a zero behind it. `links`: the links that count as
// folders.
void list(const fs::path& root, const fs::path& folder, const std::set<fs::path>& links, std::string& names) {
    for (const fs::directory_entry& entry : fs::directory_iterator(root / folder)) {
        const fs::path name = folder / entry.path().filename();
        if ((entry.is_symlink() && !links.contains(name)) || name == "report")
            continue;
        if (entry.is_directory() || entry.is_regular_file())
            names += name.string() + '\0';
        if (entry.is_directory())
            list(root, name, links, names);
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

// Returns the archive's folder. Throws if a name lies outside of it.
std::string folderOf(const std::string& names, const std::string& failure) {
    std::string folder;
    std::istringstream lines(names);
    for (std::string line; std::getline(lines, line);) {
        const fs::path name(line);
        const std::string first = name.begin()->string();
        const bool outside = name.is_absolute() || first == "." ||
                             std::any_of(name.begin(), name.end(), [](const fs::path& part) { return part == ".."; });
        if (outside || (!folder.empty() && first != folder))
            throw std::runtime_error(failure + "\"" + line + "\" does not lie in its only folder");
        folder = first;
    }
    if (folder.empty())
        throw std::runtime_error(failure + "it is empty");
    return folder;
}

// Throws if there is anything else than files and folders. Makes all folders removable before.
void checkUnpacked(const fs::path& place, const std::string& failure) {
    fs::path odd;
    fs::permissions(place, fs::perms::owner_all, fs::perm_options::add);
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(place)) {
        if (entry.is_symlink() || !(entry.is_directory() || entry.is_regular_file()))
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
    const fs::path work = directory / "unpacking";
    const fs::path tree = work / "tree";
    const fs::path names = work / "names";
    fs::create_directories(tree);
    const std::string archive = "--file=" + fs::absolute(file).string();
    tar({"--list", "--absolute-names", "--quoting-style=escape", archive}, names, work / "errors", failure);
    const fs::path place = tree / folderOf(panel::host::readFile(names.string()), failure);
    tar({"--extract", "--no-same-owner", "--no-same-permissions", "--delay-directory-restore", archive,
         "--directory=" + tree.string()},
        names, work / "errors", failure);
    checkUnpacked(tree, failure);
    checkIsPanel(place, failure);
    forgetThatDisksWereInPlace(place);
    fs::remove(place / "run/kernel"); // a damaged one would keep the panel from booting
    for (const fs::directory_entry& entry : fs::directory_iterator(place))
        fs::rename(entry.path(), directory / entry.path().filename());
    fs::remove_all(work);
}

} // namespace

void writeReport(const panel::Panel& panel, const fs::path& file) {
    const TemporaryFolder work;
    const fs::path self = fs::read_symlink("/proc/self/exe");
    const fs::path root = panel.directory();
    const struct {
        const char* file;
        std::vector<std::string> words;
    } parts[] = {{"version.txt", {"--version"}},
                 {"status.txt", {"status"}},
                 {"status.json", {"status", "--json"}},
                 {"programs.txt", {"ps", "--all"}},
                 {"log.txt", {"log"}}};
    std::vector<std::string> words{"report"};
    fs::create_directory(work.path / "report");
    for (const auto& part : parts) { // if the panel is damaged, an error message is the content
        std::vector<std::string> command{self, "-C", root, "--patience", "5s"};
        command.insert(command.end(), part.words.begin(), part.words.end());
        const fs::path output = work.path / "report" / part.file;
        run(command, output, output);
        words.push_back(std::string("report/") + part.file);
    }

    // The locks keep programs and commands from changing the files. A damaged kernel file or a stuck lock is no reason
    // to give up: that is what a report is for.
    const panel::Change alone(root, lockPatience);
    std::unique_ptr<const panel::Mapping> kernel;
    std::optional<panel::Lock> lock;
    try {
        kernel = std::make_unique<panel::Mapping>(root);
    } catch (const std::runtime_error& error) {
        complain(std::string("warning: ") + error.what());
    }
    if (kernel && kernel->image && !lock.emplace(*kernel->image, lockPatience).isHeld())
        complain("warning: a process holds the panel's kernel, so the files may be from different moments");
    std::string names;
    list(root, "", foldersInPlace(panel), names);
    const fs::path listed = work.path / "names";
    panel::host::writeFile(listed.string(), names);
    const fs::path fresh = file.string() + ".new";
    words.insert(words.begin(), {"--create", "--file=" + fs::absolute(fresh).string(), "--no-recursion",
                                 "--dereference", "--hard-dereference", "--owner=0", "--group=0", "--numeric-owner",
                                 "--transform=flags=r;s,^,panel/,", "--directory=" + root.string(), "--null",
                                 "--files-from=" + listed.string(), "--directory=" + work.path.string()});
    try {
        tar(words, "/dev/null", work.path / "errors", "cannot write " + file.string() + ": ");
        fs::rename(fresh, file);
    } catch (...) {
        std::error_code ignored;
        fs::remove(fresh, ignored);
        throw;
    }
}

panel::Panel panelFromReport(const fs::path& file, const fs::path& directory) {
    if (!fs::is_regular_file(file))
        throw std::runtime_error(notAReport + file.string() + ": no such file");
    return panel::Panel::createFilled(directory, [&](const fs::path& made) { unpack(file, fs::absolute(made)); });
}

} // namespace tool
