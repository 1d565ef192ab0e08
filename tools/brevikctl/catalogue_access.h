// The catalogue as the commands look at it: its certificates, the rows in its database, and what
// the certificate files say.
//
// Failures are std::runtime_error with what can be done about them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "catalogue/certificates/CertificateText.h"
#include "catalogue/manager/CCertificateMgr.h"

// Throws where the database library cannot be had, without which no record can be read or made.
void RequireDatabaseLibrary();

// The certificates that an application is answered from. A warning says what was missed of them and
// may be read at the next try. REQUIRES: the thread is in an apartment of
// the component model.
CertificateReferences LoadCatalogue(CCertificateMgr& manager);

// One certificate in the database. Its path is in lower case.
struct CertificateRecord {
    std::string path;
    std::vector<CertificateField> rows;
};

// The Windows path of the database, which need not be there.
std::string DatabasePath();

// All records, in the order of their paths. The database is opened beside the library's own
// connection, so that nothing in it is mended or dropped. One that is missing has none.
std::vector<CertificateRecord> ReadRecords();

// Why a file gives no rows, and what can be done about it.
struct CertificateTrouble {
    std::string reason;  // a sentence on the file, such as "it is missing"
    std::string hint;
};

// What is odd about the path under which a certificate is known; none for the full path of a file.
// Programs answer for one in another spelling as well, but not for each of its files.
std::optional<CertificateTrouble> TroubleOfPath(const std::string& path);

// Reads a certificate file as the library would. Fields, or a trouble. REQUIRES: the thread is in
// an apartment of the component model.
struct CertificateContent {
    std::vector<CertificateField> fields;
    std::optional<CertificateTrouble> trouble;
};
CertificateContent ReadContent(const std::string& path);
