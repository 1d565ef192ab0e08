#include "platform/registry.h"
#include "platform/never_destroyed.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <string_view>

#include "platform/handles.h"
#include "platform/posix/base/handle.h"
#include "platform/posix/registry/registry_snapshot.h"
#include "platform/posix/text/host_text.h"

namespace brevik::platform {
namespace {

// The path that a program of 32 bits sees for a folded path; empty where it is the same.
std::string PathIn32BitView(const std::string& path) {
    static NeverDestroyed<std::string> software(
        FoldRegistryPath(u"HKEY_LOCAL_MACHINE\\SOFTWARE\\"));
    static NeverDestroyed<std::string> view(FoldRegistryPath(u"WOW6432NODE\\"));
    return path.starts_with(*software) ? std::string(path).insert(software->size(), *view)
                                       : std::string();
}

// What a handle stands for. It never changes: the path is as the caller named it, and in its newest
// state the registry may have another key for it, or none.
struct OpenKey : HandleObject {
    explicit OpenKey(std::string foldedPath, bool isPredefined = false)
        : path(std::move(foldedPath)),
          pathIn32BitView(PathIn32BitView(path)),
          isPredefined(isPredefined) {}

    const std::string path;
    const std::string pathIn32BitView;
    const bool isPredefined;
};

std::shared_ptr<const OpenKey> FindPredefined(HKEY handle) {
    struct Row {
        HKEY handle;
        std::shared_ptr<const OpenKey> key;
    };
    const auto make = [](const char16_t* path) {
        return std::make_shared<const OpenKey>(FoldRegistryPath(path), true);
    };
    static NeverDestroyed<std::array<Row, 4>> rows(std::array<Row, 4>{{
        {HKEY_CLASSES_ROOT, make(u"HKEY_LOCAL_MACHINE\\SOFTWARE\\CLASSES")},
        {HKEY_CURRENT_USER, make(u"HKEY_CURRENT_USER")},
        {HKEY_LOCAL_MACHINE, make(u"HKEY_LOCAL_MACHINE")},
        {HKEY_USERS, make(u"HKEY_USERS")},
    }});
    const auto row = std::ranges::find(*rows, handle, &Row::handle);
    return row != rows->end() ? row->key : nullptr;
}

// Null for a value that is not the handle of a key.
std::shared_ptr<const OpenKey> FindOpenKey(HKEY handle) {
    std::shared_ptr<const OpenKey> predefined = FindPredefined(handle);
    return predefined ? predefined : FindHandle<OpenKey>(handle);
}

// Several backslashes between two names count as one, and one at the end as none.
std::string PathBelow(const std::string& parent, std::u16string_view subKey) {
    std::u16string path = u"\\";
    for (const char16_t unit : subKey) {
        if (unit != u'\\' || path.back() != u'\\') {
            path += unit;
        }
    }
    if (path.back() == u'\\') {
        path.pop_back();
    }
    return parent + FoldRegistryPath(path);
}

// Null when there is no such key; a predefined one is always there.
const RegistryKey* FindKey(const RegistrySnapshot& registry, const OpenKey& key) {
    static NeverDestroyed<RegistryKey> empty;
    const RegistryKey* found =
        key.pathIn32BitView.empty() ? nullptr : registry.tree.FindFolded(key.pathIn32BitView);
    if (found == nullptr) {
        found = registry.tree.FindFolded(key.path);
    }
    return found != nullptr || !key.isPredefined ? found : &*empty;
}

// The data of a text in the narrow code page; of any other value, as it is.
std::string NarrowData(const RegistryValue& value) {
    return value.IsText() ? Utf8FromWide(Utf16OfBytes(value.data)) : value.data;
}

// Copies `data` to the buffer; without a buffer only its size is wanted.
LONG GiveData(std::string_view data, BYTE* buffer, DWORD* size) {
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

// Calls `use` with the newest state of an open key.
template <typename Use>
LONG UseKey(HKEY handle, Use use) {
    const std::shared_ptr<const OpenKey> key = FindOpenKey(handle);
    if (!key) {
        return ERROR_INVALID_HANDLE;
    }
    const std::shared_ptr<const RegistrySnapshot> registry = NewestRegistry();
    const RegistryKey* found = FindKey(*registry, *key);
    return found != nullptr ? use(*found) : LONG{ERROR_KEY_DELETED};
}

// Calls `give` with the value.
template <typename Give>
LONG QueryValue(HKEY handle, std::u16string_view name, DWORD* type, Give give) {
    return UseKey(handle, [&](const RegistryKey& key) -> LONG {
        const RegistryValue* value = key.FindValue(name);
        if (value == nullptr) {
            return ERROR_FILE_NOT_FOUND;
        }
        if (type != nullptr) {
            *type = value->type;
        }
        return give(*value);
    });
}

}  // namespace

LONG RegOpenKeyExW(HKEY parent, const WCHAR* subKey, DWORD, REGSAM, HKEY* key) {
    const std::shared_ptr<const OpenKey> above = FindOpenKey(parent);
    if (!above) {
        return ERROR_INVALID_HANDLE;
    }
    const std::u16string_view path = subKey != nullptr ? subKey : u"";
    if (path.starts_with(u'\\')) {
        return ERROR_BAD_PATHNAME;
    }
    if (path.empty() && above->isPredefined) {
        *key = parent;
        return ERROR_SUCCESS;
    }
    const auto opened = std::make_shared<OpenKey>(PathBelow(above->path, path));
    const std::shared_ptr<const RegistrySnapshot> registry = NewestRegistry();
    if (registry->error != NO_ERROR) {
        return static_cast<LONG>(registry->error);
    }
    if (FindKey(*registry, *opened) == nullptr) {
        const bool isParentThere = FindKey(*registry, *above) != nullptr;
        return isParentThere ? ERROR_FILE_NOT_FOUND : ERROR_KEY_DELETED;
    }
    *key = static_cast<HKEY>(OpenHandle(opened));
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

LONG RegEnumKeyExW(HKEY handle, DWORD index, WCHAR* name, DWORD* length, DWORD*, WCHAR*, DWORD*,
                   FILETIME*) {
    return UseKey(handle, [&](const RegistryKey& key) -> LONG {
        if (index >= key.subKeys.size()) {
            return ERROR_NO_MORE_ITEMS;
        }
        const std::u16string_view subKey = key.subKeys[index]->Name();
        if (subKey.size() >= *length) {
            return ERROR_MORE_DATA;
        }
        *std::copy(subKey.begin(), subKey.end(), name) = u'\0';
        *length = static_cast<DWORD>(subKey.size());
        return ERROR_SUCCESS;
    });
}

LONG RegQueryValueExW(HKEY key, const WCHAR* name, DWORD*, DWORD* type, BYTE* data, DWORD* size) {
    return QueryValue(key, name != nullptr ? name : u"", type,
                      [=](const RegistryValue& value) { return GiveData(value.data, data, size); });
}

LONG RegQueryValueExA(HKEY key, const char* name, DWORD*, DWORD* type, BYTE* data, DWORD* size) {
    return QueryValue(
        key, WideFromUtf8(name != nullptr ? name : ""), type,
        [=](const RegistryValue& value) { return GiveData(NarrowData(value), data, size); });
}

}  // namespace brevik::platform
