// A registry file as those see it who write it: read whole, changed as a tree, replaced whole.
//
// Writers take turns by a lock, so that none loses another's change; readers see the old file or
// the new one. What a writer leaves has all keys and values, and the comments at the head of the
// file; other comments, the older forms and other orders are not kept. A missing or empty file is
// an empty registry. Every user of the machine may read what is written. Any number of threads may
// use one object.
//
// Results are error numbers: 0; 13 for a malformed file, or one beyond the bounds, told in `fault`;
// 2 for a key, value or file that is not there; 87 for a name that a value cannot have and for
// removing a root; and those of the host, such as 5 and 112. With an error the file stays as it
// was.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/errors.h"
#include "platform/posix/registry_text.h"
#include "platform/posix/registry_tree.h"
#include "platform/posix/shared_text_file.h"

namespace brevik::platform {

class PLATFORM_API RegistryFile {
  public:
    explicit RegistryFile(std::string path) : file_(std::move(path), kMode) {}

    static RegistryFile OfMachine();

    const std::string& Path() const { return file_.Path(); }

    // REQUIRES: the tree is new.
    DWORD Read(RegistryTree* tree, RegistryFault* fault) const;

    // Has `change` work on the tree, and writes it. An error of `change` is the result.
    DWORD Update(const std::function<DWORD(RegistryTree* tree)>& change,
                 RegistryFault* fault) const;

    // Makes the key where it is missing.
    DWORD SetValue(const RegistryPath& key, const RegistryValue& value, RegistryFault* fault) const;
    DWORD DeleteValue(const RegistryPath& key, std::u16string_view name,
                      RegistryFault* fault) const;

    // With all that is below.
    DWORD DeleteKey(const RegistryPath& key, RegistryFault* fault) const;

    // Does what the text of another file says: sets its values, and deletes what it deletes.
    DWORD Import(const std::string& path, RegistryFault* fault) const;

    // The text of the key with all below it; of the whole registry without one.
    DWORD Export(const RegistryPath* key, std::string* text, RegistryFault* fault) const;

  private:
    static constexpr mode_t kMode = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;

    SharedTextFile file_;
};

}  // namespace brevik::platform
