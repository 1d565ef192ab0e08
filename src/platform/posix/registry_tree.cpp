#include "platform/posix/registry_tree.h"

#include <algorithm>
#include <utility>

#include "platform/text.h"

namespace brevik::platform {
namespace {

constexpr std::u16string_view kClassesRoot = u"HKEY_CLASSES_ROOT";
constexpr std::u16string_view kClassesKey = u"SOFTWARE\\Classes";

// Cuts the next name off a path.
std::u16string_view CutName(std::u16string_view* path) {
    const std::size_t end = std::min(path->find(u'\\'), path->size());
    const std::u16string_view name = path->substr(0, end);
    path->remove_prefix(std::min(end + 1, path->size()));
    return name;
}

// A line end would end the line that bears the name.
bool CanBeWritten(std::u16string_view name) {
    return name.find_first_of(std::u16string_view(u"\0\r\n", 3)) == name.npos;
}

const char* FaultOfName(std::u16string_view name) {
    return name.empty()                    ? "a key has no name"
           : name.size() > kLongestKeyName ? "the name of a key is too long"
           : !CanBeWritten(name)           ? "the name of a key holds a line end or a NUL"
                                           : nullptr;
}

const char* FaultOfNames(std::u16string_view keys) {
    std::size_t depth = 0;
    for (bool more = !keys.empty(); more;) {
        more = keys.find(u'\\') != keys.npos;
        if (const char* fault = FaultOfName(CutName(&keys)); fault != nullptr) {
            return fault;
        }
        if (++depth > kDeepestKey) {
            return "a key lies too deep";
        }
    }
    return nullptr;
}

bool FindRoot(std::u16string_view name, RegistryPath* path) {
    const std::u16string folded = FoldRegistryName(name);
    if (folded == kClassesRoot) {
        *path = {RegistryRoot::kLocalMachine, std::u16string(kClassesKey)};
        return true;
    }
    for (const RegistryRootName& row : kRegistryRoots) {
        if (folded == row.name) {
            *path = {row.root, {}};
            return true;
        }
    }
    return false;
}

}  // namespace

std::u16string FoldRegistryName(std::u16string_view name) {
    std::u16string folded(name);
    for (char16_t& unit : folded) {
        if (unit >= 0x80) {
            unit = towupper(unit);
        } else if (unit >= u'a' && unit <= u'z') {
            unit = static_cast<char16_t>(unit - u'a' + u'A');
        }
    }
    return folded;
}

RegistryKey* RegistryKey::FindChild(std::u16string_view folded) const {
    const auto found = children_.find(folded);
    return found != children_.end() ? found->second.get() : nullptr;
}

const RegistryValue* RegistryKey::FindValue(std::u16string_view folded) const {
    const auto found = values_.find(folded);
    return found != values_.end() ? &found->second : nullptr;
}

RegistryKey* RegistryKey::FindBelow(std::u16string_view foldedPath) {
    return const_cast<RegistryKey*>(std::as_const(*this).FindBelow(foldedPath));
}

const RegistryKey* RegistryKey::FindBelow(std::u16string_view foldedPath) const {
    const RegistryKey* key = this;
    while (key != nullptr && !foldedPath.empty()) {
        const std::u16string_view name = CutName(&foldedPath);
        key = name.empty() ? key : key->FindChild(name);
    }
    return key;
}

RegistryKey* RegistryKey::MakeChild(std::u16string_view name, bool* made) {
    auto [place, isNew] = children_.try_emplace(FoldRegistryName(name));
    if (isNew) {
        place->second = std::make_unique<RegistryKey>(name);
    }
    *made = isNew;
    return place->second.get();
}

bool RegistryKey::RemoveChild(std::u16string_view folded) {
    const auto found = children_.find(folded);
    if (found == children_.end()) {
        return false;
    }
    children_.erase(found);
    return true;
}

void RegistryKey::SetValue(RegistryValue value) {
    const auto [place, isNew] = values_.try_emplace(FoldRegistryName(value.name));
    if (!isNew) {
        value.name = std::move(place->second.name);
    }
    place->second = std::move(value);
}

bool RegistryKey::RemoveValue(std::u16string_view folded) {
    const auto found = values_.find(folded);
    if (found == values_.end()) {
        return false;
    }
    values_.erase(found);
    return true;
}

void RegistryKey::NumberChildren() {
    numbered_.clear();
    numbered_.reserve(children_.size());
    for (const auto& [folded, child] : children_) {
        child->NumberChildren();
        numbered_.push_back(child.get());
    }
}

const RegistryKey* RegistryKey::ChildAt(std::size_t place) const {
    return place < numbered_.size() ? numbered_[place] : nullptr;
}

std::size_t RegistryKey::CountEntries() const {
    std::size_t count = values_.size() + children_.size();
    for (const auto& [folded, child] : children_) {
        count += child->CountEntries();
    }
    return count;
}

bool RegistryKey::operator==(const RegistryKey& other) const {
    return name_ == other.name_ && values_ == other.values_ &&
           std::ranges::equal(children_, other.children_, [](const auto& left, const auto& right) {
               return *left.second == *right.second;
           });
}

bool ParseRegistryPath(std::u16string_view text, RegistryPath* path, std::string* reason) {
    const bool hasKeys = text.find(u'\\') != text.npos;
    if (!FindRoot(CutName(&text), path)) {
        *reason = "no root of the registry has this name";
        return false;
    }
    if (hasKeys) {
        path->keys += path->keys.empty() ? u"" : u"\\";
        path->keys += text;
    }
    const char* fault = hasKeys && text.empty() ? "a key has no name" : FaultOfNames(path->keys);
    *reason = fault != nullptr ? fault : "";
    return fault == nullptr;
}

bool IsRegistryValueName(std::u16string_view name) {
    return name.size() <= kLongestValueName && CanBeWritten(name);
}

RegistryKey* RegistryTree::Find(const RegistryPath& path) {
    return Root(path.root).FindBelow(FoldRegistryName(path.keys));
}

const RegistryKey* RegistryTree::Find(const RegistryPath& path) const {
    return Root(path.root).FindBelow(FoldRegistryName(path.keys));
}

RegistryKey* RegistryTree::Make(const RegistryPath& path) {
    RegistryKey* key = &Root(path.root);
    for (std::u16string_view rest = path.keys; !rest.empty();) {
        bool made = false;
        key = key->MakeChild(CutName(&rest), &made);
        countOfMade_ += made ? 1 : 0;
    }
    return key;
}

bool RegistryTree::Remove(const RegistryPath& path) {
    const std::u16string folded = FoldRegistryName(path.keys);
    const std::size_t slash = folded.rfind(u'\\');
    const std::size_t nameAt = slash == folded.npos ? 0 : slash + 1;
    RegistryKey* above = Root(path.root).FindBelow(folded.substr(0, nameAt));
    return above != nullptr && above->RemoveChild(folded.substr(nameAt));
}

std::size_t RegistryTree::CountEntries() const {
    std::size_t count = 0;
    for (const RegistryKey& root : roots_) {
        count += root.CountEntries();
    }
    return count;
}

void RegistryTree::NumberChildren() {
    for (RegistryKey& root : roots_) {
        root.NumberChildren();
    }
}

}  // namespace brevik::platform
