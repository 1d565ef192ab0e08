// A small text file of the machine that several programs read and replace whole.
//
// A writer holds a lock on the file PATH.lock from its reading to its replacing, so that no two of
// them lose each other's changes, and puts the new text in place by renaming, so that readers need
// no lock and never see half of it. A writer that is killed leaves the old text or the new one, and
// perhaps a file PATH.new, which the next writer replaces. One that is stopped makes the others
// fail instead of wait.
//
// Where the path is a symbolic link, the file that it leads to is replaced, and the lock lies
// beside that.
//
// Threads: any number may use one object. The disk is not flushed: after a loss of power the file
// may be an older one.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "platform/errors.h"

namespace brevik::platform {

class PLATFORM_API SharedTextFile {
  public:
    explicit SharedTextFile(std::string path) : path_(std::move(path)) {}

    const std::string& Path() const { return path_; }

    // The longest text, in bytes: a file of any size must not fill the memory of a host.
    static constexpr std::size_t kLongestText = std::size_t{64} << 20;

    // The file's bytes; of a missing file, none. NO_ERROR; 5 where it may not be read or is no
    // plain file, 13 where it is longer than the longest text.
    DWORD Read(std::string* text) const;

    // Reads the file, has `change` work on the bytes, and replaces the file, mode 0600, when they
    // are others then. An error of `change` is the result, and the file stays; further ones are 3
    // for a missing folder, 5 where it may not be written, 13 where the file or its new text is
    // longer than the longest text, 32 when another writer holds the lock for two seconds, 112 for
    // a full disk, 31 for any other failure.
    DWORD Update(const std::function<DWORD(std::string* text)>& change) const;

  private:
    std::string path_;
};

}  // namespace brevik::platform
