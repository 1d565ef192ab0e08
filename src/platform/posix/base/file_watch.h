// Whether a file has changed since it was last looked at, for the price of one question about an
// open descriptor instead of a walk along a path.
//
// The descriptor is that of the file itself, or, while the file is missing, of the folder that it
// would appear in. What replaces, removes or renames a file changes the link count of the old one
// or the time of its last change. Through a symbolic link the path is asked each time. A rename of
// a folder above it goes unnoticed. Not safe on several threads at once.
#pragma once

#include <cstdint>
#include <string>

#include "platform/posix/base/file_stamp.h"

namespace brevik::platform {

class FileWatch {
  public:
    explicit FileWatch(std::string path) : path_(std::move(path)) {}
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;
    ~FileWatch() { Forget(); }

    // Looks at the file by its path, and begins to watch it. The result is its stamp.
    FileStamp Begin();

    // Call this once the file has been read: false, and nothing is watched, when it may have
    // changed since Begin, or when its next change might not show.
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
    bool isDirect_ = false;  // whether a change of the file shows at the descriptor
    bool isSettled_ = false;
};

}  // namespace brevik::platform
