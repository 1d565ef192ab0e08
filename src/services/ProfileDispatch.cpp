#include "services/ProfileDispatch.h"

#include "language/LangManager.h"
#include "modules/ComponentObject.h"
#include "modules/ScopedText.h"
#include "modules/SmartComInitializer.h"
#include "services/ServiceCall.h"
#include "services/SiblingServices.h"
#include "text/StringConversions.h"
#include "trace/UTrace.h"

namespace ProfileDispatch {
namespace {

using CLibraryUtils::ScopedText;
using Dialog = CLibraryUtils::ComponentObject<IDialogServices>;

struct DialogParameter {
    const WCHAR* name;
    int value;  // in pixels
};
constexpr DialogParameter kDialogSize[] = {
    {WIDE("dialogwidth"), 600},
    {WIDE("dialogheight"), 450},
};

bool MakeDialog(Dialog& dialog) {
    HRESULT result = CallService("IDialogServices", [&dialog] {
        return dialog.CreateInstance(CLSID_DialogServices, kServiceLibrary, IID_IDialogServices);
    });
    if (result == S_OK && !dialog) {
        result = E_POINTER;
    }
    if (result != S_OK) {
        UTrace::Error("pServices.CoCreateInstance failed?! hr = %08X",
                      static_cast<unsigned>(result));
    }
    return result == S_OK;
}

std::int32_t ResultOf(HRESULT answer, const char* profileId) {
    if (answer == S_OK) {
        return profileId != nullptr ? kGotProfile : kNoProfile;
    }
    return answer == S_FALSE ? kServiceAnsweredOne : kNoProfile;
}

// A dialog in another size or language will do, so the results of the settings do not count.

void SetLocale(IDialogServices* dialog, const std::string& locale) {
    const ScopedText code(NarrowToWide(LocaleOrSelected(locale)));
    CallService("IDialogServices::SetLocale",
                [&]() CALLS_FOREIGN_OBJECTS { return dialog->SetLocale(code.Get()); });
}

void SetParameter(IDialogServices* dialog, const DialogParameter& parameter) {
    const ScopedText name(parameter.name);
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_INT;
    value.intVal = parameter.value;
    CallService("IDialogServices::SetParameter",
                [&]() CALLS_FOREIGN_OBJECTS { return dialog->SetParameter(name.Get(), value); });
    VariantClear(&value);
}

std::int32_t Ask(IDialogServices* dialog, const std::string& kindletUid, const std::string& locale,
                 std::uint32_t window, char** profileId) {
    SetLocale(dialog, locale);
    const ScopedText uid(NarrowToWide(kindletUid));
    for (const DialogParameter& parameter : kDialogSize) {
        SetParameter(dialog, parameter);
    }
    ScopedText profile;
    const HRESULT answer =
        CallService("IDialogServices::GetProfileID", [&]() CALLS_FOREIGN_OBJECTS {
            return dialog->GetProfileID(uid.Get(), window, profile.Out());
        });
    if (const UINT length = SysStringLen(profile.Get()); length != 0) {
        *profileId = CLibraryUtils::MakeBlock(WideToNarrow({profile.Get(), length}));
    }
    return ResultOf(answer, *profileId);
}

}  // namespace

std::int32_t GetKindletProfileID(const std::string& kindletUid, const std::string& locale,
                                 void* window, char** profileId) {
    const CLibraryUtils::SmartComInitializer componentModel;
    *profileId = nullptr;
    std::int32_t result = kNoProfile;
    // Of a window's handle the low 32 bits count.
    const auto handle = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(window));
    Dialog dialog;
    if (MakeDialog(dialog)) {
        result = Ask(dialog.Get(), kindletUid, locale, handle, profileId);
        dialog.Release();
    }
    UTrace::Info(
        "BrevikKit:Dispatch_GetKindletProfileID(strKindletUID=%s, locale=%s, hwnd=%08X: returns "
        "strProfileID=%s)",
        kindletUid.c_str(), locale.c_str(), handle, *profileId != nullptr ? *profileId : "<na>");
    return result;
}

}  // namespace ProfileDispatch
