// Whether a file has changed since it was last looked at, at the price of one question about an
// open descriptor instead of a walk along a path.
//
// The descriptor is that of the file itself, or, while the file is missing, of the folder that it
// would appear in. What replaces, removes or renames a file changes the old one's link count or the
// time of its last change, which no program can set. Behind a symbolic link the path is asked each
// time. A folder above it that is renamed away goes unnoticed. Not safe on several threads at once.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>

namespace brevik::platform {

// What changes when a file or a folder does.
struct FileStamp {
    int error = -1;  // of asking for it; -1 when it has not been asked for
    dev_t device = 0;
    ino_t number = 0;
    nlink_t links = 0;
    off_t size = 0;
    std::int64_t modified = 0;  // nanoseconds from 1970
    std::int64_t changed = 0;

    FileStamp() = default;
    explicit FileStamp(int failure) : error(failure) {}
    explicit FileStamp(const struct stat& status);

    bool operator==(const FileStamp&) const = default;

    bool IsOfSameFile(const FileStamp& other) const {
        return error == 0 && other.error == 0 && device == other.device && number == other.number;
    }
    bool IsMissing() const;

    // Whether no change from `moment` on can leave the same stamp: stamps advance in steps.
    bool IsSettledAt(std::int64_t moment) const;
};

// The stamp of what lies at a path.
FileStamp StampOf(const std::string& path);

// The host's clock, in nanoseconds from 1970.
std::int64_t Now();

class FileWatch {
  public:
    explicit FileWatch(std::string path);
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;
    ~FileWatch() { Forget(); }

    // Looks at the file by its path, and begins to watch it. The result is its stamp.
    FileStamp Begin();

    // Call once the file has been read: false, and nothing is watched, when it may have changed
    // since Begin, or may still change without a sign.
    bool Settle();

    // Whether the file is certain to be as it was at the last Begin that settled.
    bool IsUnchanged() const {
        return isSettled_ && (isDirect_ ? Look() == watched_ : StampOf(path_) == file_);
    }

  private:
    FileStamp Look() const;
    void Forget();

    std::string path_;
    std::int64_t started_ = 0;
    FileStamp file_;     // by its path
    FileStamp watched_;  // of the descriptor
    int descriptor_ = -1;
    bool isDirect_ = false;  // whether the descriptor tells of the file
    bool isSettled_ = false;
};

}  // namespace brevik::platform
