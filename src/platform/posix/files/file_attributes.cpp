#include "platform/posix/files/file_attributes.h"

#include <fcntl.h>
#include <sys/xattr.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <string>

#include "platform/files.h"
#include "platform/posix/base/host_errors.h"
#include "platform/posix/text/host_text.h"
#include "platform/posix/time/host_times.h"

namespace brevik::platform {
namespace {

constexpr char kAttributesName[] = "user.DOSATTRIB";
constexpr char kCreationName[] = "user.brevik.creation_time";

constexpr DWORD kOfBoth = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;

// Which stored attributes count.
constexpr DWORD StoredMask(bool folder) {
    return kOfBoth | (folder ? FILE_ATTRIBUTE_READONLY : 0);
}

constexpr DWORD DefaultAttributes(bool folder) {
    return folder ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
}

// The value of an extended attribute. One that is longer than any that is read here has none.
class StoredValue {
  public:
    StoredValue(const char* path, const char* name)
        : size_(getxattr(path, name, bytes_.data(), bytes_.size())) {}

    bool IsThere() const { return size_ >= 0; }
    std::string_view Text() const { return {bytes_.data(), static_cast<std::size_t>(size_)}; }

  private:
    std::array<char, 256> bytes_;
    ssize_t size_;
};

std::uint32_t NumberAt(std::string_view bytes, std::size_t place, std::size_t size) {
    return NumberOfBytes(bytes.substr(place, size));
}

// The number that is all of the text.
template <typename Number>
std::optional<Number> ParseNumber(std::string_view text, int base) {
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

// The binary form: an empty text, the version, the version again as a tag, which fields there are,
// and the fields, of which the attributes are the first.
std::optional<DWORD> ParseBinaryAttributes(std::string_view value) {
    constexpr std::size_t kVersion = 2, kTag = 4, kFields = 8, kAttributes = 12, kEnd = 16;
    constexpr std::uint32_t kFirstVersion = 3, kLastVersion = 5, kHasAttributes = 1;
    if (value.size() < kEnd || value[0] != '\0') {
        return std::nullopt;
    }
    const std::uint32_t version = NumberAt(value, kVersion, 2);
    const bool known = version >= kFirstVersion && version <= kLastVersion &&
                       NumberAt(value, kTag, 2) == version &&
                       (NumberAt(value, kFields, 4) & kHasAttributes) != 0;
    return known ? std::optional<DWORD>(NumberAt(value, kAttributes, 4)) : std::nullopt;
}

// The attributes in a value of user.DOSATTRIB; nothing for one in no form that is known.
std::optional<DWORD> ParseStoredAttributes(std::string_view value) {
    if (!value.starts_with("0x") && !value.starts_with("0X")) {
        return ParseBinaryAttributes(value);
    }
    // A NUL ends the text, whatever follows it.
    return ParseNumber<DWORD>(value.substr(2, value.find('\0') - 2), 16);
}

// All bits that are stored, also those that mean nothing here.
DWORD ReadStoredAttributes(const char* path, bool folder) {
    const StoredValue value(path, kAttributesName);
    return value.IsThere() ? ParseStoredAttributes(value.Text()).value_or(DefaultAttributes(folder))
                           : DefaultAttributes(folder);
}

std::optional<FILETIME> ReadStoredCreationTime(const char* path) {
    const StoredValue value(path, kCreationName);
    if (!value.IsThere()) {
        return std::nullopt;
    }
    const auto count = ParseNumber<std::uint64_t>(value.Text(), 10);
    return count ? std::optional(FileTimeOfCount(*count)) : std::nullopt;
}

// Which of the extended attributes of this layer a file has. Most files have none at all, which is
// one question to the host instead of one for each.
struct StoredNames {
    bool attributes = true;
    bool creation = true;

    explicit StoredNames(const char* path) {
        std::array<char, 1024> names;
        const ssize_t size = listxattr(path, names.data(), names.size());
        if (size < 0 && errno == ERANGE) {
            return;
        }
        const std::string_view list(names.data(), size < 0 ? 0 : static_cast<std::size_t>(size));
        attributes = Holds(list, kAttributesName);
        creation = Holds(list, kCreationName);
    }

  private:
    static bool Holds(std::string_view list, std::string_view name) {
        while (!list.empty()) {
            const std::size_t end = std::min(list.find('\0'), list.size());
            if (list.substr(0, end) == name) {
                return true;
            }
            list.remove_prefix(std::min(end + 1, list.size()));
        }
        return false;
    }
};

DWORD AttributesFrom(DWORD stored, mode_t mode) {
    const bool folder = S_ISDIR(mode);
    DWORD attributes = stored & StoredMask(folder);
    attributes |= folder ? FILE_ATTRIBUTE_DIRECTORY : 0;
    attributes |= IsReadOnlyFile(mode) ? FILE_ATTRIBUTE_READONLY : 0;
    return attributes != 0 ? attributes : FILE_ATTRIBUTE_NORMAL;
}

timespec HostTime(const statx_timestamp& time) {
    return {time.tv_sec, static_cast<long>(time.tv_nsec)};
}

FILETIME HostCreationTime(const struct statx& status) {
    if ((status.stx_mask & STATX_BTIME) != 0) {
        return FileTimeFromHost(HostTime(status.stx_btime));
    }
    const FILETIME written = FileTimeFromHost(HostTime(status.stx_mtime));
    const FILETIME changed = FileTimeFromHost(HostTime(status.stx_ctime));
    return CountOf(written) < CountOf(changed) ? written : changed;
}

DWORD ChangeMode(const char* path, mode_t mode) {
    return ErrorOf(chmod(path, mode & 07777));
}

// Stores the bits. `mode` is that of the file, and is changed where it has to change: the host
// stores nothing with a file that its owner may not write to.
DWORD StoreAttributes(const char* path, DWORD bits, mode_t& mode) {
    std::array<char, 16> text = {'0', 'x'};
    const char* end = std::to_chars(text.data() + 2, text.data() + text.size(), bits, 16).ptr;
    const auto size = static_cast<std::size_t>(end - text.data());
    const auto store = [&] {
        return ErrorOf(setxattr(path, kAttributesName, text.data(), size, 0));
    };
    DWORD error = store();
    if (error != ERROR_ACCESS_DENIED || !IsReadOnlyFile(mode) ||
        ChangeMode(path, mode | S_IWUSR) != NO_ERROR) {
        return error;
    }
    error = store();
    if (error == NO_ERROR) {
        mode |= S_IWUSR;
    } else {
        ChangeMode(path, mode);
    }
    return error;
}

}  // namespace

FileInformation FileInformationOf(const struct statx& status, const char* path) {
    const mode_t mode = status.stx_mode;
    const bool folder = S_ISDIR(mode);
    const StoredNames names(path);
    FileInformation information;
    information.attributes = AttributesFrom(
        names.attributes ? ReadStoredAttributes(path, folder) : DefaultAttributes(folder), mode);
    const std::optional<FILETIME> creation =
        names.creation ? ReadStoredCreationTime(path) : std::nullopt;
    information.creation = creation ? *creation : HostCreationTime(status);
    information.access = FileTimeFromHost(HostTime(status.stx_atime));
    information.write = FileTimeFromHost(HostTime(status.stx_mtime));
    information.size = folder ? 0 : status.stx_size;
    return information;
}

std::optional<FileInformation> ReadFileInformation(const char* path) {
    struct statx status;
    if (statx(AT_FDCWD, path, 0, kInformationMask, &status) != 0) {
        return std::nullopt;
    }
    return FileInformationOf(status, path);
}

bool IsReadOnlyFolder(mode_t mode, const char* path) {
    return IsReadOnlyFile(mode) ||
           (ReadStoredAttributes(path, true) & FILE_ATTRIBUTE_READONLY) != 0;
}

DWORD SetHostAttributes(const char* path, DWORD attributes) {
    struct stat status;
    if (stat(path, &status) != 0) {
        return ErrorFromHost(errno);
    }
    const bool folder = S_ISDIR(status.st_mode);
    const DWORD mask = StoredMask(folder);
    const DWORD stored = ReadStoredAttributes(path, folder);
    const DWORD wanted = (stored & ~mask) | (attributes & mask);
    mode_t mode = status.st_mode;
    if (wanted != stored) {
        const DWORD error = StoreAttributes(path, wanted, mode);
        const bool unimportant =
            error == ERROR_NOT_SUPPORTED && (wanted ^ stored) == FILE_ATTRIBUTE_ARCHIVE;
        if (error != NO_ERROR && !unimportant) {
            return error;
        }
    }
    const bool readOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    mode_t wantedMode = status.st_mode | S_IWUSR;
    if (readOnly) {
        wantedMode = folder ? status.st_mode : status.st_mode & ~mode_t{S_IWUSR};
    }
    return wantedMode != mode ? ChangeMode(path, wantedMode) : NO_ERROR;
}

DWORD SetCreationTime(int descriptor, const FILETIME& time) {
    const std::string text = std::to_string(CountOf(time));
    return ErrorOf(fsetxattr(descriptor, kCreationName, text.data(), text.size(), 0));
}

}  // namespace brevik::platform
