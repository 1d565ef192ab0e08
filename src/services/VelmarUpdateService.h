// What an update dispatch needs beside the catalogue: the product's uninstall data, and the update
// service of the sibling library.
//
// It keeps nothing; a dispatch makes one on its stack. The service object is the process's: it is
// made on first demand and stays until the process ends. Any thread; nothing throws but
// std::bad_alloc.
#pragma once

#include <cstdint>
#include <string>

#include "modules/ComponentObject.h"
#include "services/IUpdateServices.h"
#include "text/StringConversions.h"

class VelmarUpdateService {
  public:
    // A reference of its holder's own; the library stays loaded when it is given back.
    using Service = CLibraryUtils::ComponentObject<IUpdateServices>;

    VelmarUpdateService() = default;
    VelmarUpdateService(const VelmarUpdateService&) = delete;
    VelmarUpdateService& operator=(const VelmarUpdateService&) = delete;
    virtual ~VelmarUpdateService() = default;

    // Reads the uninstall keys: version ("MAJOR.MINOR") and SKU from that of the installation that
    // uses the product, or, with an empty `usedBy`, from the product's own; the language identifier
    // from the product's own. True when one of the keys could be opened; what a key lacks, or a key
    // that could not be opened, leaves its arguments as they were, but a missing version number
    // counts as 0.
    bool GetUninstallInfo(const Utf8String& installerGuid, const Utf8String& usedBy,
                          std::uint32_t* language, std::string* version, std::string* sku) const;

    // Empty where the service cannot be made, which the next call tries again. Threads that need it
    // for the first time at once may each make one; all of them get the first that is done.
    Service GetService() const;
};
