#include "platform/posix/volumes/volume_settings.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "platform/posix/text/host_text.h"
#include "platform/registry.h"

namespace brevik::platform {
namespace {

constexpr std::u16string_view kVolumesKey = u"HKEY_LOCAL_MACHINE\\SOFTWARE\\Brevik\\Volumes\\";

struct KindName {
    std::u16string_view folded;
    UINT kind;
};

constexpr KindName kKinds[] = {
    {u"FIXED", DRIVE_FIXED},
    {u"REMOVABLE", DRIVE_REMOVABLE},
    {u"CDROM", DRIVE_CDROM},
    {u"REMOTE", DRIVE_REMOTE},
};

std::optional<std::u16string> ReadText(const RegistryKey& key, std::u16string_view foldedName) {
    const RegistryValue* value = key.FindValue(foldedName);
    if (value == nullptr || value->type != REG_SZ) {
        return std::nullopt;
    }
    const std::u16string text = Utf16OfBytes(value->data);
    return text.substr(0, text.find(u'\0'));
}

std::optional<DWORD> ReadNumber(const RegistryKey& key, std::u16string_view foldedName) {
    const RegistryValue* value = key.FindValue(foldedName);
    if (value == nullptr || value->type != REG_DWORD || value->data.size() != sizeof(DWORD)) {
        return std::nullopt;
    }
    return NumberOfBytes(value->data);
}

std::optional<UINT> ReadKind(const RegistryKey& key) {
    const std::u16string name = FoldRegistryName(ReadText(key, u"KIND").value_or(u""));
    const auto kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                   [&](const KindName& entry) { return entry.folded == name; });
    return kind == std::end(kKinds) ? std::nullopt : std::optional(kind->kind);
}

}  // namespace

VolumeSettings ReadVolumeSettings(const RegistrySnapshot& registry, const HostPlace& place) {
    // Without a machine the root of drive Z: is the host itself.
    if (place.error != NO_ERROR || place.root == place.top) {
        return {};
    }
    std::u16string names = WideFromUtf8(
        std::string_view(place.path).substr(place.top + 1, place.root - place.top - 1));
    std::replace(names.begin(), names.end(), u'/', u'\\');
    const RegistryKey* key = registry.tree.Find(std::u16string(kVolumesKey) + names);
    VolumeSettings settings;
    if (key != nullptr) {
        settings.label = ReadText(*key, u"LABEL").value_or(u"");
        settings.kind = ReadKind(*key);
        settings.serial = ReadNumber(*key, u"SERIAL");
        settings.empty = ReadNumber(*key, u"EMPTY").value_or(0) != 0;
    }
    return settings;
}

}  // namespace brevik::platform
