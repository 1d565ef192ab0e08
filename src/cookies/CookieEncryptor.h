// The closing attributes of a cookie text, and its sealed form with a time stamp and a checksum.
//
// Nothing is enciphered: values are plain text in the store. An object serves one formatting on one
// thread.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "text/StringConversions.h"

class CookieEncryptor {
  public:
    // The expiry is 183 days from now.
    explicit CookieEncryptor(const std::string& domain);
    virtual ~CookieEncryptor() = default;

    // False, with nothing changed, for a date beyond the calendar.
    bool SetExpiry(std::int32_t days, std::int32_t hours, std::int32_t minutes,
                   std::int32_t seconds);

    // Appends ";domain=D;expires=T". The date is local time in spite of its "GMT", as readers of
    // these cookies have always got it.
    void AppendAttributes(Utf8String& text) const;

    // Adds a pair to the sealed form. Always true.
    bool AddPair(const std::string& name, const std::string& value);

    // Appends the sealed form of the pairs: "1=STAMPl&" and the pairs, or, with the checksum,
    // "1=STAMPl&2=1&3=" and the pairs and "&4=CHECKSUM". Always true.
    bool FormatSealed(Utf8String& text, bool withChecksum) const;

  private:
    std::vector<std::pair<Utf8String, Utf8String>> pairs_;
    Utf8String expires_;
    Utf8String domain_;
    std::uint32_t stamp_ = 0xFFFFFFFF;  // seconds from the stamp base to the expiry; all ones: none
};

// The checksum of the sealed form: the bytes weighted by their index, summed at 32 bits, times
// 0.321, in decimal.
std::string CookieChecksum(const Utf8String& text);
