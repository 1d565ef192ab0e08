// Keys and values of the registry in memory.
//
// Names are the same when they are after `towupper` of each unit, keep the case they were first
// made with, and stand in the order of their upper-cased units. A tree belongs to one thread while
// it is built; one that no longer changes may be read by any number.
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace brevik::platform {

inline constexpr std::size_t kLongestKeyName = 255;      // units
inline constexpr std::size_t kLongestValueName = 16383;  // units
inline constexpr std::size_t kDeepestKey = 512;          // names below the root

// The form of a name, or of a path of names, in which it is compared.
PLATFORM_API std::u16string FoldRegistryName(std::u16string_view name);

struct RegistryValue {
    std::u16string name;  // empty for the key's default value
    DWORD type = 0;
    std::string data;  // bytes; those of a text are UTF-16, little-endian

    bool operator==(const RegistryValue&) const = default;
};

class PLATFORM_API RegistryKey {
  public:
    using Children = std::map<std::u16string, std::unique_ptr<RegistryKey>, std::less<>>;
    using Values = std::map<std::u16string, RegistryValue, std::less<>>;

    RegistryKey() = default;
    explicit RegistryKey(std::u16string_view name) : name_(name) {}
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;

    const std::u16string& Name() const { return name_; }

    // Both by folded name, in order.
    const Children& AllChildren() const { return children_; }
    const Values& AllValues() const { return values_; }

    // Null when there is none.
    RegistryKey* FindChild(std::u16string_view folded) const;
    const RegistryValue* FindValue(std::u16string_view folded) const;

    // The key below this one by a path of folded names with one or more backslashes between them;
    // null when there is none. The key itself for an empty path.
    RegistryKey* FindBelow(std::u16string_view foldedPath);
    const RegistryKey* FindBelow(std::u16string_view foldedPath) const;

    // The child of this name, made where it is missing; `made` tells which.
    RegistryKey* MakeChild(std::u16string_view name, bool* made);
    bool RemoveChild(std::u16string_view folded);

    // Gives the value's place, by its name, this type and data.
    void SetValue(RegistryValue value);
    bool RemoveValue(std::u16string_view folded);

    // Makes the children of this key and of all below it known by their place in the order, until
    // one is made or removed.
    void NumberChildren();

    // Null behind the last. REQUIRES: NumberChildren.
    const RegistryKey* ChildAt(std::size_t place) const;

    // Its values, and the keys below it with theirs.
    std::size_t CountEntries() const;

    // With all that is below.
    bool operator==(const RegistryKey& other) const;

  private:
    std::u16string name_;
    Children children_;
    Values values_;
    std::vector<const RegistryKey*> numbered_;
};

// HKEY_CLASSES_ROOT is none: it is a key of the local machine.
enum class RegistryRoot { kLocalMachine, kCurrentUser, kUsers };

struct RegistryPath {
    RegistryRoot root = RegistryRoot::kLocalMachine;
    std::u16string keys;  // with a backslash between two; empty for the root itself
};

// Reads a path that begins with the long name of a root, in any case of letters. False, with the
// reason, for another root, an empty name, one that is too long or cannot be written, or too many.
PLATFORM_API bool ParseRegistryPath(std::u16string_view text, RegistryPath* path,
                                    std::string* reason);

// Whether a value may have this name: none that is too long or cannot be written.
PLATFORM_API bool IsRegistryValueName(std::u16string_view name);

struct RegistryRootName {
    RegistryRoot root;
    std::u16string_view name;
};

// In the order in which roots are written.
inline constexpr RegistryRootName kRegistryRoots[] = {
    {RegistryRoot::kCurrentUser, u"HKEY_CURRENT_USER"},
    {RegistryRoot::kLocalMachine, u"HKEY_LOCAL_MACHINE"},
    {RegistryRoot::kUsers, u"HKEY_USERS"},
};

class PLATFORM_API RegistryTree {
  public:
    RegistryTree() = default;
    RegistryTree(const RegistryTree&) = delete;
    RegistryTree& operator=(const RegistryTree&) = delete;

    RegistryKey& Root(RegistryRoot root) { return roots_[static_cast<std::size_t>(root)]; }
    const RegistryKey& Root(RegistryRoot root) const {
        return roots_[static_cast<std::size_t>(root)];
    }

    // Null when there is none.
    RegistryKey* Find(const RegistryPath& path);
    const RegistryKey* Find(const RegistryPath& path) const;

    // The key, made with those above it where they are missing.
    RegistryKey* Make(const RegistryPath& path);

    // Removes the key with all below it. False for a root, and for what is not there.
    bool Remove(const RegistryPath& path);

    void NumberChildren();

    // Keys and values, the roots not counted.
    std::size_t CountEntries() const;

    // How many keys Make has made.
    std::size_t CountOfMade() const { return countOfMade_; }

    // Lines of comment in front of the first key, without their line ends.
    std::vector<std::string>& HeadComments() { return headComments_; }
    const std::vector<std::string>& HeadComments() const { return headComments_; }

    bool operator==(const RegistryTree& other) const {
        return roots_ == other.roots_ && headComments_ == other.headComments_;
    }

  private:
    std::array<RegistryKey, std::size(kRegistryRoots)> roots_;
    std::size_t countOfMade_ = 0;
    std::vector<std::string> headComments_;
};

}  // namespace brevik::platform
