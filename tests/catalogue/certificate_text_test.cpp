// The walk over the text of a certificate.

#include "catalogue/certificates/CertificateText.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// The fields as NAME=VALUE; with a bar behind each.
std::string Fields(const std::string& text) {
    std::string fields;
    for (const CertificateField& field : ParseCertificateText(text)) {
        fields += field.name + "=" + field.value + "|";
    }
    return fields;
}

TEST(CertificateText, Fields) {
    const struct {
        const char* text;
        const char* fields;
    } cases[] = {
        {"Name = a, b , c\n", "Name=a|Name=b|Name=c|"},
        {"Name = a", "Name=a|"},
        {"Name=a\r\n\r\n  \rOther=b\n\n", "Name=a|Other=b|"},
        {"  Two words =  some  text  \n", "Two words=some  text|"},
        {"Name =\n", ""},
        {"Name = ,,\n", ""},
        {"= x\n", ""},
        {"no equals sign, at all\n", ""},
        {"Name = a = b\n", "Name=b|"},
        {"Name = a = b, c = d\n", "Name=b|Name=d|"},
        {"A, Name = b\n", "Name=b|"},
        {"Name = a\tb\n", "Name=a\tb|"},
        {"", ""},
        // From a quote within a name or value on, everything up to the next one belongs to it.
        {"Name = pre\"a,b\" , c\n", "Name=pre\"a,b|Name=c|"},
        {"Name = a\"1=2\nx\"\n", "Name=a\"1=2\nx|"},
        {"pre\"a=b\" = v\n", "pre\"a=b=v|"},
        // At the beginning it stands around the name or value.
        {"Name = \"a, b\", \" c \" \n", "Name=a, b|Name= c |"},
        {"\"My, name\" = v\n", "My, name=v|"},
        {"Name = \"\"\n", ""},
        {"Name = \"\" a\n", "Name=a|"},
        {"Name = \"a\" b\n", "Name=a|"},
        // One that is never closed takes the rest of the text.
        {"Name = a\"b\nOther = c\n", "Name=a\"b\nOther = c\n|"},
        {"Name = a\nOther = \"b\n", "Name=a|"},
    };
    for (const auto& testCase : cases) {
        EXPECT_EQ(Fields(testCase.text), testCase.fields) << testCase.text;
    }
}

TEST(CertificateText, NulBytesArePartOfATextAsAnyOther) {
    const std::string text("Name = a\0b\n", 11);
    EXPECT_EQ(Fields(text), std::string("Name=a\0b|", 9));
}

}  // namespace
