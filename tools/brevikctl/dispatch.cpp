#include "dispatch.h"

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "catalogue/manager/CBrevikKitCertificateMgr.h"
#include "catalogue/queries/CVelmarProductCertifier.h"
#include "catalogue_access.h"
#include "facts.h"
#include "frame/BrevikConfigModule.h"
#include "language/LangManager.h"
#include "language/SelectedLocale.h"
#include "modules/SmartComInitializer.h"
#include "platform/modules.h"
#include "services/ProfileDispatch.h"
#include "services/ServiceCall.h"
#include "services/UpdateDispatch.h"
#include "services/VelmarUpdateService.h"
#include "terminal.h"

namespace {

struct Options {
    std::string product;
    std::string uid;
    std::string locale;
    bool check = false;
    bool inBackground = false;
    bool json = false;
};

void Hint(const std::string& text) {
    std::fprintf(stderr, "brevikctl: %s\n", text.c_str());
}

// Why there is no service to ask, and what can be done about it.
std::string MissingService() {
    if (GetModuleHandleW(kServiceLibrary) == nullptr) {
        return "VelmarHTTPClient13.dll is on none of the places where an application looks"
               "\nThat is beside it, beside the program that started it, on the search path, and "
               "in "
               "C:\\Program Files\\Common Files\\Ondrel Shared\\DllShared.";
    }
    return "VelmarHTTPClient13.dll is there, and makes no object that could be asked"
           "\nIt is one of another kind, or refuses.";
}

// Why a product has no update information.
std::string MissingUpdateInfo(const std::string& product) {
    CBrevikKitCertificateMgr manager;
    const auto certificate = manager.GetValidCertificateReference(NarrowToUtf8(product));
    if (certificate == nullptr) {
        return "no certificate has the product name " + Quoted(product) +
               "\nbrevikctl guids shows those that are there.";
    }
    std::int32_t state = -1;
    CVelmarProductCertifier().ReadItemSwitch("QDR_UpdateManager", *certificate->GetStore(), &state);
    if (state != 1) {
        return "updates are not on for " + Quoted(product) + ": the item QDR_UpdateManager of " +
               Quoted(Utf8ToNarrow(certificate->GetPath())) +
               (state == 0 ? " is 0" : " is missing");
    }
    return "no installation uses " + Quoted(product) + ": its uninstall entry " +
           Quoted(Utf8ToNarrow(certificate->GetGUID())) + " has no value UsedBy";
}

// Why a dispatch ended as it did; empty where there is nothing to explain.
std::string Explain(UpdateDispatch::Status status, const Options& options, bool hasService) {
    switch (status) {
        case UpdateDispatch::kTold:
            return hasService ? ""
                              : "nothing was told, which is no failure to an application: " +
                                    MissingService();
        case UpdateDispatch::kNoUpdateInfo:
            return MissingUpdateInfo(options.product);
        case UpdateDispatch::kNoUninstallInfo:
            return "neither the uninstall entry of " + Quoted(options.product) +
                   " nor that of the installation that uses it can be opened";
        case UpdateDispatch::kServiceFailed:
            break;
    }
    return options.check ? "" : "the update service answered with a failure";
}

void WarnOfLocale(const std::string& locale) {
    if (!locale.empty() && LangManager().GetLangIdFromCode(locale) == 0) {
        Hint(Quoted(locale) + " is no code of the suite, and stands for the language 0");
    }
}

UpdateDispatch::Status Dispatch(const Options& options) {
    CBrevikKitCertificateMgr manager;
    LoadCatalogue(manager);  // says what is wrong with one that cannot be read
    BrevikConfig::GetModule().LoadSiblingLibrary();
    const std::string locale = LocaleOrSelected(options.locale);
    return options.check
               ? UpdateDispatch::IsUpdateOrMessageAvailable(options.product, locale, true)
               : UpdateDispatch::InvokeUpdate(options.product, locale, options.inBackground);
}

void Update(const Options& options) {
    const CLibraryUtils::SmartComInitializer apartment;
    WarnOfLocale(options.locale);
    const UpdateDispatch::Status status = Dispatch(options);
    const bool isGood = status == UpdateDispatch::kTold;
    const bool hasService = isGood && VelmarUpdateService().GetService();
    std::vector<Fact> facts = {TextFact("product", options.product),
                               NumberFact("status", static_cast<std::uint64_t>(status)),
                               YesNoFact("service", hasService)};
    if (options.check) {
        facts.push_back(YesNoFact("available", isGood));
    }
    if (!hasService && !isGood) {
        facts.erase(facts.begin() + 2);  // it was not asked for one
    }
    if (options.json) {
        PrintLine(ToObject(facts));
    } else if (options.check) {
        PrintLine(isGood ? "available" : "not available");
    } else if (hasService) {
        PrintLine("the update service was told");
    }
    const std::string reason = Explain(status, options, hasService);
    if (!isGood && !options.check) {
        throw std::runtime_error("status " + std::to_string(status) + ": " + reason);
    }
    if (!reason.empty()) {
        Hint(reason);
    }
}

// Owner of a block that a dispatch hands out.
struct FreeBlock {
    void operator()(char* block) const { CoTaskMemFree(block); }
};

void Profile(const Options& options) {
    const CLibraryUtils::SmartComInitializer apartment;
    BrevikConfig::GetModule().LoadSiblingLibrary();
    char* block = nullptr;
    const std::int32_t result =
        ProfileDispatch::GetKindletProfileID(options.uid, options.locale, nullptr, &block);
    const std::unique_ptr<char, FreeBlock> profile(block);
    if (options.json) {
        PrintLine(ToObject(
            {TextFact("uid", options.uid), NumberFact("result", static_cast<std::uint64_t>(result)),
             block != nullptr ? TextFact("profile", block) : Fact{"profile", "", "null"}}));
    } else if (block != nullptr) {
        PrintLine(block);
    }
    if (result == ProfileDispatch::kGotProfile) {
        return;
    }
    const std::string reason = result == ProfileDispatch::kServiceAnsweredOne
                                   ? "the service answered 1"
                               : GetModuleHandleW(kServiceLibrary) == nullptr
                                   ? MissingService()
                                   : "the service made no dialog, failed, or gave no profile";
    throw std::runtime_error("result " + std::to_string(result) + ": " + reason);
}

CLI::App* AddCommand(CLI::App& app, const char* name, const char* description,
                     void (*run)(const Options&), const std::shared_ptr<Options>& options) {
    CLI::App* command = app.add_subcommand(name, description);
    command->callback([run, options] { run(*options); });
    command->add_option("--locale", options->locale,
                        "Language code such as DEU; the suite's own by default");
    command->add_flag("--json", options->json, "One JSON object");
    return command;
}

}  // namespace

void AddDispatchCommands(CLI::App& app) {
    const auto update = std::make_shared<Options>();
    CLI::App* updateCommand = AddCommand(
        app, "update", "Have the update service update a product, or ask it", Update, update);
    updateCommand->add_option("PRODUCT", update->product, "Name of the product, in any case")
        ->required();
    CLI::Option* check = updateCommand->add_flag("--check", update->check,
                                                 "Only ask whether an update or a message waits");
    updateCommand
        ->add_flag("--background", update->inBackground, "Update without a window of its own")
        ->excludes(check);

    const auto profile = std::make_shared<Options>();
    CLI::App* profileCommand =
        AddCommand(app, "profile", "Have the online service's dialog fetch a user's profile",
                   Profile, profile);
    profileCommand->add_option("UID", profile->uid, "The user")->required();
}
