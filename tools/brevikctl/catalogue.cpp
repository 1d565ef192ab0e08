#include "catalogue.h"

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "catalogue/manager/CBrevikKitCertificateMgr.h"
#include "catalogue_access.h"
#include "language/LangManager.h"
#include "modules/SmartComInitializer.h"
#include "terminal.h"
#include "text_table.h"

namespace {

struct Options {
    std::string guid;
    std::string product;
    std::string item;
    std::vector<int> ids;
    std::vector<std::string> codes;
    bool json = false;
};

// Ends the command where more of the catalogue may be read at the next try, which has been said.
void RequireComplete(const CCertificateMgr& manager) {
    if (!manager.Missed().empty()) {
        throw CLI::RuntimeError(1);
    }
}

SharedHandle<CCertificateReference> FindCertificate(const Options& options) {
    CBrevikKitCertificateMgr manager;
    LoadCatalogue(manager);
    const bool byGuid = !options.guid.empty();
    const auto found = byGuid ? manager.GetCertificateReferenceByGUID(NarrowToUtf8(options.guid))
                              : manager.GetValidCertificateReference(NarrowToUtf8(options.product));
    if (found == nullptr) {
        throw std::runtime_error(
            byGuid ? "no certificate has the GUID " + Quoted(options.guid) +
                         "; case counts\nbrevikctl certificate check " + SafeText(options.guid) +
                         " tells why, brevikctl guids shows those that are there."
                   : "no certificate has the product name " + Quoted(options.product) +
                         "\nbrevikctl guids shows those that are there.");
    }
    return found;
}

void Item(const Options& options) {
    const CLibraryUtils::SmartComInitializer apartment;
    const auto certificate = FindCertificate(options);
    if (!certificate->HasField(NarrowToUtf8(options.item))) {
        throw std::runtime_error("the certificate " + Quoted(Utf8ToNarrow(certificate->GetPath())) +
                                 " has no item " + Quoted(options.item) +
                                 "; an application gets the empty text"
                                 "\nbrevikctl certificate show lists what a certificate says.");
    }
    PrintLine(ReadField(*certificate->GetStore(), options.item));
}

std::vector<std::string> NamesOf(const CCertificateReference& certificate) {
    std::vector<std::string> names;
    certificate.GetStore()->GetFieldAsVector("QDR_ProductName", &names);
    return names;
}

std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) {
        joined += (joined.empty() ? "" : ", ") + text;
    }
    return joined;
}

std::string ToJson(const CCertificateReference& certificate) {
    std::string names;
    for (const std::string& name : NamesOf(certificate)) {
        names += (names.empty() ? "" : ",") + JsonString(name);
    }
    return "{\"guid\":" + JsonString(Utf8ToNarrow(certificate.GetGUID())) + ",\"names\":[" + names +
           "],\"path\":" + JsonString(Utf8ToNarrow(certificate.GetPath())) + "}";
}

void Guids(const Options& options) {
    const CLibraryUtils::SmartComInitializer apartment;
    CBrevikKitCertificateMgr manager;
    const CertificateReferences certificates = LoadCatalogue(manager);
    if (certificates.empty()) {
        RequireComplete(manager);
        std::fprintf(stderr, "brevikctl: no product is installed on the machine\n");
    } else if (options.json) {
        for (const auto& certificate : certificates) {
            std::printf("%s\n", ToJson(*certificate).c_str());
        }
    } else {
        TextTable table = {{"GUID", "PRODUCT", "CERTIFICATE"}};
        for (const auto& certificate : certificates) {
            const std::string guid = Utf8ToNarrow(certificate->GetGUID());
            const std::string names = Joined(NamesOf(*certificate));
            table.push_back({guid.empty() ? "-" : guid, names.empty() ? "-" : names,
                             Utf8ToNarrow(certificate->GetPath())});
        }
        PrintTable(table);
    }
}

void Language(const Options& options) {
    const CLibraryUtils::SmartComInitializer apartment;
    const LangManager languages;
    LANGID selected = 0;
    if (!options.ids.empty()) {
        const std::vector<LANGID> ids(options.ids.begin(), options.ids.end());
        LangManager::GetLang(ids.data(), static_cast<std::uint32_t>(ids.size()), &selected,
                             &FindInstalledLanguageOrNone);
    } else {
        std::vector<const char*> codes;
        for (const std::string& code : options.codes) {
            codes.push_back(code.c_str());
            if (languages.GetLangIdFromCode(code) == 0) {
                std::fprintf(stderr, "brevikctl: %s is no code of the suite, and stands for 0\n",
                             Quoted(code).c_str());
            }
        }
        languages.GetLang(codes.data(), static_cast<std::uint32_t>(codes.size()), &selected,
                          &FindInstalledLanguageOrNone);
    }
    const std::string code = languages.GetCodeFromLangId(selected);
    const LANGID installed = FindInstalledLanguageOrNone();
    if (options.json) {
        std::printf("{\"id\":%d,\"code\":%s,\"installed\":%d}\n", selected,
                    code.empty() ? "null" : JsonString(code).c_str(), installed);
    } else {
        std::printf("%d%s%s\n", selected, code.empty() ? "" : " ", code.c_str());
    }
    if (installed == 0) {
        CBrevikKitCertificateMgr manager;
        LoadCatalogue(manager);  // throws where the catalogue is why there is none
        RequireComplete(manager);
        std::fprintf(stderr, "brevikctl: no installed product has a language\n");
    }
}

CLI::App* AddCommand(CLI::App& app, const char* name, const char* description,
                     void (*run)(const Options&), const std::shared_ptr<Options>& options) {
    CLI::App* command = app.add_subcommand(name, description);
    command->callback([run, options] { run(*options); });
    return command;
}

}  // namespace

void AddCatalogueCommands(CLI::App& app) {
    const auto item = std::make_shared<Options>();
    CLI::App* itemCommand =
        AddCommand(app, "item", "Print an item of a product's certificate", Item, item);
    CLI::Option_group* product = itemCommand->add_option_group("product");
    product->add_option("--guid", item->guid, "Installer GUID of the product; case counts");
    product->add_option("--product", item->product, "Name of the product, in any case");
    product->require_option(1);
    itemCommand->add_option("NAME", item->item, "Name of the item, such as QDR_ProductID")
        ->required();

    const auto guids = std::make_shared<Options>();
    CLI::App* guidsCommand =
        AddCommand(app, "guids", "Show the installed products, first match first", Guids, guids);
    guidsCommand->add_flag("--json", guids->json, "One JSON object a line");

    const auto language = std::make_shared<Options>();
    CLI::App* languageCommand = AddCommand(
        app, "language", "Choose a language as an application would be told", Language, language);
    CLI::Option_group* offered = languageCommand->add_option_group("languages");
    offered->add_option("--ids", language->ids, "Identifiers that the application offers")
        ->delimiter(',')
        ->check(CLI::Range(0, 0xFFFF));
    offered->add_option("--codes", language->codes, "Codes that the application offers, as DEU,ENU")
        ->delimiter(',');
    offered->require_option(1);
    languageCommand->add_flag("--json", language->json, "One JSON object");
}
