#include "certificate_entries.h"

#include "platform/posix/host_text.h"
#include "registry_access.h"
#include "text_argument.h"

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
        entry.*row.text = TextOf(FindValue(key, row.name));
    }
    return entry;
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
    for (const auto& [folded, key] : certificates->AllChildren()) {
        const std::string guid = Utf8FromWide(key->Name());
        entries.push_back(ReadEntry(*key, guid));
        for (const auto& [foldedBelow, below] : key->AllChildren()) {
            entries.push_back(ReadEntry(*below, guid));
        }
    }
    return entries;
}

void WriteCertificateEntry(const CertificateEntry& entry) {
    ChangeRegistry([&](RegistryTree* tree) {
        RegistryKey* certificates = tree->Make(PlaceForPrograms(*tree, kCertificates));
        const std::u16string guid = WideFromUtf8(entry.guid);
        bool isNew = false;
        RegistryKey* key = certificates->MakeChild(guid, &isNew);
        if (key->Name() != guid) {
            // The library tells GUIDs apart by the case of letters, and the registry does not.
            certificates->RemoveChild(FoldRegistryName(guid));
            key = certificates->MakeChild(guid, &isNew);
        }
        for (const EntryValue& row : kValues) {
            if ((entry.*row.text).empty()) {
                key->RemoveValue(FoldRegistryName(row.name));
            } else {
                key->SetValue(TextValue(row.name, entry.*row.text));
            }
        }
    });
}

bool RemoveCertificateEntry(const std::string& guid) {
    bool isRemoved = false;
    ChangeRegistry([&](RegistryTree* tree) {
        RegistryKey* certificates = tree->Find(PlaceForPrograms(*tree, kCertificates));
        isRemoved = certificates != nullptr &&
                    certificates->RemoveChild(FoldRegistryName(WideFromUtf8(guid)));
    });
    return isRemoved;
}

bool IsSameGuid(const std::string& a, const std::string& b) {
    return FoldRegistryName(WideFromUtf8(a)) == FoldRegistryName(WideFromUtf8(b));
}
