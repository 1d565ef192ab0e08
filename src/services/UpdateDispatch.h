// Updates of a product, and whether one waits: gathers what the update service needs to know, and
// calls it.
//
// Any thread that is in an apartment of the component model; it waits as long as the service takes.
// What a load of the catalogue throws passes through.
#pragma once

#include <cstdint>
#include <string>

namespace UpdateDispatch {

// How a dispatch ended.
enum Status : std::int32_t {
    kDone = 0,             // the service was called, or there is none
    kNoUpdateInfo = 2,     // no certificate, updates not on for it, or no installation that uses it
    kNoUninstallInfo = 3,  // no uninstall data
    kServiceFailed = 4,    // the service answered anything but 0; asked: anything but yes
};

// Has the service update a product. `locale` is a language code such as "ENU", one that is not
// known standing for the language 0; empty for the language that the product was installed in.
Status InvokeUpdate(const std::string& productIdentifier, const std::string& locale,
                    bool runInBackground);

// Asks the service whether an update or a message waits. kDone stands for yes, also where there is
// no service.
Status IsUpdateOrMessageAvailable(const std::string& productIdentifier, const std::string& locale,
                                  bool connectToServer);

}  // namespace UpdateDispatch
