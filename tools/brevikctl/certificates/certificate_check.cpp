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
#include "catalogue/manager/CCertificateMgr.h"
#include "registry/ScopedRegistryKey.h"

namespace {

// A certificate that the registry names, or that the catalogue has.
struct KnownCertificate {
    std::string path;
    std::string guid;
    bool isRegistered;
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

bool IsPath(const std::string& subject) {
    return subject.find_first_of("\\/") != std::string::npos ||
           AsciiToLower(subject).ends_with(".qzc");
}

void RemarkOnPath(const std::string& path, Verdict* verdict) {
    if (const std::optional<Trouble> odd = TroubleOfPath(path)) {
        verdict->Remark(odd->reason, odd->hint);
    }
}

// A GUID under which no certificate can be found.
Verdict JudgeGuid(const std::string& guid) {
    Verdict verdict = {guid, false, {}, {}};
    const ScopedRegistryKey key(HKEY_LOCAL_MACHINE,
                                CertificateSources::RegistryKeyOf(NarrowToUtf8(guid)).c_str(),
                                KEY_QUERY_VALUE);
    if (key.IsOpen()) {
        verdict.Blame(
            "its registry key has no value Filename that is a text of at most 259 characters",
            "brevikctl certificate install writes it.");
    } else {
        verdict.Blame(
            "the registry has no key of this GUID, and no certificate in the database bears it",
            "brevikctl certificate install puts a certificate there; brevikctl guids shows those "
            "that are.");
    }
    return verdict;
}

bool HasRows(const std::string& path, const std::vector<CertificateField>& rows) {
    return std::ranges::any_of(ReadRecords(), [&](const CertificateRecord& record) {
        return record.path == path && record.rows == rows;
    });
}

class CertificateCheck {
  public:
    CertificateCheck() : catalogue_(LoadCatalogue(manager_)) {
        Utf8StringList paths;
        Utf8StringList guids;
        manager_.GetCertificatePathsFromRegistry(&paths, &guids);
        for (std::size_t i = 0; i < paths.size(); ++i) {
            known_.push_back({Utf8ToNarrow(paths[i]), Utf8ToNarrow(guids[i]), true});
        }
        for (const auto& certificate : catalogue_) {
            known_.push_back({Utf8ToNarrow(certificate->GetPath()),
                              Utf8ToNarrow(certificate->GetGUID()), false});
        }
    }

    // One verdict for each certificate of the GUID, or the one for the path.
    std::vector<Verdict> Judge(const std::string& subject) const {
        std::vector<Verdict> verdicts;
        for (const KnownCertificate& known : known_) {
            const std::string path = AsciiToLower(known.path);
            if (EqualNoCase(known.guid, subject) &&
                std::ranges::find(verdicts, path, &Verdict::path) == verdicts.end()) {
                verdicts.push_back(JudgePath(known.path));
                if (known.guid != subject) {
                    verdicts.back().Remark("its GUID is written " + Quoted(known.guid) +
                                               ", and programs find it under that alone",
                                           "Ask for the GUID in the same case.");
                }
            }
        }
        if (verdicts.empty()) {
            verdicts.push_back(IsPath(subject) ? JudgePath(PathOf(subject)) : JudgeGuid(subject));
        }
        return verdicts;
    }

  private:
    static constexpr const char* kNameTheCertificate =
        "Let CertReferencePath name the certificate of the product itself.";

    // A path as the registry and the catalogue write it, where they know its file.
    std::string PathOf(const std::string& subject) const {
        const auto known = std::ranges::find_if(known_, [&](const KnownCertificate& candidate) {
            return IsSameFile(candidate.path, subject);
        });
        return known != known_.end() ? known->path : PlainText(FileArgument(subject).GetPath());
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
        return std::ranges::any_of(known_, [&path](const KnownCertificate& known) {
            return known.isRegistered && AsciiToLower(known.path) == AsciiToLower(path);
        });
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
            verdict.Blame("no registry entry names this file",
                          "brevikctl certificate install writes one.");
        }
        if (content.trouble) {
            verdict.troubles.push_back(*content.trouble);
        } else if (!FirstValue(content.fields, "CertReferencePath").empty()) {
            Follow(path, content, &verdict);
        } else if (verdict.troubles.empty()) {
            verdict.Blame("the database does not take it",
                          "BREVIK_DEBUG_OUTPUT=- in front of a program's command line shows why.");
        }
        return verdict;
    }

    // What a certificate that points to others comes to.
    void Follow(const std::string& first, CertificateContent content, Verdict* verdict) const {
        std::vector<std::string> walked = {AsciiToLower(first)};
        for (;;) {
            const std::string path = FirstValue(content.fields, "CertReferencePath");
            if (path.empty()) {
                return;
            }
            const std::string pointer = "it points to " + Quoted(path);
            if (std::ranges::find(walked, AsciiToLower(path)) != walked.end()) {
                verdict->Blame(pointer + ", which points back", kNameTheCertificate);
                return;
            }
            if (walked.size() > CCertificateMgr::kLongestChain) {
                verdict->Blame("it stands at the head of more than " +
                                   std::to_string(CCertificateMgr::kLongestChain) +
                                   " certificates that point to one another",
                               kNameTheCertificate);
                return;
            }
            walked.push_back(AsciiToLower(path));
            if (Find(path) != nullptr) {
                break;
            }
            content = ReadContent(path);
            if (content.trouble) {
                verdict->Blame(pointer + ": " + content.trouble->reason, content.trouble->hint);
                return;
            }
        }
        verdict->isInCatalogue = true;
        verdict->troubles.clear();
        verdict->Remark(
            "the catalogue has " + Quoted(walked.back()) + " in its place, to which it points", "");
        RemarkOnPath(walked.back(), verdict);
    }

    void Remark(const CCertificateReference& certificate, const CertificateContent& content,
                Verdict* verdict) const {
        const auto remarkOnShadow = [&](const SharedHandle<CCertificateReference>& found,
                                        const std::string& what) {
            if (found.get() != &certificate) {
                verdict->Remark(
                    "who asks for " + what + " gets " + Quoted(Utf8ToNarrow(found->GetPath())),
                    "The first certificate in brevikctl guids answers; remove one of them.");
            }
        };
        const Utf8String guid = certificate.GetGUID();
        std::vector<std::string> names;
        certificate.GetStore()->GetFieldAsVector("QDR_ProductName", &names);
        if (guid.empty()) {
            verdict->Remark("it has no GUID, so that no program finds it by one",
                            "Install it under a GUID, or give it a field Vector Location.");
        } else {
            remarkOnShadow(manager_.GetCertificateReferenceByGUID(guid),
                           "the GUID " + Quoted(Utf8ToNarrow(guid)));
        }
        if (names.empty()) {
            verdict->Remark("it has no product name, so that no program finds it by one",
                            "Give it a field QDR_ProductName.");
        }
        for (const std::string& name : names) {
            remarkOnShadow(manager_.GetValidCertificateReference(NarrowToUtf8(name)),
                           "the product name " + Quoted(name));
        }
        if (content.trouble) {
            verdict->Remark("its rows are in the database, but by now " + content.trouble->reason,
                            content.trouble->hint);
        } else if (!HasRows(verdict->path, content.fields)) {
            verdict->Remark("the file says something else by now than the database",
                            "brevikctl database rebuild reads it anew.");
        }
    }

    mutable CBrevikKitCertificateMgr manager_;
    CertificateReferences catalogue_;
    std::vector<KnownCertificate> known_;
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

void Verdict::Blame(const std::string& reason, const std::string& hint) {
    troubles.push_back({reason, hint});
}

void Verdict::Remark(const std::string& reason, const std::string& hint) {
    remarks.push_back({reason, hint});
}

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
