// A small text file of the machine that several programs read and replace whole.
//
// A writer holds the file's WriteLock from its reading to its replacing, and puts the new text in
// place by renaming once it is on the disk: readers need no lock, and after a crash the file is the
// old one or the new one. A file PATH.new that a killed writer left is replaced by the next one.
// Of a symbolic link the target is replaced, and the lock lies beside that.
//
// An empty path is that of a file without a place: every operation returns ERROR_PATH_NOT_FOUND.
// Any number of threads may use one object.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <functional>
#include <string>

#include "platform/errors.h"
#include "platform/posix/base/write_lock.h"

namespace brevik::platform {

class PLATFORM_API SharedTextFile {
  public:
    // `mode` is that of the files that take its place.
    explicit SharedTextFile(std::string path, mode_t mode = S_IRUSR | S_IWUSR)
        : path_(std::move(path)), mode_(mode) {}

    const std::string& Path() const { return path_; }

    // The longest text, in bytes: a file of any size must not fill the memory of a host.
    static constexpr std::size_t kLongestText = std::size_t{64} << 20;

    // The file's bytes; of a missing file, none. NO_ERROR; ERROR_ACCESS_DENIED also for what is no
    // plain file, ERROR_INVALID_DATA where it is longer than the longest text, others of the host.
    DWORD Read(std::string* text) const;

    // Reads the file, has `change` work on the bytes, and replaces the file when they are others
    // then. An error of `change` is the result, and the file stays; further ones are those of the
    // lock and of Read, ERROR_PATH_NOT_FOUND for a missing folder, and others of the host.
    DWORD Update(const std::function<DWORD(std::string* text)>& change) const;

  private:
    friend class LockedTextFile;

    std::string path_;
    mode_t mode_;
};

// An update in several steps: what is read after Lock is what is changed. Links are followed once,
// so that the file which is replaced is the one that is locked. One thread.
class PLATFORM_API LockedTextFile {
  public:
    // Until the object ends. The errors are those of an update.
    // REQUIRES: it has not been called.
    DWORD Lock(const SharedTextFile& file);

    // REQUIRES: the lock.
    DWORD Read(std::string* text) const;
    DWORD Update(const std::function<DWORD(std::string* text)>& change) const;

  private:
    std::string path_;
    mode_t mode_ = 0;
    WriteLock lock_;
};

}  // namespace brevik::platform
