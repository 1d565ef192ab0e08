#include "platform/posix/modules/system_modules.h"

#include <algorithm>
#include <iterator>

#include "platform/processes.h"
#include "platform/text.h"

namespace brevik::platform {
namespace {

template <auto Function>
FARPROC AddressOf() {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(Function));
}

constexpr SystemModule kSystemModules[] = {
    {u"C:\\Windows\\System32\\kernel32.dll",
     u"kernel32.dll",
     {"GetModuleFileNameW", AddressOf<&GetModuleFileNameW>}},
    {u"C:\\Windows\\System32\\psapi.dll",
     u"psapi.dll",
     {"GetModuleFileNameExW", AddressOf<&GetModuleFileNameExW>}},
};

bool EqualNoCase(std::u16string_view left, std::u16string_view right) {
    return left.size() == right.size() &&
           std::equal(left.begin(), left.end(), right.begin(), [](char16_t one, char16_t other) {
               return towupper(one) == towupper(other);
           });
}

}  // namespace

const SystemModule* FindSystemModule(std::u16string_view name) {
    const auto found = std::find_if(
        std::begin(kSystemModules), std::end(kSystemModules), [=](const SystemModule& module) {
            return EqualNoCase(name, module.name) || EqualNoCase(name, module.path);
        });
    return found == std::end(kSystemModules) ? nullptr : found;
}

// The handle is the place of the module's row.
HMODULE HandleOf(const SystemModule* module) {
    return reinterpret_cast<HMODULE>(const_cast<SystemModule*>(module));
}

const SystemModule* FindSystemModule(HMODULE handle) {
    const auto found =
        std::find_if(std::begin(kSystemModules), std::end(kSystemModules),
                     [=](const SystemModule& module) { return HandleOf(&module) == handle; });
    return found == std::end(kSystemModules) ? nullptr : found;
}

}  // namespace brevik::platform
