// Named values inside the cookies of a domain.
//
// An object reads the cookies of its URL anew for each operation, and writes back the one that it
// changed. It belongs to one thread at a time, and each has its own domain. Reading, changing and
// writing are one step among all threads and processes of the user that use the library.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "cookies/StorageParser.h"
#include "text/StringConversions.h"

class StorageManager {
  public:
    // The domain is the one that was set last in the process.
    StorageManager();

    // With a parser of the caller's.
    explicit StorageManager(std::shared_ptr<StorageParser> parser);

    virtual ~StorageManager() = default;

    // Makes `domain`, a host name without a scheme, the domain of this object and of those made
    // from now on. Always 0.
    std::int32_t SetDomain(const Utf8String& domain);

    // Fills the parser with all cookies of the URL; `name` does not count. 0, also without any;
    // else the error number of a store that cannot be read, and the parser is empty.
    std::int32_t ReadCookie(const std::string& url, const std::string& name);

    // The value of a key in the cookie `name`; "-1" where it is empty or missing, for an empty key,
    // and, with a line on the trace, where the store cannot be read. 0, or a failure's HRESULT.
    std::int32_t GetValue(const Utf8String& name, const Utf8String& key, Utf8String& value);

    // Stores a value in the first cookie, in byte order, whose name contains `name`, or in a new
    // one. 0; a failure's HRESULT; or 1, with the reason on the trace and the store as it was, when
    // the store failed or the value would not read back unchanged.
    std::int32_t SetValue(const Utf8String& name, const Utf8String& key, const Utf8String& value);

  private:
    void TakeDomain(const std::string& domain);
    std::string ReasonToRefuse(const Utf8String& name, const Utf8String& key,
                               const Utf8String& value) const;
    std::string Store(const Utf8String& name, const Utf8String& key, const Utf8String& value);

    std::shared_ptr<StorageParser> parser_;
    Utf8String domain_;
    Utf8String url_;
};
