#include "platform/posix/registry/registry_snapshot.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <utility>

#include "platform/debugger.h"
#include "platform/never_destroyed.h"
#include "platform/posix/base/shared_text_file.h"
#include "platform/posix/base/stamped.h"
#include "platform/posix/machine/machine.h"
#include "platform/posix/registry/registry_text.h"

namespace brevik::platform {
namespace {

// One look at the file.
struct FileReading {
    FileStamp stamp;
    DWORD error = NO_ERROR;
    std::string text;
    std::size_t hash = 0;  // of the text

    bool IsSameAs(const FileReading& other) const {
        return stamp == other.stamp && error == other.error && hash == other.hash;
    }
};

FileReading ReadRegistryFile(const std::string& path, const FileStamp& stamp) {
    FileReading reading;
    reading.stamp = stamp;
    if (stamp.error != 0) {
        reading.error = stamp.IsMissing() ? NO_ERROR : ERROR_ACCESS_DENIED;
        return reading;
    }
    if (static_cast<std::uint64_t>(stamp.size) > kLargestRegistryText) {
        reading.error = ERROR_INVALID_DATA;
        return reading;
    }
    reading.error = SharedTextFile(path).Read(&reading.text);
    reading.hash = std::hash<std::string>()(reading.text);
    return reading;
}

class RegistryCache {
  public:
    static RegistryCache& Current() {
        static NeverDestroyed<RegistryCache> cache;
        return *cache;
    }

    std::shared_ptr<const RegistrySnapshot> Newest() {
        const std::lock_guard lock(mutex_);
        if (!isLasting_ || !seen_.AreUnchanged()) {
            Refresh();
        }
        return snapshot_;
    }

  private:
    void Refresh() {
        isLasting_ = false;
        seen_ = SeenFiles();
        const FileStamp stamp = StampOf(path_);
        seen_.Add(path_, stamp);
        FileReading reading = ReadRegistryFile(path_, stamp);
        // A reading that failed, or went on while the file changed, is no lasting answer.
        const bool isLasting =
            reading.error == NO_ERROR && seen_.AreSettled() && seen_.AreUnchanged();
        if (!reading.IsSameAs(reading_)) {
            Adopt(reading);
            reading.text.clear();
            reading_ = std::move(reading);
        }
        isLasting_ = isLasting;
    }

    void Adopt(const FileReading& reading) {
        const bool isTooLarge = reading.error == ERROR_INVALID_DATA;
        RegistryFault fault{path_, 0, isTooLarge ? kTooLargeRegistryText : "cannot be read"};
        const auto snapshot = std::make_shared<RegistrySnapshot>();
        if (reading.error != NO_ERROR) {
            Refuse(fault, isTooLarge ? NO_ERROR : reading.error);
        } else if (!reading.stamp.IsMissing() &&
                   !MergeRegistryText(reading.text, &snapshot->tree, &fault)) {
            Refuse(fault, NO_ERROR);
        } else {
            snapshot_ = snapshot;
            isAnyRead_ = true;
        }
    }

    void Refuse(const RegistryFault& fault, DWORD error) {
        if (!isAnyRead_) {
            const auto empty = std::make_shared<RegistrySnapshot>();
            empty->error = error;
            snapshot_ = empty;
        }
        const char* consequence =
            isAnyRead_ ? "what was read before stays in force" : "the registry is empty";
        const std::string line = "Registry refused: " + fault.Text() + "; " + consequence + "\n";
        OutputDebugStringA(line.c_str());
    }

    const std::string path_ = RegistryFilePath();
    std::mutex mutex_;
    SeenFiles seen_;
    bool isLasting_ = false;  // whether the reading holds for as long as the file is unchanged
    FileReading reading_;     // the last one, without its text
    std::shared_ptr<const RegistrySnapshot> snapshot_ = std::make_shared<RegistrySnapshot>();
    bool isAnyRead_ = false;
};

}  // namespace

std::shared_ptr<const RegistrySnapshot> NewestRegistry() {
    if (!Machine::Current().IsKnown()) {
        const auto unknown = std::make_shared<RegistrySnapshot>();
        unknown->error = ERROR_ACCESS_DENIED;
        return unknown;
    }
    return RegistryCache::Current().Newest();
}

std::string RegistryFilePath() {
    return Machine::Current().Folder() + "/registry.reg";
}

}  // namespace brevik::platform
