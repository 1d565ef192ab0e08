// Where certificates are found: in the database, in the registry, and in folders.
//
// Each operation clears its lists and fills them, returns 0, or E_FAIL when it found nothing, and
// writes to the trace how many it found. Any thread.
#pragma once

#include <vector>

#include "filesystem/FilePath.h"
#include "filesystem/FileSpec.h"
#include "text/StringConversions.h"

namespace CertificateSources {

// The registry key of the certificates, below HKEY_LOCAL_MACHINE. A sub key bears a GUID, and
// describes that installation.
inline constexpr const WCHAR* kRegistryKey = WIDE("SOFTWARE\\ONDREL\\Certificates13");

// The path of the sub key of a GUID, and that of the uninstall entry of an installation.
inline WideString RegistryKeyOf(const Utf8String& guid) {
    return kRegistryKey + (WIDE("\\") + Utf8ToWide(guid));
}
inline WideString UninstallKeyOf(const Utf8String& entry) {
    return WIDE("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\") + Utf8ToWide(entry);
}

// A file for each record key that names one, and, where asked for, these keys: the path of a file
// may be another spelling than its key. An error line reports each key that names no file.
HRESULT GetCertificatesPathsInDatabase(std::vector<FileSpec>* files,
                                       Utf8StringList* keys = nullptr);

// The certificate files of a folder, then those of each folder below it, links to folders left out.
// A folder that cannot be walked to its end gives none.
HRESULT GetCertificatesFolderPath(const FilePath& folder, std::vector<FileSpec>* files);

// The paths and GUIDs of the registry, two lists of equal length, in the order of the sub keys:
// each sub key's path, then those of its own sub keys with the same GUID. An entry without a
// readable path is passed over.
HRESULT GetCertificatePathsFromRegistry(Utf8StringList* paths, Utf8StringList* guids);

}  // namespace CertificateSources
