// Stamps: what shows that a file or folder has changed.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>

#include "platform/types.h"

namespace brevik::platform {

inline bool IsSameFile(const struct stat& left, const struct stat& right) {
    return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

// The host's clock, in nanoseconds since 1970.
std::int64_t Now();

// Whether every change from `moment` on gets another time stamp than this one; both are nanoseconds
// since 1970. Most file systems stamp by the kernel's clock, which advances every 10 milliseconds
// at most and may lag as much; old ones store whole seconds, and FAT every other one, so a stamp
// without a fraction counts as one of these.
constexpr bool HasSettled(std::int64_t stamp, std::int64_t moment) {
    constexpr std::int64_t kMillisecond = 1'000'000;
    constexpr std::int64_t kSecond = 1'000 * kMillisecond;
    constexpr std::int64_t kClockLag = 10 * kMillisecond;
    const std::int64_t step = stamp % kSecond == 0 ? 2 * kSecond : 10 * kMillisecond;
    return stamp <= moment && moment - stamp > step + kClockLag;
}

// The state of a file or folder. A name that enters a folder or leaves it changes the folder's.
struct PLATFORM_API FileStamp {
    int error = -1;  // errno of asking for it; -1 when it has not been asked for
    dev_t device = 0;
    ino_t number = 0;
    nlink_t links = 0;
    off_t size = 0;
    std::int64_t modified = 0;  // nanoseconds since 1970
    std::int64_t changed = 0;

    FileStamp() = default;
    explicit FileStamp(int failure) : error(failure) {}
    explicit FileStamp(const struct stat& status);

    bool operator==(const FileStamp&) const = default;

    bool IsOfSameFile(const FileStamp& other) const {
        return error == 0 && other.error == 0 && device == other.device && number == other.number;
    }
    bool IsMissing() const;

    // Whether every change from `moment` on leaves another stamp.
    bool IsSettledAt(std::int64_t moment) const;
};

// The stamp of what lies at a path, links followed.
FileStamp StampOf(const std::string& path);

}  // namespace brevik::platform
