// The text of a certificate: its fields, one to a line, each a name, an equals sign and values
// parted by commas.
//
//     QDR_ProductName = Product, "Product, the long name"
//     Vector Location = Products\{GUID}
//
// Blanks around a name or value do not count, blanks inside do. From a double quote on, everything
// up to the next one belongs to the name or value. Where the quote opens it, it is what stands
// between the quotes; else it is all from its start up to the closing quote, the opening one
// included. A name without a value, and a value without a name, are nothing.
#pragma once

#include <string>
#include <vector>

struct CertificateField {
    std::string name;
    std::string value;

    friend bool operator==(const CertificateField&, const CertificateField&) = default;
};

// The fields in the order of the text, one for each value. Any bytes are a text.
std::vector<CertificateField> ParseCertificateText(const std::string& text);
