#include "brevikctl/certificates/certificate_entries.h"

#include "brevikctl/registry/registry_data.h"
#include "brevikctl/registry/registry_file.h"
#include "brevikctl/registry/registry_paths.h"
#include "platform/posix/text/host_text.h"

namespace {

constexpr const char16_t* kCertificates = u"ONDREL\\Certificates13";

struct EntryValue {
    const char16_t* name;
    std::string CertificateEntry::*text;
};

constexpr EntryValue kValues[] = {
    {u"Filename", &CertificateEntry::path},
    {u"Language", &CertificateEntry::language},
    {u"Customization Code", &CertificateEntry::customizationCode},
    {u"Version", &CertificateEntry::version},
};

CertificateEntry ReadEntry(const RegistryKey& key, const std::string& guid) {
    CertificateEntry entry;
    entry.guid = guid;
    for (const EntryValue& row : kValues) {
        const RegistryValue* value = key.FindValue(row.name);
        entry.*row.text = value != nullptr ? TextOf(*value) : std::string();
    }
    return entry;
}

std::u16string PlaceOf(const RegistryTree& tree, const std::u16string& guid) {
    return PlaceForPrograms(tree, kCertificates) + u'\\' + guid;
}

}  // namespace

std::vector<CertificateEntry> ReadCertificateEntries() {
    RegistryTree tree;
    ReadRegistry(&tree);
    std::vector<CertificateEntry> entries;
    const RegistryKey* certificates = tree.Find(PlaceForPrograms(tree, kCertificates));
    if (certificates == nullptr) {
        return entries;
    }
    for (const RegistryKey* key : certificates->subKeys) {
        const std::string guid = Utf8FromWide(key->Name());
        entries.push_back(ReadEntry(*key, guid));
        for (const RegistryKey* below : key->subKeys) {
            entries.push_back(ReadEntry(*below, guid));
        }
    }
    return entries;
}

void WriteCertificateEntry(const CertificateEntry& entry) {
    ChangeRegistry([&](RegistryTree* tree) {
        const std::u16string guid = WideFromUtf8(entry.guid);
        const std::u16string path = PlaceOf(*tree, guid);
        RegistryKey* key = tree->Make(path);
        if (key->Name() != guid) {
            // The library distinguishes GUIDs by the case of letters, and the registry does not.
            tree->Remove(path);
            key = tree->Make(path);
        }
        for (const EntryValue& row : kValues) {
            if ((entry.*row.text).empty()) {
                key->RemoveValue(row.name);
            } else {
                key->SetValue(TextValue(row.name, entry.*row.text));
            }
        }
    });
}

bool RemoveCertificateEntry(const std::string& guid) {
    bool isRemoved = false;
    ChangeRegistry(
        [&](RegistryTree* tree) { isRemoved = tree->Remove(PlaceOf(*tree, WideFromUtf8(guid))); });
    return isRemoved;
}

bool IsSameGuid(const std::string& a, const std::string& b) {
    return FoldRegistryName(WideFromUtf8(a)) == FoldRegistryName(WideFromUtf8(b));
}
