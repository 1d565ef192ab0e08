#include "platform/posix/registry_snapshot.h"

#include <sys/stat.h>
#include <time.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <utility>

#include "platform/debugger.h"
#include "platform/posix/machine.h"
#include "platform/posix/registry_text.h"
#include "platform/posix/shared_text_file.h"

namespace brevik::platform {
namespace {

constexpr std::int64_t kNanosecondsOfSecond = 1'000'000'000;

// Twice the coarsest step in which a kernel's time stamps advance.
constexpr std::int64_t kSettlingNanoseconds = 20'000'000;

std::int64_t Nanoseconds(const timespec& time) {
    return time.tv_sec * kNanosecondsOfSecond + time.tv_nsec;
}

std::int64_t Now() {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return Nanoseconds(now);
}

// What changes when the file does.
struct FileStamp {
    int error = -1;  // of asking for it; -1 when it has not been asked for
    dev_t device = 0;
    ino_t number = 0;
    off_t size = 0;
    std::int64_t modified = 0;
    std::int64_t changed = 0;

    bool operator==(const FileStamp&) const = default;

    // Whether no change from `moment` on can leave the same stamp: stamps advance in steps. The
    // time of the last change is one that no program can set.
    bool IsSettledAt(std::int64_t moment) const {
        return error != 0 || std::abs(moment - changed) > kSettlingNanoseconds;
    }
};

FileStamp StampOf(const std::string& path) {
    FileStamp stamp;
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
        stamp.error = errno;
        return stamp;
    }
    stamp.error = 0;
    stamp.device = status.st_dev;
    stamp.number = status.st_ino;
    stamp.size = status.st_size;
    stamp.modified = Nanoseconds(status.st_mtim);
    stamp.changed = Nanoseconds(status.st_ctim);
    return stamp;
}

FILETIME FileTime(std::int64_t nanoseconds) {
    constexpr std::int64_t kSecondsFrom1601To1970 = 11'644'473'600;
    const auto steps =
        static_cast<std::uint64_t>(nanoseconds / 100 + kSecondsFrom1601To1970 * 10'000'000);
    return {static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
}

// One look at the file.
struct FileReading {
    FileStamp stamp;
    bool isSettled = false;  // whether the file is as read for as long as it has this stamp
    DWORD error = NO_ERROR;
    std::string text;
    std::size_t hash = 0;  // of the text

    bool IsSameAs(const FileReading& other) const {
        return stamp == other.stamp && error == other.error && hash == other.hash;
    }
};

bool IsMissing(const FileStamp& stamp) {
    return stamp.error == ENOENT || stamp.error == ENOTDIR;
}

FileReading ReadRegistryFile(const std::string& path) {
    FileReading reading;
    const std::int64_t start = Now();
    reading.stamp = StampOf(path);
    reading.isSettled = reading.stamp.IsSettledAt(start);
    if (reading.stamp.error != 0) {
        reading.error = IsMissing(reading.stamp) ? NO_ERROR : ERROR_ACCESS_DENIED;
        return reading;
    }
    if (static_cast<std::uint64_t>(reading.stamp.size) > kLargestRegistryText) {
        reading.error = ERROR_INVALID_DATA;
        return reading;
    }
    reading.error = SharedTextFile(path).Read(&reading.text);
    reading.hash = std::hash<std::string>()(reading.text);
    // A reading that failed, or went on while the file changed, is no lasting answer.
    reading.isSettled =
        reading.isSettled && reading.error == NO_ERROR && StampOf(path) == reading.stamp;
    return reading;
}

class RegistryCache {
  public:
    static RegistryCache& Current() {
        // Never destroyed: a thread may still ask while the process ends.
        static RegistryCache& cache = *new RegistryCache;
        return cache;
    }

    std::shared_ptr<const RegistrySnapshot> Newest() {
        const FileStamp stamp = StampOf(path_);
        const std::lock_guard lock(mutex_);
        // Another thread may have read a newer file since.
        if (!IsCurrent(stamp) && !IsCurrent(StampOf(path_))) {
            Refresh();
        }
        return snapshot_;
    }

  private:
    bool IsCurrent(const FileStamp& stamp) const {
        return reading_.isSettled && reading_.stamp == stamp;
    }

    void Refresh() {
        FileReading reading = ReadRegistryFile(path_);
        const bool isNews = !reading.IsSameAs(reading_);
        const std::string text = std::exchange(reading.text, {});
        reading_ = std::move(reading);
        if (isNews) {
            Adopt(text);
        }
    }

    void Adopt(const std::string& text) {
        RegistryFault fault{path_, 0, {}};
        if (reading_.error != NO_ERROR) {
            fault.reason =
                reading_.error == ERROR_INVALID_DATA ? kTooLargeRegistryText : "cannot be read";
            Refuse(fault);
            return;
        }
        const auto snapshot = std::make_shared<RegistrySnapshot>();
        if (!IsMissing(reading_.stamp)) {
            if (!MergeRegistryText(text, &snapshot->tree, &fault)) {
                Refuse(fault);
                return;
            }
            snapshot->tree.NumberChildren();
            snapshot->lastWrite = FileTime(reading_.stamp.modified);
        }
        snapshot_ = snapshot;
        isAnyRead_ = true;
    }

    void Refuse(const RegistryFault& fault) const {
        const char* consequence =
            isAnyRead_ ? "what was read before stays in force" : "the registry is empty";
        const std::string line = "Registry refused: " + fault.Text() + "; " + consequence + "\n";
        OutputDebugStringA(line.c_str());
    }

    const std::string path_ = RegistryFilePath();
    std::mutex mutex_;
    FileReading reading_;  // the last one, without its text
    std::shared_ptr<const RegistrySnapshot> snapshot_ = std::make_shared<RegistrySnapshot>();
    bool isAnyRead_ = false;
};

}  // namespace

std::shared_ptr<const RegistrySnapshot> NewestRegistry() {
    return RegistryCache::Current().Newest();
}

const std::string& RegistryFilePath() {
    // Never destroyed: a thread may still ask while the process ends.
    static const std::string& path =
        *new std::string(Machine::Current().Folder() + "/registry.reg");
    return path;
}

}  // namespace brevik::platform
