// A product that can be updated: its certificate, and its uninstall entries in the registry.
#pragma once

#include <map>
#include <string>

#include "support/installed_products.h"

namespace UpdatableProduct {

inline constexpr const char* kUninstall =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";

// Text of the uninstall entry of an installation, with these lines of values.
inline std::string Entry(const std::string& name, const std::string& values) {
    return "\n[" + (kUninstall + name) + "]\n" + values;
}

// Installs `name` with the GUID {G}: updates are on, the installation {S} uses it, version 13.2,
// SKU "SKU-1", language 1036.
inline void Install(const std::string& name = "Mixer",
                    const std::string& fields = "QDR_UpdateManager = 1\n") {
    InstalledProducts::Install("{G}", "C:\\g.qzc", name, fields);
    InstalledProducts::AddToRegistry(
        Entry("{G}", "\"UsedBy\"=\"{S}\"\n\"Language\"=dword:0000040c\n") +
        Entry("{S}",
              "\"VersionMajor\"=dword:0000000d\n\"VersionMinor\"=dword:00000002\n"
              "\"SKUID\"=\"SKU-1\"\n"));
}

// Takes entry and values back by what a later line of the registry says.
inline void RemoveEntry(const std::string& name) {
    InstalledProducts::AddToRegistry("\n[-" + (kUninstall + name) + "]\n");
}

}  // namespace UpdatableProduct
