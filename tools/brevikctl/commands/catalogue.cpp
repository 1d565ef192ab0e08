#include "catalogue/manager/CCertificateMgr.h"

#include <cstdio>
#include <string>
#include <vector>

#include "brevikctl/certificates/catalogue_access.h"
#include "brevikctl/commands/command.h"
#include "brevikctl/commands/commands.h"
#include "brevikctl/output/facts.h"
#include "brevikctl/output/terminal.h"
#include "brevikctl/output/text_table.h"
#include "language/InstalledLanguage.h"
#include "language/LangManager.h"

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
        throw AllSaid();
    }
}

SharedHandle<CCertificateReference> FindCertificate(const Options& options) {
    CBrevikKitCertificateMgr manager;
    LoadCatalogue(manager);
    const bool byGuid = !options.guid.empty();
    const auto found = byGuid ? manager.GetCertificateReferenceByGUID(NarrowToUtf8(options.guid))
                              : manager.GetValidCertificateReference(NarrowToUtf8(options.product));
    if (found == nullptr && byGuid) {
        Fail("no certificate has the GUID " + Quoted(options.guid) + "; case counts",
             "brevikctl certificate check " + SafeText(options.guid) +
                 " says why, brevikctl guids shows those that are there.");
    }
    if (found == nullptr) {
        Fail("no certificate has the product name " + Quoted(options.product), kShowsGuids);
    }
    return found;
}

void Item(const Options& options) {
    const auto certificate = FindCertificate(options);
    if (!certificate->HasField(NarrowToUtf8(options.item))) {
        Fail("the certificate " + Quoted(Utf8ToNarrow(certificate->GetPath())) + " has no item " +
                 Quoted(options.item) + "; an application gets the empty text",
             "brevikctl certificate show lists what a certificate says.");
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

Facts FactsOf(const CCertificateReference& certificate) {
    return {{"guid", Utf8ToNarrow(certificate.GetGUID())},
            Fact::OfJson("names", ToArray(NamesOf(certificate), JsonString)),
            {"path", Utf8ToNarrow(certificate.GetPath())}};
}

void Guids(const Options& options) {
    CBrevikKitCertificateMgr manager;
    const CertificateReferences certificates = LoadCatalogue(manager);
    if (certificates.empty()) {
        RequireComplete(manager);
        Say("no product is installed on the machine");
    } else if (options.json) {
        for (const auto& certificate : certificates) {
            PrintFacts(FactsOf(*certificate), true);
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
    const LangManager languages;
    LANGID selected = 0;
    if (!options.ids.empty()) {
        const std::vector<LANGID> ids(options.ids.begin(), options.ids.end());
        LangManager::GetLang(ids.data(), static_cast<std::uint32_t>(ids.size()), &selected);
    } else {
        std::vector<const char*> codes;
        for (const std::string& code : options.codes) {
            codes.push_back(code.c_str());
            if (languages.GetLangIdFromCode(code) == 0) {
                Say(Quoted(code) + " is no code of the suite, and stands for 0");
            }
        }
        languages.GetLang(codes.data(), static_cast<std::uint32_t>(codes.size()), &selected);
    }
    const std::string code = languages.GetCodeFromLangId(selected);
    const LANGID installed = FindInstalledLanguageOrNone();
    if (options.json) {
        PrintFacts({{"id", selected},
                    code.empty() ? Fact::OfJson("code", "null") : Fact("code", code),
                    {"installed", installed}},
                   true);
    } else {
        std::printf("%d%s%s\n", selected, code.empty() ? "" : " ", code.c_str());
    }
    if (installed == 0) {
        CBrevikKitCertificateMgr manager;
        LoadCatalogue(manager);  // throws where the catalogue is why there is none
        RequireComplete(manager);
        Say("no installed product has a language");
    }
}

}  // namespace

void AddCatalogueCommands(CLI::App& app) {
    Command item(app, "item", "Print an item of a product's certificate", Item);
    item.RequireOneOf(
        "product", item.Add("--guid", &Options::guid, "Installer GUID of the product; case counts"),
        item.Add("--product", &Options::product, "Name of the product, in any case"));
    item.Required("NAME", &Options::item, "Name of the item, such as QDR_ProductID");

    Command(app, "guids", "Show the installed products, first match first", Guids)
        .Json("One JSON object a line");

    Command language(app, "language", "Choose a language as an application would get it", Language);
    language.RequireOneOf(
        "languages",
        language.Add("--ids", &Options::ids, "Identifiers that the application offers")
            ->delimiter(',')
            ->check(CLI::Range(0, 0xFFFF)),
        language.Add("--codes", &Options::codes, "Codes that the application offers, as DEU,ENU")
            ->delimiter(','));
    language.Json();
}
