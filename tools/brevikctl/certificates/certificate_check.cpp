#include "brevikctl/certificates/certificate_check.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "brevikctl/certificates/catalogue_access.h"
#include "brevikctl/certificates/certificate_argument.h"
#include "brevikctl/files/file_argument.h"
#include "brevikctl/output/facts.h"
#include "brevikctl/output/terminal.h"
#include "catalogue/CBrevikKitCertificateMgr.h"
#include "registry/ScopedRegistryKey.h"

namespace {

struct Entry {
    std::string path;
    std::string guid;
};

// Whether two paths lead to one file of the host, however they are written.
bool IsSameFile(const std::string& one, const std::string& other) {
    if (AsciiToLower(one) == AsciiToLower(other)) {
        return true;
    }
    try {
        const std::string place = HostPath(FileArgument(one));
        return !place.empty() && place == HostPath(FileArgument(other));
    } catch (const std::exception&) {
        return false;  // one of them is no path
    }
}

class CertificateCheck {
  public:
    CertificateCheck() : catalogue_(LoadCatalogue(manager_)) {
        Utf8StringList paths;
        Utf8StringList guids;
        manager_.GetCertificatePathsFromRegistry(&paths, &guids);
        for (std::size_t i = 0; i < paths.size(); ++i) {
            entries_.push_back({Utf8ToNarrow(paths[i]), Utf8ToNarrow(guids[i])});
        }
    }

    // One verdict for each certificate of the GUID, or the one for the path.
    std::vector<Verdict> Judge(const std::string& subject) const {
        std::vector<Verdict> verdicts;
        for (const Entry& entry : entries_) {
            if (EqualNoCase(entry.guid, subject)) {
                verdicts.push_back(JudgePath(entry.path));
                RemarkOnCase(entry.guid, subject, &verdicts.back());
            }
        }
        for (const auto& certificate : catalogue_) {
            const std::string path = Utf8ToNarrow(certificate->GetPath());
            const std::string guid = Utf8ToNarrow(certificate->GetGUID());
            const bool isJudged = std::ranges::any_of(
                verdicts, [&](const Verdict& verdict) { return verdict.path == path; });
            if (EqualNoCase(guid, subject) && !isJudged) {
                verdicts.push_back(JudgePath(path));
                RemarkOnCase(guid, subject, &verdicts.back());
            }
        }
        if (verdicts.empty()) {
            verdicts.push_back(IsPath(subject) ? JudgePath(PathOf(subject)) : JudgeGuid(subject));
        }
        return verdicts;
    }

  private:
    static constexpr std::size_t kLongestChain = 16;

    static bool IsPath(const std::string& subject) {
        return subject.find_first_of("\\/") != std::string::npos ||
               AsciiToLower(subject).ends_with(".qzc");
    }

    // A path as the registry and the catalogue write it, where they know its file.
    std::string PathOf(const std::string& subject) const {
        for (const auto& certificate : catalogue_) {
            const std::string path = Utf8ToNarrow(certificate->GetPath());
            if (IsSameFile(path, subject)) {
                return path;
            }
        }
        for (const Entry& entry : entries_) {
            if (IsSameFile(entry.path, subject)) {
                return entry.path;
            }
        }
        return PlainText(FileArgument(subject).GetPath());
    }

    const CCertificateReference* Find(const std::string& path) const {
        for (const auto& certificate : catalogue_) {
            if (Utf8ToNarrow(certificate->GetPath()) == AsciiToLower(path)) {
                return certificate.get();
            }
        }
        return nullptr;
    }

    bool IsRegistered(const std::string& path) const {
        return std::ranges::any_of(entries_, [&path](const Entry& entry) {
            return AsciiToLower(entry.path) == AsciiToLower(path);
        });
    }

    static void RemarkOnCase(const std::string& guid, const std::string& subject,
                             Verdict* verdict) {
        if (guid != subject) {
            verdict->remarks.push_back(
                {"its GUID is written " + Quoted(guid) + ", and programs find it under that alone",
                 "Ask for the GUID in the same case."});
        }
    }

    static void RemarkOnPath(const std::string& path, Verdict* verdict) {
        if (std::optional<Trouble> odd = TroubleOfPath(path)) {
            verdict->remarks.push_back(*std::move(odd));
        }
    }

    // A GUID under which no certificate can be found.
    static Verdict JudgeGuid(const std::string& guid) {
        Verdict verdict = {guid, false, {}, {}};
        const ScopedRegistryKey key(HKEY_LOCAL_MACHINE,
                                    CertificateSources::RegistryKeyOf(NarrowToUtf8(guid)).c_str(),
                                    KEY_QUERY_VALUE);
        if (key.IsOpen()) {
            verdict.troubles.push_back(
                {"its registry key has no value Filename that is a text of at most 259 characters",
                 "brevikctl certificate install writes it."});
        } else {
            verdict.troubles.push_back(
                {"the registry has no key of this GUID, and no certificate in the database bears "
                 "it",
                 "brevikctl certificate install puts a certificate there; brevikctl guids shows "
                 "those that are."});
        }
        return verdict;
    }

    Verdict JudgePath(const std::string& path) const {
        Verdict verdict = {AsciiToLower(path), false, {}, {}};
        const CertificateContent content = ReadContent(path);
        if (const CCertificateReference* certificate = Find(path)) {
            verdict.isInCatalogue = true;
            RemarkOnPath(path, &verdict);
            Remark(*certificate, content, &verdict);
            return verdict;
        }
        if (!IsRegistered(path)) {
            verdict.troubles.push_back(
                {"no registry entry names this file", "brevikctl certificate install writes one."});
        }
        if (content.trouble) {
            verdict.troubles.push_back(*content.trouble);
        } else if (!FirstValue(content.fields, "CertReferencePath").empty()) {
            Follow(path, content, &verdict);
        } else if (verdict.troubles.empty()) {
            verdict.troubles.push_back(
                {"the database does not take it",
                 "BREVIK_DEBUG_OUTPUT=- in front of a program's command line shows why."});
        }
        return verdict;
    }

    // What a certificate that points to others comes to.
    void Follow(const std::string& first, CertificateContent content, Verdict* verdict) const {
        std::vector<std::string> walked = {AsciiToLower(first)};
        for (;;) {
            const std::string path = FirstValue(content.fields, "CertReferencePath");
            if (path.empty()) {
                break;
            }
            if (std::ranges::find(walked, AsciiToLower(path)) != walked.end()) {
                verdict->troubles.push_back(
                    {"it points to " + Quoted(path) + ", which points back",
                     "Let CertReferencePath name the certificate of the product itself."});
                return;
            }
            if (walked.size() > kLongestChain) {
                verdict->troubles.push_back(
                    {"it stands at the head of more than 16 certificates that point to one another",
                     "Let CertReferencePath name the certificate of the product itself."});
                return;
            }
            walked.push_back(AsciiToLower(path));
            if (Find(path) != nullptr) {
                break;
            }
            content = ReadContent(path);
            if (content.trouble) {
                verdict->troubles.push_back(
                    {"it points to " + Quoted(path) + ": " + content.trouble->reason,
                     content.trouble->hint});
                return;
            }
        }
        verdict->isInCatalogue = Find(walked.back()) != nullptr;
        if (verdict->isInCatalogue) {
            verdict->troubles.clear();
            verdict->remarks.push_back(
                {"the catalogue has " + Quoted(walked.back()) + " in its place, to which it points",
                 ""});
            RemarkOnPath(walked.back(), verdict);
        }
    }

    void Remark(const CCertificateReference& certificate, const CertificateContent& content,
                Verdict* verdict) const {
        const Utf8String guid = certificate.GetGUID();
        std::vector<std::string> names;
        certificate.GetStore()->GetFieldAsVector("QDR_ProductName", &names);
        if (guid.empty()) {
            verdict->remarks.push_back(
                {"it has no GUID, so that no program finds it by one",
                 "Install it under a GUID, or give it a field Vector Location."});
        } else {
            RemarkOnShadow(certificate, manager_.GetCertificateReferenceByGUID(guid),
                           "the GUID " + Quoted(Utf8ToNarrow(guid)), verdict);
        }
        if (names.empty()) {
            verdict->remarks.push_back(
                {"it has no product name, so that no program finds it by one",
                 "Give it a field QDR_ProductName."});
        }
        for (const std::string& name : names) {
            RemarkOnShadow(certificate, manager_.GetValidCertificateReference(NarrowToUtf8(name)),
                           "the product name " + Quoted(name), verdict);
        }
        if (content.trouble) {
            verdict->remarks.push_back(
                {"its rows are in the database, but by now " + content.trouble->reason,
                 content.trouble->hint});
        } else if (!HasRows(verdict->path, content.fields)) {
            verdict->remarks.push_back({"the file says something else by now than the database",
                                        "brevikctl database rebuild reads it anew."});
        }
    }

    static void RemarkOnShadow(const CCertificateReference& certificate,
                               const SharedHandle<CCertificateReference>& found,
                               const std::string& what, Verdict* verdict) {
        if (found.get() != &certificate) {
            verdict->remarks.push_back(
                {"who asks for " + what + " gets " + Quoted(Utf8ToNarrow(found->GetPath())),
                 "The first certificate in brevikctl guids answers; remove one of them."});
        }
    }

    static bool HasRows(const std::string& path, const std::vector<CertificateField>& rows) {
        const std::vector<CertificateRecord> records = ReadRecords();
        return std::ranges::any_of(records, [&](const CertificateRecord& record) {
            return record.path == path && record.rows == rows;
        });
    }

    mutable CBrevikKitCertificateMgr manager_;
    CertificateReferences catalogue_;
    std::vector<Entry> entries_;
};

void PrintTroubles(const char* label, const std::vector<Trouble>& troubles) {
    for (const Trouble& trouble : troubles) {
        std::printf("  %s%s\n", label, trouble.reason.c_str());
        if (!trouble.hint.empty()) {
            std::printf("    %s\n", trouble.hint.c_str());
        }
    }
}

}  // namespace

void Verdict::Print(bool asJson) const {
    if (asJson) {
        PrintFacts({{"certificate", path},
                    {"inCatalogue", isInCatalogue},
                    Fact::OfJson("troubles", ToArray(troubles, TroubleJson)),
                    Fact::OfJson("remarks", ToArray(remarks, TroubleJson))},
                   true);
        return;
    }
    std::printf("%s: %s\n", SafeText(path).c_str(),
                isInCatalogue ? "in the catalogue" : "not in the catalogue");
    PrintTroubles("because ", troubles);
    PrintTroubles("but ", remarks);
}

std::vector<Verdict> JudgeCertificates(const std::string& subject) {
    return CertificateCheck().Judge(subject);
}
