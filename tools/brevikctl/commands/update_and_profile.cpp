#include <memory>
#include <string>

#include "brevikctl/certificates/catalogue_access.h"
#include "brevikctl/commands/command.h"
#include "brevikctl/commands/commands.h"
#include "brevikctl/output/facts.h"
#include "brevikctl/output/terminal.h"
#include "brevikctl/output/trouble.h"
#include "catalogue/manager/CCertificateMgr.h"
#include "catalogue/queries/CVelmarProductCertifier.h"
#include "frame/BrevikConfigModule.h"
#include "language/LangManager.h"
#include "platform/modules.h"
#include "services/ProfileDispatch.h"
#include "services/ServiceCall.h"
#include "services/UpdateDispatch.h"
#include "services/VelmarUpdateService.h"

namespace {

struct Options {
    std::string product;
    std::string uid;
    std::string locale;
    bool check = false;
    bool inBackground = false;
    bool json = false;
};

// Why there is no service to ask, and what can be done about it.
std::string MissingService() {
    if (GetModuleHandleW(kServiceLibrary) == nullptr) {
        return "VelmarHTTPClient13.dll is on none of the places where an application looks"
               "\nThat is beside it, beside the program that started it, on the search path, and "
               "in C:\\Program Files\\Common Files\\Ondrel Shared\\DllShared.";
    }
    return "VelmarHTTPClient13.dll is there, and makes no object that could be asked"
           "\nIt is one of another kind, or refuses.";
}

// Why a product has no update information.
std::string MissingUpdateInfo(const std::string& product) {
    CBrevikKitCertificateMgr manager;
    const auto certificate = manager.GetValidCertificateReference(NarrowToUtf8(product));
    if (certificate == nullptr) {
        return "no certificate has the product name " + Quoted(product) + "\n" + kShowsGuids;
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
        case UpdateDispatch::kDone:
            return hasService ? ""
                              : "nothing was announced, which is no failure to an application: " +
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
        Say(Quoted(locale) + " is no code of the suite, and stands for the language 0");
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
    WarnOfLocale(options.locale);
    const UpdateDispatch::Status status = Dispatch(options);
    const bool isGood = status == UpdateDispatch::kDone;
    const bool hasService = isGood && VelmarUpdateService().GetService();
    if (options.json) {
        Facts facts = {{"product", options.product}, {"status", static_cast<int>(status)}};
        if (isGood) {
            facts.emplace_back("service", hasService);
        }
        if (options.check) {
            facts.emplace_back("available", isGood);
        }
        PrintFacts(facts, true);
    } else if (options.check) {
        PrintLine(isGood ? "available" : "not available");
    } else if (hasService) {
        PrintLine("the update was announced");
    }
    const std::string reason = Explain(status, options, hasService);
    if (!isGood && !options.check) {
        Fail("status " + std::to_string(status) + ": " + reason);
    }
    if (!reason.empty()) {
        Say(reason);
    }
}

// Owner of a block that a dispatch hands out.
struct FreeBlock {
    void operator()(char* block) const { CoTaskMemFree(block); }
};

void Profile(const Options& options) {
    BrevikConfig::GetModule().LoadSiblingLibrary();
    char* block = nullptr;
    const std::int32_t result =
        ProfileDispatch::GetKindletProfileID(options.uid, options.locale, nullptr, &block);
    const std::unique_ptr<char, FreeBlock> profile(block);
    if (options.json) {
        PrintFacts({{"uid", options.uid},
                    {"result", result},
                    block != nullptr ? Fact("profile", block) : Fact::OfJson("profile", "null")},
                   true);
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
    Fail("result " + std::to_string(result) + ": " + reason);
}

Command<Options> MakeCommand(CLI::App& app, const char* name, const char* description,
                             void (*run)(const Options&)) {
    return Command(app, name, description, run)
        .Option("--locale", &Options::locale,
                "Language code such as DEU; the suite's own by default")
        .Json();
}

}  // namespace

void AddUpdateAndProfileCommands(CLI::App& app) {
    Command update =
        MakeCommand(app, "update", "Have the update service update a product, or ask it", Update);
    update.Required("PRODUCT", &Options::product, "Name of the product, in any case");
    CLI::Option* const check =
        update.AddFlag("--check", &Options::check, "Only ask whether an update or a message waits");
    update.AddFlag("--background", &Options::inBackground, "Update without a window of its own")
        ->excludes(check);
    MakeCommand(app, "profile", "Have the online service's dialog fetch a user's profile", Profile)
        .Required("UID", &Options::uid, "The user");
}
