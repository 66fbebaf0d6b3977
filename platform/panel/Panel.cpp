#include "platform/panel/Panel.h"

#include "platform/panel/Json.h"
#include "platform/panel/Mapping.h"
#include "platform/panel/Text.h"
#include "platform/panel/kernel/Activity.h"
#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Power.h"
#include "platform/panel/kernel/Processes.h"
#include "platform/panel/kernel/Soundness.h"
#include "platform/panel/kernel/Storage.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <pwd.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace panel {

namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t lockPatience = 2000; // real ms; a stopped program may hold the lock for ever

Json readJson(const fs::path& path) {
    const std::string text = host::readFile(path.string());
    try {
        return parseJson(text);
    } catch (const std::exception&) {
        throw std::runtime_error("not readable as JSON: " + path.string());
    }
}

void writeJson(const fs::path& path, const Json& json) {
    host::writeFile(path.string(), jsonText(json) + '\n');
}

// Reads /etc/passwd itself, since getpwuid needs shared libraries and the loader is linked statically.
std::string userName(uid_t id) {
    std::string name = "user " + std::to_string(id);
    if (std::FILE* const users = std::fopen("/etc/passwd", "re")) {
        while (const passwd* user = fgetpwent(users))
            if (user->pw_uid == id)
                name = user->pw_name;
        std::fclose(users);
    }
    return name;
}

std::string kernelFile(const fs::path& root) {
    return (root / "run/kernel").string();
}

bool isEmptyOrMissing(const fs::path& directory) {
    return !fs::exists(directory) || (fs::is_directory(directory) && fs::is_empty(directory));
}

} // namespace

StoragePolicy storageNamed(std::string_view name) {
    for (std::size_t index = 0; index < std::size(storageNames); ++index)
        if (name == storageNames[index])
            return static_cast<StoragePolicy>(index);
    throw std::runtime_error("not a storage policy: \"" + std::string(name) + "\" (kept, closed or torn)");
}

Panel Panel::create(const fs::path& directory, const PanelOptions& options) {
    for (const std::string& device : options.without)
        Devices::facts(device); // throws for an unknown device before any file is created
    return createFilled(directory, [&](const fs::path& made) { Panel{Fresh{made}}.fill(options); });
}

Panel Panel::createFilled(const fs::path& directory, const std::function<void(const fs::path&)>& fill) {
    if (!isEmptyOrMissing(directory))
        throw std::runtime_error("the directory is not empty: " + directory.string() + " (choose another directory)");
    std::error_code none;
    const auto isThere = [&](const fs::path& path) { // a link to nothing is
        return fs::symlink_status(path, none).type() != fs::file_type::not_found;
    };
    const bool existed = isThere(directory);
    std::vector<fs::path> above; // the folders that do not exist yet, the lowest first
    for (fs::path path = fs::absolute(directory).lexically_normal().parent_path(); !isThere(path);
         path = path.parent_path())
        above.push_back(path);
    try {
        fs::create_directories(directory);
        fill(directory);
        return Panel(directory);
    } catch (const std::exception& error) {
        if (existed)
            for (const fs::directory_entry& entry : fs::directory_iterator(directory, none))
                fs::remove_all(entry, none);
        else
            fs::remove_all(directory, none);
        for (const fs::path& path : above)
            fs::remove(path, none);
        throw std::runtime_error("cannot create a panel in " + directory.string() + ": " + error.what());
    }
}

void Panel::fill(const PanelOptions& options) const {
    for (const char* folder : {"fs/MMCMemory", "fs/NANDFlash", "fs/Windows", "registry", "devices"})
        fs::create_directories(root / folder);
    const auto hostDate =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::system_clock::now().time_since_epoch());
    writeJson(root / "devices/panel.json",
              {{"screen", {{"width", options.screenWidth}, {"height", options.screenHeight}}},
               {"date", options.date < 0 ? hostDate.count() : options.date},
               {"storage", storageNames[static_cast<std::size_t>(options.storage)]}});
    registry::Tree tree;
    tree.make("HKEY_LOCAL_MACHINE\\ORVA")->set(registry::textValue("Version", options.version));
    tree.make("HKEY_LOCAL_MACHINE\\Ident")->set(registry::textValue("Name", options.name));
    tree.make("HKEY_LOCAL_MACHINE\\init");
    registry::store(root, registry::Copy::now, tree);
    registry::store(root, registry::Copy::flash, tree);
    devices().create(options.without);
    disks().create();
    const char model[] = {static_cast<char>(options.model), static_cast<char>(options.model >> 8)};
    devices().setTag(18, {model, sizeof model});
    devices().setTag(48, options.guid);
}

Panel::Panel(const Fresh& fresh) : root(fs::absolute(fresh.directory).lexically_normal()) {}

Panel::Panel(const fs::path& directory) : root(fs::absolute(directory).lexically_normal()) {
    std::error_code error;
    const bool exists = fs::exists(root / "devices/panel.json", error);
    if (error == std::errc::permission_denied)
        checkOwner();
    if (!exists)
        throw std::runtime_error("not a panel: " + directory.string() + " (panel create makes one)");
}

fs::path Panel::hostPath(std::string_view panelPath) const {
    std::string relative(panelPath.substr(std::min(panelPath.find_first_not_of('\\'), panelPath.size())));
    std::replace(relative.begin(), relative.end(), '\\', '/');
    return relative.empty() ? root / "fs" : root / "fs" / relative;
}

void Panel::checkOwner() const {
    fs::path reached = kernelFile(root);
    if (faccessat(AT_FDCWD, reached.c_str(), R_OK | W_OK, AT_EACCESS) == 0 || errno != EACCES)
        return;
    struct stat status {};
    while (stat(reached.c_str(), &status) != 0 && reached.has_relative_path())
        reached = reached.parent_path();
    const std::string owner = userName(status.st_uid);
    throw std::runtime_error(owner + " has booted this panel, and you are " + userName(geteuid()) + ": work on it as " +
                             owner + ", or on a copy of your own (" + root.string() + ')');
}

PanelOptions Panel::options() const {
    const fs::path file = root / "devices/panel.json";
    const Json facts = readJson(file);
    PanelOptions options;
    const auto number = [](const Json& json, std::int64_t least, std::int64_t most) {
        if (!json.is_number_integer() || json.get<std::int64_t>() < least || json.get<std::int64_t>() > most)
            throw std::runtime_error("not possible: " + jsonText(json));
        return json.get<std::int64_t>();
    };
    try { // a person may have edited the file
        constexpr std::int64_t end = 253402300800000; // of the year 9999
        const Json& screen = facts.at("screen");
        options.screenWidth = static_cast<std::uint32_t>(number(screen.at("width"), 1, maxScreen));
        options.screenHeight = static_cast<std::uint32_t>(number(screen.at("height"), 1, maxScreen));
        options.date = number(facts.at("date"), 0, end - 1);
        options.storage = storageNamed(facts.value("storage", storageNames[0]));
    } catch (const std::exception& error) {
        throw std::runtime_error("not readable: " + file.string() + ": " + error.what());
    }
    return options;
}

bool Panel::isOn() const {
    const Mapping kernel(root);
    return kernel.image && kernel.image->on;
}

std::string Panel::whyOff() const {
    return isOn() ? "" : host::readFile((root / "run/end").string());
}

std::optional<std::int64_t> Panel::bootDate() const {
    const Mapping kernel(root); // a panel that was switched off keeps its kernel file
    return kernel.image ? std::optional(kernel.image->clock.bootDate) : std::nullopt;
}

void Panel::initialise(Image& image, const BootOptions& options, std::int64_t date) const {
    const PanelOptions facts = this->options();
    struct stat status {};
    stat((root / "run/kernel.new").c_str(), &status);
    image.fileDevice = status.st_dev;
    image.fileInode = status.st_ino;
    copyText(image.hostBoot, host::bootId());
    image.version = imageVersion;
    image.clock.mode = options.mode;
    image.clock.factor = static_cast<std::uint32_t>(options.factor * 1000);
    image.clock.realBase = host::monotonicNanoseconds();
    image.clock.bootDate = date;
    image.clock.bootTicks = options.ticks;
    image.screenWidth = facts.screenWidth;
    image.screenHeight = facts.screenHeight;
    image.storage = facts.storage;
    copyText(image.directory, root.string());
    disks().show(image);
    const std::vector<std::uint32_t> levels = devices().state("BKL1").values;
    std::copy(levels.begin(), levels.end(), image.backLight);
    if (devices().has("PowerManager"))
        activity::make(image);
    image.headSum = headSum(image);
    image.on = 1;
    image.magic = imageMagic;
}

void Panel::boot(const BootOptions& options) {
    const Change change(root);
    {
        const Mapping former(root);
        if (former.image && former.image->on)
            throw std::runtime_error("the panel is on already (panel off switches it off)");
        if (former.image)
            processes::killOnHost(*former.image); // programs remain if `panel off` was killed
    }
    const std::int64_t atBoot = date();
    registry::fallBack(root);
    storage::cutPower(root, 0, true); // for a copy of a panel that was on
    fs::remove_all(root / "run");
    devices().forgetRequests();
    fs::create_directories(root / "run/output");
    const std::string fresh = (root / "run/kernel.new").string();
    const int file = open(fresh.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    // Allocated in full, so that no later write to the mapping can fail on a full disk.
    const int error = file < 0 ? errno : posix_fallocate(file, 0, sizeof(Image));
    void* address = error ? MAP_FAILED : mmap(nullptr, sizeof(Image), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (file >= 0)
        close(file);
    if (address == MAP_FAILED) {
        unlink(fresh.c_str());
        throw std::runtime_error("cannot make " + fresh + ", which takes " + std::to_string(sizeof(Image) / 1024) +
                                 " KiB: " + std::strerror(error ? error : errno));
    }
    auto* image = static_cast<Image*>(address);
    initialise(*image, options, atBoot);
    unmapImage(image);
    // The rename comes last: other processes see either no kernel file or a complete one.
    fs::rename(fresh, root / "run/kernel");
}

// Removes a kernel file that is damaged or whose lock is stuck. The watchers of programs that still run see that, and
// end their programs.
void Panel::stop(std::optional<std::uint32_t> sectors) {
    const Change change(root, lockPatience);
    Image* image = nullptr;
    bool sound = true;
    std::int64_t date = 0;
    std::string lost;
    // Each failure is collected, so that one does not prevent the next step.
    const auto keep = [&](const char* what, const std::function<void()>& store) {
        try {
            store();
        } catch (const std::exception& error) {
            lost += (lost.empty() ? ": " : "; ") + std::string(what) + " (" + error.what() + ')';
        }
    };
    const auto settleFiles = [&] {
        const bool torn = sound && image->storage == StoragePolicy::torn;
        if (sectors)
            keep("the next boot repeats the power cut", [&] { storage::cutPower(root, torn ? *sectors : 0); });
        else
            keep("files may lose data at the next boot", [&] { storage::commitAll(root); });
    };
    const char* const why = sectors ? "panel cut" : "panel off";
    try {
        image = mapImage(kernelFile(root), false);
    } catch (const std::runtime_error&) {
        sound = false;
    }
    if (sound && (!image || !image->on))
        throw std::runtime_error("the panel is off already");
    if (sound) {
        Lock lock(*image, lockPatience);
        sound = lock.isHeld() && isSound(*image);
        if (sound) {
            date = clock::date(*image); // afterwards time may go on
            power::off(*image, root, why, settleFiles);
        } else {
            processes::killOnHost(*image);
        }
    }
    if (sound) {
        scheduler::deliverWakes(*image);
    } else {
        fs::remove_all(kernelFile(root));
        settleFiles();
        power::note(root, why);
    }
    if (image)
        unmapImage(image);
    // The panel is off from here on.
    if (sectors)
        keep("registry/now.json is stale until the next boot", [&] { registry::fallBack(root); });
    else
        keep("unflushed registry changes are lost", [&] { registry::flushAll(root); });
    if (sound)
        keep("the clock's date is lost", [&] { saveDate(date); });
    else
        lost += std::string(lost.empty() ? ":" : ";") + " the clock's date is lost";
    if (!lost.empty())
        throw std::runtime_error("the panel is off, but the shutdown was not clean" + lost);
}

void Panel::off() {
    stop({});
}

void Panel::cut(std::uint32_t sectors) {
    if (sectors && options().storage != StoragePolicy::torn)
        throw std::runtime_error(storage::onlyTorn);
    stop(sectors);
}

void Panel::setStorage(StoragePolicy policy) {
    LockedChange change(root);
    Json facts = readJson(root / "devices/panel.json");
    facts["storage"] = storageNames[static_cast<std::size_t>(policy)];
    writeJson(root / "devices/panel.json", facts);
    storage::commitAll(root);
    if (change.image() && change.image()->on)
        change.image()->storage = policy;
}

registry::Tree Panel::registry(registry::Copy copy) const {
    const Mapping kernel(root);
    if (!kernel.image || !kernel.image->on)
        return registry::load(root, registry::Copy::flash); // now.json is stale after a power cut by a fault
    const Lock lock(*kernel.image);
    return registry::load(root, copy);
}

void Panel::changeRegistry(const std::function<void(registry::Tree&)>& change, bool flushed) {
    const Change alone(root);
    const Mapping kernel(root);
    const bool on = kernel.image && kernel.image->on;
    const auto apply = [&](registry::Copy copy) {
        registry::Tree tree = registry::load(root, copy);
        change(tree);
        registry::store(root, copy, tree);
        return tree;
    };
    if (!on)
        return registry::store(root, registry::Copy::now, apply(registry::Copy::flash));
    const Lock lock(*kernel.image);
    apply(registry::Copy::now);
    if (flushed)
        apply(registry::Copy::flash);
}

std::int64_t Panel::date() const {
    const std::int64_t stored = options().date;
    const Mapping kernel(root);
    if (!kernel.image)
        return stored;
    if (!kernel.image->on) // after a power cut by a fault the date is only in the kernel file
        return std::max(stored, kernel.image->clock.endDate);
    const Lock lock(*kernel.image);
    return clock::date(*kernel.image);
}

void Panel::saveDate(std::int64_t date) const {
    Json facts = readJson(root / "devices/panel.json");
    facts["date"] = date;
    writeJson(root / "devices/panel.json", facts);
}

std::string Panel::plug(Disk disk) {
    return disks().plug(std::move(disk), date());
}

} // namespace panel
