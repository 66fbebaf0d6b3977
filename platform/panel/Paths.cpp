#include "platform/panel/Paths.h"

#include "platform/panel/Text.h"

#include <windows.h>

#include <vector>

namespace panel {

namespace {

std::vector<std::string_view> components(std::string_view path) {
    std::vector<std::string_view> result;
    while (!path.empty()) {
        const auto end = path.find('\\');
        if (end != 0)
            result.push_back(path.substr(0, end));
        path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
    }
    return result;
}

bool isName(std::string_view text) {
    return text != "." && text != ".." && text.find_first_of("/:*?\"<>|") == std::string_view::npos;
}

bool enter(const Image* image, Place& place, const std::string& name, bool top) {
    const std::string folder = place.host;
    place.folder = {place.status.st_dev, place.status.st_ino};
    place.host = folder + '/' + name;
    place.exists = statusOf(place.host, top, place.status);
    if (place.exists)
        return true;
    for (const std::string& other :
         image ? names::alike(*image, folder, place.folder, name) : names::alike(folder, name))
        if (statusOf(folder + '/' + other, top, place.status)) {
            place.host = folder + '/' + other;
            place.exists = true;
            break;
        }
    return place.exists;
}

Place locateWith(const Image* image, const std::string& root, std::string_view panelPath) {
    Place place;
    place.host = root + "/fs";
    if (characterCount(panelPath) >= MAX_PATH) {
        place.error = ERROR_FILENAME_EXCED_RANGE;
        return place;
    }
    const auto names = components(panelPath);
    if (panelPath.empty()) {
        place.error = ERROR_PATH_NOT_FOUND;
        return place;
    }
    place.exists = stat(place.host.c_str(), &place.status) == 0;
    for (std::size_t index = 0; index < names.size(); ++index) {
        const bool last = index + 1 == names.size();
        if (!isName(names[index])) {
            place.exists = false;
            place.error = last ? ERROR_INVALID_NAME : ERROR_PATH_NOT_FOUND;
            return place;
        }
        if (!enter(image, place, std::string(names[index]), index == 0) || (!last && !S_ISDIR(place.status.st_mode))) {
            place.exists = false;
            place.error = last ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
            return place;
        }
    }
    return place;
}

} // namespace

bool statusOf(const std::string& hostPath, bool top, struct stat& status) {
    // A top folder may be a link: a disk that was plugged in place. Any other link could lead out of the panel.
    return (top ? stat(hostPath.c_str(), &status) : lstat(hostPath.c_str(), &status)) == 0 &&
           (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
}

Place locate(const Image& image, const std::string& root, std::string_view panelPath) {
    return locateWith(&image, root, panelPath);
}

Place locate(const std::string& root, std::string_view panelPath) {
    return locateWith(nullptr, root, panelPath);
}

std::string volumeOf(const Image& image, std::string_view panelPath) {
    const auto names = components(panelPath);
    for (const auto& volume : image.volumes)
        if (volume[0] && !names.empty() && equalCaseBlind(volume, names.front()))
            return volume;
    return {};
}

bool isOnFlash(std::string_view panelPath) {
    const auto names = components(panelPath);
    return !names.empty() && equalCaseBlind(names.front(), "NANDFlash");
}

bool matches(std::string_view pattern, std::string_view name) {
    if (pattern == "*.*")
        return true;
    const std::string wanted = fold(pattern);
    const std::string text = fold(name);
    if (wanted.empty())
        return false;
    std::size_t at = 0;
    std::size_t in = 0;
    std::size_t star = std::string::npos; // position of the last star, and the end of the text that it matches so far
    std::size_t eaten = 0;
    while (at < text.size()) {
        if (in < wanted.size() && wanted[in] == '*') {
            star = in++;
            eaten = at;
        } else if (in < wanted.size() && (wanted[in] == '?' || wanted[in] == text[at])) {
            // "?" matches a whole character, which may have several bytes
            ++at;
            while (wanted[in] == '?' && at < text.size() && (text[at] & 0xC0) == 0x80)
                ++at;
            ++in;
        } else if (star != std::string::npos) {
            in = star + 1;
            at = ++eaten;
        } else {
            return false;
        }
    }
    while (in < wanted.size() && wanted[in] == '*')
        ++in;
    return in == wanted.size();
}

} // namespace panel
