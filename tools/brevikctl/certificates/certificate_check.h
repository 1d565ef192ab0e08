// Why a certificate is or is not in the catalogue.
#pragma once

#include <string>
#include <vector>

#include "brevikctl/output/trouble.h"

// What is found about one certificate.
struct Verdict {
    std::string path;  // in lower case, or a GUID without a certificate
    bool isInCatalogue = false;
    std::vector<Trouble> troubles;  // why it is not
    std::vector<Trouble> remarks;   // what is odd though it is

    void Blame(const std::string& reason, const std::string& hint);
    void Remark(const std::string& reason, const std::string& hint);
    void Print(bool asJson) const;
};

// One verdict for each certificate of a GUID, or the one for a path. REQUIRES: the thread is in an
// apartment of the component model.
std::vector<Verdict> JudgeCertificates(const std::string& subject);
