// The product's uninstall data, and the update service of the sibling library, one object for the
// process, which is made on first demand and stays until the process ends. Any thread; nothing
// throws but std::bad_alloc.
#pragma once

#include <cstdint>
#include <string>

#include "modules/ComponentObject.h"
#include "services/SiblingServices.h"
#include "text/StringConversions.h"

class VelmarUpdateService {
  public:
    // A reference of its holder's own; the library stays loaded when it is given back.
    using Service = CLibraryUtils::ComponentObject<IUpdateServices>;

    VelmarUpdateService() = default;
    VelmarUpdateService(const VelmarUpdateService&) = delete;
    VelmarUpdateService& operator=(const VelmarUpdateService&) = delete;
    virtual ~VelmarUpdateService() = default;

    // Reads version ("MAJOR.MINOR") and SKU from the uninstall key of the installation that uses
    // the product, or, with an empty `usedBy`, from the product's own, and the language identifier
    // from the product's own. True when one of the keys could be opened; what is missing leaves its
    // argument as it was, but a missing version number counts as 0.
    bool GetUninstallInfo(const Utf8String& installerGuid, const Utf8String& usedBy,
                          std::uint32_t* language, std::string* version, std::string* sku) const;

    // Empty where the service cannot be made, which the next call tries again. Threads that ask
    // first at once may each make one; all of them get the one that was done first.
    Service GetService() const;
};
