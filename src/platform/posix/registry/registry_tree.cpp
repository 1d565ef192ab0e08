#include "platform/posix/registry/registry_tree.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/posix/text/host_text.h"
#include "platform/registry.h"

namespace brevik::platform {
namespace {

constexpr std::u16string_view kRoots[] = {u"HKEY_CURRENT_USER", u"HKEY_LOCAL_MACHINE",
                                          u"HKEY_USERS"};
constexpr std::u16string_view kClassesRoot = u"HKEY_CLASSES_ROOT";
constexpr std::u16string_view kClassesKey = u"HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes";

// A line end would end the line that holds the name.
bool CanBeWritten(std::u16string_view name) {
    return name.find_first_of(std::u16string_view(u"\0\r\n", 3)) == name.npos;
}

}  // namespace

std::u16string FoldRegistryName(std::u16string_view name) {
    return UpperCase(name);
}

std::string FoldRegistryPath(std::u16string_view path) {
    std::string folded;
    folded.reserve(path.size() * sizeof(char16_t));
    for (char16_t unit : FoldRegistryName(path)) {
        unit = unit == u'\\' ? u'\0' : unit;
        folded += static_cast<char>(unit >> 8);
        folded += static_cast<char>(unit & 0xFF);
    }
    return folded;
}

bool RegistryValue::IsText() const {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

const RegistryValue* RegistryKey::FindValue(std::u16string_view name) const {
    const auto found = values.find(FoldRegistryName(name));
    return found != values.end() ? &found->second : nullptr;
}

void RegistryKey::SetValue(RegistryValue value) {
    const auto [place, isNew] = values.try_emplace(FoldRegistryName(value.name));
    if (!isNew) {
        value.name = std::move(place->second.name);
    }
    place->second = std::move(value);
}

bool RegistryKey::RemoveValue(std::u16string_view name) {
    return values.erase(FoldRegistryName(name)) != 0;
}

RegistryTree::RegistryTree() {
    for (const std::u16string_view root : kRoots) {
        keys_[FoldRegistryPath(root)].path = root;
    }
}

std::pair<RegistryTree::Keys::const_iterator, RegistryTree::Keys::const_iterator>
RegistryTree::KeysFrom(std::u16string_view path) const {
    const std::string folded = FoldRegistryPath(path);
    const auto first = keys_.find(folded);
    // The first path that could follow those with the folded backslash.
    const std::string end = folded + std::string("\0\1", 2);
    return {first, first != keys_.end() ? keys_.lower_bound(end) : first};
}

const RegistryKey* RegistryTree::FindFolded(const std::string& path) const {
    const auto found = keys_.find(path);
    return found != keys_.end() ? &found->second : nullptr;
}

const RegistryKey* RegistryTree::Find(std::u16string_view path) const {
    return FindFolded(FoldRegistryPath(path));
}

RegistryKey* RegistryTree::Find(std::u16string_view path) {
    return const_cast<RegistryKey*>(std::as_const(*this).Find(path));
}

RegistryKey* RegistryTree::Make(std::u16string_view path) {
    std::string folded = FoldRegistryPath(path);
    const auto next = keys_.lower_bound(folded);
    if (next != keys_.end() && next->first == folded) {
        return &next->second;
    }
    const std::size_t end = path.rfind(u'\\');
    const RegistryKey* above = Make(path.substr(0, end));
    RegistryKey& key = keys_.try_emplace(next, std::move(folded))->second;
    key.path.append(above->path).append(path.substr(end));
    lengthOfPaths_ += path.size();
    return &key;
}

bool RegistryTree::Remove(std::u16string_view path) {
    const auto [first, last] = KeysFrom(path);
    const bool isThere = first != last;
    for (auto key = first; key != last; ++key) {
        lengthOfPaths_ -= key->second.path.size();
    }
    keys_.erase(first, last);
    return isThere;
}

void RegistryTree::ListSubKeys() {
    std::vector<RegistryKey*> above;
    for (auto& [folded, key] : keys_) {
        key.subKeys.clear();
        above.resize(static_cast<std::size_t>(std::ranges::count(key.path, u'\\')));
        if (!above.empty()) {
            above.back()->subKeys.push_back(&key);
        }
        above.push_back(&key);
    }
}

std::size_t RegistryTree::CountKeys() const {
    return keys_.size() - std::size(kRoots);
}

std::size_t RegistryTree::CountValues() const {
    std::size_t count = 0;
    for (const auto& [folded, key] : keys_) {
        count += key.values.size();
    }
    return count;
}

const char* ParseRegistryPath(std::u16string_view text, std::u16string* path) {
    const std::size_t endOfRoot = std::min(text.find(u'\\'), text.size());
    *path = FoldRegistryName(text.substr(0, endOfRoot));
    if (*path == kClassesRoot) {
        *path = kClassesKey;
    } else if (std::ranges::find(kRoots, *path) == std::end(kRoots)) {
        return "no root of the registry has this name";
    }
    path->append(text.substr(endOfRoot));
    std::size_t depth = 0;
    for (std::size_t end = path->find(u'\\'); end != path->npos;) {
        const std::size_t start = end + 1;
        end = path->find(u'\\', start);
        const std::u16string_view name = std::u16string_view(*path).substr(start, end - start);
        if (name.empty()) {
            return "a key has no name";
        }
        if (name.size() > kLongestKeyName) {
            return "the name of a key is too long";
        }
        if (!CanBeWritten(name)) {
            return "the name of a key holds a line end or a NUL";
        }
        if (++depth > kDeepestKey) {
            return "a key lies too deep";
        }
    }
    return nullptr;
}

bool IsRegistryValueName(std::u16string_view name) {
    return name.size() <= kLongestValueName && CanBeWritten(name);
}

}  // namespace brevik::platform
