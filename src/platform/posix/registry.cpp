#include "platform/registry.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "platform/handles.h"
#include "platform/posix/handle.h"
#include "platform/posix/host_text.h"
#include "platform/posix/registry_snapshot.h"

namespace brevik::platform {
namespace {

constexpr LONG kKeyDeleted = 1018;

constexpr REGSAM kMaximumAllowed = 0x02000000;
constexpr REGSAM kGenericAll = 0x10000000;
constexpr REGSAM kGenericRead = 0x80000000;

constexpr std::u16string_view kSoftware = u"SOFTWARE";
constexpr std::u16string_view kViewOf32Bits = u"WOW6432NODE";

// Where a key stands, as the caller named it: in its newest state the registry may have another key
// for it, or none.
struct KeyPlace {
    RegistryRoot root = RegistryRoot::kLocalMachine;
    std::u16string path;  // folded, one backslash between two names
    bool asItStands = false;
};

// What a handle stands for. It never changes.
struct OpenKey : HandleObject {
    KeyPlace place;
    REGSAM access = 0;
    bool isPredefined = false;
};

std::shared_ptr<const OpenKey> MakePredefined(RegistryRoot root, std::u16string_view path) {
    const auto key = std::make_shared<OpenKey>();
    key->place = {root, std::u16string(path)};
    key->access = KEY_READ;
    key->isPredefined = true;
    return key;
}

struct PredefinedKey {
    HKEY handle;
    std::shared_ptr<const OpenKey> key;
};

std::shared_ptr<const OpenKey> FindPredefined(HKEY handle) {
    // Never destroyed: a thread may still ask while the process ends.
    static const auto& keys = *new const std::array<PredefinedKey, 4>{{
        {HKEY_CLASSES_ROOT, MakePredefined(RegistryRoot::kLocalMachine, u"SOFTWARE\\CLASSES")},
        {HKEY_CURRENT_USER, MakePredefined(RegistryRoot::kCurrentUser, {})},
        {HKEY_LOCAL_MACHINE, MakePredefined(RegistryRoot::kLocalMachine, {})},
        {HKEY_USERS, MakePredefined(RegistryRoot::kUsers, {})},
    }};
    for (const PredefinedKey& row : keys) {
        if (row.handle == handle) {
            return row.key;
        }
    }
    return nullptr;
}

// Null for what is no handle on a key.
std::shared_ptr<const OpenKey> FindOpenKey(HKEY handle) {
    std::shared_ptr<const OpenKey> predefined = FindPredefined(handle);
    return predefined ? predefined : FindHandle<OpenKey>(handle);
}

REGSAM GrantedAccess(REGSAM asked) {
    const bool isGeneral = (asked & (kMaximumAllowed | kGenericAll | kGenericRead)) != 0;
    return isGeneral ? asked | KEY_READ : asked;
}

void AppendFolded(std::u16string_view subKey, std::u16string* path) {
    for (const char16_t unit : FoldRegistryName(subKey)) {
        const bool isEmptyName = unit == u'\\' && (path->empty() || path->back() == u'\\');
        if (!isEmptyName) {
            *path += unit;
        }
    }
    if (path->ends_with(u'\\')) {
        path->pop_back();
    }
}

KeyPlace PlaceBelow(const KeyPlace& parent, std::u16string_view subKey, REGSAM access) {
    KeyPlace place{parent.root, {}, parent.asItStands};
    place.path.reserve(parent.path.size() + 1 + subKey.size());
    place.path = parent.path;
    if (!place.path.empty()) {
        place.path += u'\\';
    }
    AppendFolded(subKey, &place.path);
    if ((access & (KEY_WOW64_64KEY | KEY_WOW64_32KEY)) != 0) {
        place.asItStands = (access & KEY_WOW64_64KEY) != 0;
    }
    return place;
}

// Null when there is no such key.
const RegistryKey* FindKey(const RegistryTree& tree, const KeyPlace& place) {
    const RegistryKey& root = tree.Root(place.root);
    const std::u16string_view path = place.path;
    const bool hasTwoViews = place.root == RegistryRoot::kLocalMachine && !place.asItStands &&
                             path.size() > kSoftware.size() && path.starts_with(kSoftware) &&
                             path[kSoftware.size()] == u'\\';
    if (hasTwoViews) {
        const RegistryKey* software = root.FindChild(kSoftware);
        const RegistryKey* view =
            software != nullptr ? software->FindChild(kViewOf32Bits) : nullptr;
        const RegistryKey* key =
            view != nullptr ? view->FindBelow(path.substr(kSoftware.size() + 1)) : nullptr;
        if (key != nullptr) {
            return key;
        }
    }
    return root.FindBelow(path);
}

// The same for a key that was open: a predefined one is always there.
const RegistryKey* FindKey(const RegistrySnapshot& registry, const OpenKey& key) {
    // Never destroyed: a thread may still ask while the process ends.
    static const RegistryKey& empty = *new RegistryKey;
    const RegistryKey* found = FindKey(registry.tree, key.place);
    return found != nullptr || !key.isPredefined ? found : &empty;
}

bool IsText(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

// How many zero bytes a stored text lacks for its units to be whole and the last one a NUL. Data
// without any byte counts as complete.
std::size_t MissingBytes(const RegistryValue& value) {
    const std::string& data = value.data;
    if (!IsText(value.type) || data.empty() ||
        (data.size() % 2 == 0 && data.ends_with(std::string_view("\0\0", 2)))) {
        return 0;
    }
    return data.size() % 2 + sizeof(WCHAR);
}

// The data of a text with its NUL in the narrow code page; of any other value, as it is.
std::string NarrowData(const RegistryValue& value) {
    if (!IsText(value.type)) {
        return value.data;
    }
    std::string bytes = value.data;
    bytes.resize(bytes.size() + MissingBytes(value));
    std::u16string text(bytes.size() / sizeof(char16_t), u'\0');
    std::memcpy(text.data(), bytes.data(), bytes.size());
    return Utf8FromWide(text);
}

// Hands `data` out; a caller that gives no buffer asks for the size.
LONG GiveData(std::string_view data, BYTE* buffer, DWORD* size) {
    if (size == nullptr) {
        return ERROR_SUCCESS;
    }
    const DWORD room = *size;
    *size = static_cast<DWORD>(data.size());
    if (buffer == nullptr) {
        return ERROR_SUCCESS;
    }
    if (room < data.size()) {
        return ERROR_MORE_DATA;
    }
    std::copy(data.begin(), data.end(), buffer);
    return ERROR_SUCCESS;
}

LONG GiveWide(const RegistryValue& value, BYTE* buffer, DWORD* size) {
    const std::size_t missing = MissingBytes(value);
    const bool fitsAsItIs = buffer != nullptr && size != nullptr && *size >= value.data.size() &&
                            *size < value.data.size() + missing;
    if (missing == 0 || fitsAsItIs) {
        return GiveData(value.data, buffer, size);
    }
    return GiveData(value.data + std::string(missing, '\0'), buffer, size);
}

// Calls `give` with the value once everything else is known to be right.
template <typename Give>
LONG QueryValue(HKEY handle, std::u16string_view name, const DWORD* reserved, DWORD* type,
                const BYTE* data, const DWORD* size, Give give) {
    const std::shared_ptr<const OpenKey> key = FindOpenKey(handle);
    if (!key) {
        return ERROR_INVALID_HANDLE;
    }
    if (reserved != nullptr || (data != nullptr && size == nullptr)) {
        return ERROR_INVALID_PARAMETER;
    }
    if ((key->access & KEY_QUERY_VALUE) == 0) {
        return ERROR_ACCESS_DENIED;
    }
    const std::shared_ptr<const RegistrySnapshot> registry = NewestRegistry();
    const RegistryKey* found = FindKey(*registry, *key);
    if (found == nullptr) {
        return kKeyDeleted;
    }
    const RegistryValue* value = found->FindValue(FoldRegistryName(name));
    if (value == nullptr) {
        return ERROR_FILE_NOT_FOUND;
    }
    if (type != nullptr) {
        *type = value->type;
    }
    return give(*value);
}

}  // namespace

LONG RegOpenKeyExW(HKEY parent, const WCHAR* subKey, DWORD, REGSAM access, HKEY* key) {
    const std::shared_ptr<const OpenKey> above = FindOpenKey(parent);
    if (!above) {
        return ERROR_INVALID_HANDLE;
    }
    constexpr REGSAM kBothViews = KEY_WOW64_64KEY | KEY_WOW64_32KEY;
    if (key == nullptr || (access & kBothViews) == kBothViews) {
        return ERROR_INVALID_PARAMETER;
    }
    const std::u16string_view path = subKey != nullptr ? subKey : u"";
    if (path.starts_with(u'\\')) {
        return ERROR_BAD_PATHNAME;
    }
    if (path.empty() && above->isPredefined) {
        *key = parent;
        return ERROR_SUCCESS;
    }
    KeyPlace place = PlaceBelow(above->place, path, access);
    const std::shared_ptr<const RegistrySnapshot> registry = NewestRegistry();
    if (registry->error != NO_ERROR) {
        return static_cast<LONG>(registry->error);
    }
    if (FindKey(registry->tree, place) == nullptr) {
        return FindKey(*registry, *above) != nullptr ? LONG{ERROR_FILE_NOT_FOUND} : kKeyDeleted;
    }
    const auto opened = std::make_shared<OpenKey>();
    opened->place = std::move(place);
    opened->access = GrantedAccess(access);
    const HANDLE handle = OpenHandle(opened);
    if (handle == nullptr) {
        return ERROR_NO_SYSTEM_RESOURCES;
    }
    *key = static_cast<HKEY>(handle);
    return ERROR_SUCCESS;
}

LONG RegCloseKey(HKEY key) {
    if (FindPredefined(key)) {
        return ERROR_SUCCESS;
    }
    if (!FindHandle<OpenKey>(key)) {
        return ERROR_INVALID_HANDLE;
    }
    const DWORD callersError = GetLastError();
    const bool isClosed = CloseHandle(key) != FALSE;
    SetLastError(callersError);
    return isClosed ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

LONG RegEnumKeyExW(HKEY handle, DWORD index, WCHAR* name, DWORD* length, DWORD* reserved,
                   WCHAR* className, DWORD* classLength, FILETIME* lastWrite) {
    const std::shared_ptr<const OpenKey> key = FindOpenKey(handle);
    if (!key) {
        return ERROR_INVALID_HANDLE;
    }
    if (name == nullptr || length == nullptr || reserved != nullptr ||
        (className != nullptr && classLength == nullptr)) {
        return ERROR_INVALID_PARAMETER;
    }
    if ((key->access & KEY_ENUMERATE_SUB_KEYS) == 0) {
        return ERROR_ACCESS_DENIED;
    }
    const std::shared_ptr<const RegistrySnapshot> registry = NewestRegistry();
    const RegistryKey* found = FindKey(*registry, *key);
    if (found == nullptr) {
        return kKeyDeleted;
    }
    const RegistryKey* child = found->ChildAt(index);
    if (child == nullptr) {
        return ERROR_NO_MORE_ITEMS;
    }
    const std::u16string& childName = child->Name();
    if (childName.size() >= *length) {
        return ERROR_MORE_DATA;
    }
    *std::copy(childName.begin(), childName.end(), name) = u'\0';
    *length = static_cast<DWORD>(childName.size());
    // No key has a class.
    if (className != nullptr && *classLength > 0) {
        *className = u'\0';
    }
    if (classLength != nullptr) {
        *classLength = 0;
    }
    if (lastWrite != nullptr) {
        *lastWrite = registry->lastWrite;
    }
    return ERROR_SUCCESS;
}

LONG RegQueryValueExW(HKEY key, const WCHAR* name, DWORD* reserved, DWORD* type, BYTE* data,
                      DWORD* size) {
    return QueryValue(key, name != nullptr ? name : u"", reserved, type, data, size,
                      [=](const RegistryValue& value) { return GiveWide(value, data, size); });
}

LONG RegQueryValueExA(HKEY key, const char* name, DWORD* reserved, DWORD* type, BYTE* data,
                      DWORD* size) {
    return QueryValue(
        key, WideFromUtf8(name != nullptr ? name : ""), reserved, type, data, size,
        [=](const RegistryValue& value) { return GiveData(NarrowData(value), data, size); });
}

}  // namespace brevik::platform
