// Keys and values of the registry in memory.
//
// A path begins with the name of its root, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE or HKEY_USERS, and
// has a backslash between two names. Names are the same when they are after upper-casing each unit,
// and keep the case they were first made with. Every `path` and `name` that is looked for here may
// be in any case.
//
// A tree belongs to one thread while it is changed; any number may read one that no longer changes.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/types.h"

namespace brevik::platform {

inline constexpr std::size_t kLongestKeyName = 255;      // units
inline constexpr std::size_t kLongestValueName = 16383;  // units
inline constexpr std::size_t kDeepestKey = 512;          // names below the root

// The form of a name in which it is compared.
PLATFORM_API std::u16string FoldRegistryName(std::u16string_view name);

// The form of a path in which it is compared: the folded units as bytes, the high one first, with a
// NUL for each backslash. No name holds a NUL, so each path sorts before all that are below it, and
// names sort by their units. Byte strings, unlike wide ones, are compared many bytes at a time.
PLATFORM_API std::string FoldRegistryPath(std::u16string_view path);

struct RegistryValue {
    std::u16string name;  // empty for the key's default value
    DWORD type = 0;
    std::string data;  // bytes; those of a text are UTF-16, little-endian

    PLATFORM_API bool IsText() const;
    bool operator==(const RegistryValue&) const = default;
};

struct PLATFORM_API RegistryKey {
    std::u16string path;
    std::map<std::u16string, RegistryValue> values;  // by folded name
    std::vector<const RegistryKey*> subKeys;         // see RegistryTree::ListSubKeys

    std::u16string_view Name() const {
        return std::u16string_view(path).substr(path.rfind(u'\\') + 1);
    }

    // Null when there is none.
    const RegistryValue* FindValue(std::u16string_view name) const;

    // Gives the value of this name, made where it is missing, this type and data.
    void SetValue(RegistryValue value);
    bool RemoveValue(std::u16string_view name);
};

class PLATFORM_API RegistryTree {
  public:
    // By folded path: every key is followed by all that are below it.
    using Keys = std::map<std::string, RegistryKey>;

    // With the roots alone, which are always there.
    RegistryTree();
    RegistryTree(const RegistryTree&) = delete;
    RegistryTree& operator=(const RegistryTree&) = delete;

    const Keys& AllKeys() const { return keys_; }

    // The key and all that are below it; an empty range for a key that is not there.
    std::pair<Keys::const_iterator, Keys::const_iterator> KeysFrom(std::u16string_view path) const;

    // Null when there is none.
    const RegistryKey* Find(std::u16string_view path) const;
    RegistryKey* Find(std::u16string_view path);
    const RegistryKey* FindFolded(const std::string& path) const;

    // The key, made with those above it where they are missing. REQUIRES: a path that
    // ParseRegistryPath gave.
    RegistryKey* Make(std::u16string_view path);

    // Removes the key with all below it. False for a key that is not there. REQUIRES: not a root.
    bool Remove(std::u16string_view path);

    // Fills in the sub keys of every key. They hold until a key is made or removed.
    void ListSubKeys();

    // The roots are not counted.
    std::size_t CountKeys() const;
    std::size_t CountValues() const;

    // What the paths of all keys take together, in units.
    std::size_t LengthOfPaths() const { return lengthOfPaths_; }

    // Lines of comment before the first key, without their line ends.
    std::vector<std::string> headComments;

  private:
    Keys keys_;
    std::size_t lengthOfPaths_ = 0;
};

// Reads a path that begins with the name of a root, HKEY_CLASSES_ROOT among them. Null, or why no
// key can have this path: another root, too many names, or one that is empty, too long, or cannot
// be written.
PLATFORM_API const char* ParseRegistryPath(std::u16string_view text, std::u16string* path);

// Whether a value may have this name: none that is too long or cannot be written.
PLATFORM_API bool IsRegistryValueName(std::u16string_view name);

}  // namespace brevik::platform
