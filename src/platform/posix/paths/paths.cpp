#include "platform/posix/paths/paths.h"

#include <limits.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <utility>

#include "platform/never_destroyed.h"
#include "platform/posix/base/stamped.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/paths/folder_index.h"
#include "platform/posix/text/host_text.h"

namespace brevik::platform {
namespace {

// Where no machine could be made, drive Z: is the host all the same, so that the host's own
// programs have paths.
constexpr char kHostRoot[] = "/.";

void AppendName(HostPlace& place, std::u16string_view name) {
    if (IsValidName(name)) {
        place.path += '/';
        place.path += Utf8FromWide(name);
    } else if (place.error == NO_ERROR) {
        place.error = ERROR_INVALID_NAME;
    }
}

// Begins a place with SERVER\SHARE\, and takes that off the front of the text.
HostPlace BeginShare(std::u16string_view& text) {
    HostPlace place;
    const std::size_t server = text.find(u'\\');
    const std::size_t end = std::min(text.find(u'\\', server + 1), text.size());
    if (server == text.npos || server == 0 || end == server + 1) {
        place.error = ERROR_BAD_NETPATH;
        return place;
    }
    place.isShare = true;
    place.path = Machine::Current().Folder() + "/shares";
    place.top = place.path.size();
    AppendName(place, text.substr(0, server));
    AppendName(place, text.substr(server + 1, end - server - 1));
    place.root = place.path.size();
    text.remove_prefix(std::min(end + 1, text.size()));
    return place;
}

// The same for X:\.
HostPlace BeginDrive(std::u16string_view& text) {
    HostPlace place;
    if (!BeginsWithDrive(text)) {
        place.error = text.empty() ? ERROR_PATH_NOT_FOUND : ERROR_FILE_NOT_FOUND;
        return place;
    }
    const Machine& machine = Machine::Current();
    const char16_t letter = UpperLetter(text[0]);
    if (!IsDriveLetter(letter)) {
        place.error = ERROR_PATH_NOT_FOUND;
    } else if (letter == u'Z' && !machine.Exists()) {
        place.path = kHostRoot;
        place.top = place.path.size();
    } else {
        place.path = machine.Folder() + "/drives";
        place.top = place.path.size();
        place.path += {'/', static_cast<char>(letter - u'A' + 'a')};
    }
    place.root = place.path.size();
    text.remove_prefix(3);
    return place;
}

// The error of a lookup that found no entry for the name which ends at `end` of the place's path.
DWORD MissingError(const HostPlace& place, std::size_t end) {
    if (end <= place.root) {
        return place.isShare ? ERROR_BAD_NETPATH : ERROR_PATH_NOT_FOUND;
    }
    return end == place.path.size() ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
}

bool IsMissing(int hostError) {
    return hostError == ENOENT || hostError == ENOTDIR;
}

// Looks whether a name that cannot be looked through is a link that is there itself.
void NoteBrokenLink(const HostPlace& place, const std::string& path, HostFile& file) {
    struct stat status;
    if (!place.IsRoot() && lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode)) {
        file.path = path;
        file.status = status;
        file.isBrokenLink = true;
    }
}

// Lookups that found nothing, by their paths: some are looked for again and again.
using MissCache = AnswerCache<std::string, Stamped<HostFile>>;

MissCache& Misses() {
    static NeverDestroyed<MissCache> misses(256);
    return *misses;
}

// Finds the longest part of the place that is there as spelled. Result: its length, or 0 with the
// error in `file`.
std::size_t FindSpelledPart(const HostPlace& place, HostFile& file) {
    std::size_t end = place.path.rfind('/');
    for (;; end = place.path.rfind('/', end - 1)) {
        file.path = place.path.substr(0, end);
        if (stat(file.path.c_str(), &file.status) == 0) {
            return end;
        }
        if (!IsMissing(errno) || end <= place.top) {
            file.error = IsMissing(errno) ? MissingError(place, place.root) : ErrorFromHost(errno);
            file.path.clear();
            return 0;
        }
    }
}

// Looks up a place that is not there as it is spelled.
HostFile FindWithoutCase(const HostPlace& place) {
    SeenFiles seen;
    HostFile file;
    std::size_t end = FindSpelledPart(place, file);
    while (end != 0 && end < place.path.size()) {
        const std::size_t start = end + 1;
        end = std::min(place.path.find('/', start), place.path.size());
        const FoldedName name(std::string_view(place.path).substr(start, end - start));
        const bool isInFolder = S_ISDIR(file.status.st_mode);
        const NameInFolder found = FindName(file.path, file.status, name);
        seen.Add(file.path, FileStamp(file.status));
        if (!found.lasting) {
            seen.Distrust();
        }
        file.path += '/';
        file.path += found.name ? *found.name : name.Name();
        if (found.name && stat(file.path.c_str(), &file.status) == 0) {
            continue;
        }
        const int failure = found.name ? errno : found.error;
        const bool isMissing = failure == 0 || IsMissing(failure);
        file.error = isMissing ? MissingError(place, end) : ErrorFromHost(failure);
        if (!isInFolder && file.error == ERROR_FILE_NOT_FOUND) {
            file.error = ERROR_PATH_NOT_FOUND;
        }
        if (found.name && end == place.path.size()) {
            NoteBrokenLink(place, std::string(file.path), file);
        }
        if (file.error != ERROR_FILE_NOT_FOUND && !file.isBrokenLink) {
            file.path.clear();
        }
        if (!found.name && seen.AreSettled()) {
            Misses().Keep(place.path, std::make_shared<const Stamped<HostFile>>(
                                          Stamped<HostFile>{file, std::move(seen)}));
        }
        break;
    }
    return file;
}

HostFile LookUp(const HostPlace& place) {
    HostFile file;
    file.error = place.error;
    if (file.error != NO_ERROR) {
        return file;
    }
    if (const auto miss = Misses().Find(place.path); miss && miss->seen.AreUnchanged()) {
        return miss->answer;
    }
    if (stat(place.path.c_str(), &file.status) == 0) {
        file.path = place.path;
        return file;
    }
    if (!IsMissing(errno)) {
        file.error = ErrorFromHost(errno);
        NoteBrokenLink(place, place.path, file);
        return file;
    }
    return FindWithoutCase(place);
}

}  // namespace

HostPlace PlaceOf(std::u16string_view path) {
    std::u16string full;
    bool isShare = BeginsWithLiteralShare(path);
    if (isShare) {
        path.remove_prefix(kLiteralSharePrefix.size());
    } else if (path.starts_with(kLiteralPrefix)) {
        path.remove_prefix(kLiteralPrefix.size());
    } else {
        full = FullPath(path);
        const std::size_t end = full.find_last_not_of(u" .") + 1;
        full.resize(std::max(end, std::min(RootLength(full), full.size())));
        path = full;
        const bool isDevice = path.starts_with(kDevicePrefix);
        isShare = !isDevice && path.starts_with(u"\\\\");
        path.remove_prefix(isDevice ? kDevicePrefix.size() : isShare ? 2 : 0);
    }
    HostPlace place = isShare ? BeginShare(path) : BeginDrive(path);
    if (path.empty()) {
        return place;
    }
    ForEachPart(path, [&](std::u16string_view name, bool isLast) {
        if (isLast && name.empty()) {
            place.trailingSeparator = true;
        } else {
            AppendName(place, name);
        }
    });
    if (place.error == NO_ERROR && place.path.size() >= PATH_MAX) {
        place.error = ERROR_INVALID_NAME;
    }
    return place;
}

HostFile FindFile(const HostPlace& place) {
    HostFile file = LookUp(place);
    if (place.trailingSeparator && file.error == NO_ERROR && !S_ISDIR(file.status.st_mode)) {
        file.error = ERROR_INVALID_NAME;
        file.path.clear();
    }
    return file;
}

HostFile FindFile(std::u16string_view path) {
    HostFile file = FindFile(PlaceOf(path));
    if (file.error != NO_ERROR) {
        SetLastError(file.error);
    }
    return file;
}

}  // namespace brevik::platform
