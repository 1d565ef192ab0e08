// Certificates that are told apart by a number, with fields that follow from it.
#pragma once

#include <string>

namespace NumberedCertificate {

inline constexpr int kFields = 40;

inline std::string FileName(int number) {
    return "product" + std::to_string(number) + ".qzc";
}

inline std::string Name(int field) {
    return field == 0 ? "QDR_ProductName" : "QDR_Field" + std::to_string(field);
}

inline std::string Value(int number, int field) {
    return "Value " + std::to_string(field) + " of product " + std::to_string(number);
}

inline std::string Text(int number) {
    std::string text;
    for (int field = 0; field < kFields; ++field) {
        text += Name(field) + " = " + Value(number, field) + "\r\n";
    }
    return text;
}

}  // namespace NumberedCertificate
