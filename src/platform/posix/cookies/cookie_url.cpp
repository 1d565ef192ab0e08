#include "platform/posix/cookies/cookie_url.h"

#include <arpa/inet.h>

#include <algorithm>

namespace brevik::platform {
namespace {

constexpr std::size_t kLongestHost = 255;  // of a name in the domain name system

// The host of "user:password@host:port" and of "[address]:port".
std::string_view HostOf(std::string_view authority) {
    if (const std::size_t user = authority.rfind('@'); user != authority.npos) {
        authority.remove_prefix(user + 1);
    }
    if (authority.starts_with('[')) {
        const std::size_t end = authority.find(']');
        return end == authority.npos ? std::string_view() : authority.substr(1, end - 1);
    }
    return authority.substr(0, authority.find(':'));
}

}  // namespace

DWORD ParseCookieUrl(std::string_view url, CookieUrl* parts) {
    constexpr std::string_view kScheme = "http://";
    if (url.empty()) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!LowerAscii(url).starts_with(kScheme)) {
        return ERROR_INTERNET_UNRECOGNIZED_SCHEME;
    }
    std::string_view rest = url.substr(kScheme.size());
    const std::size_t authorityEnd = std::min(rest.find_first_of("/\\?#"), rest.size());
    const std::string_view host = HostOf(rest.substr(0, authorityEnd));
    const auto isForbidden = [](char character) {
        return character == ' ' || IsControlCharacter(character);
    };
    if (host.empty() || host.size() > kLongestHost || std::ranges::any_of(host, isForbidden)) {
        return ERROR_INVALID_PARAMETER;
    }
    rest.remove_prefix(authorityEnd);
    rest = rest.substr(0, rest.find_first_of("?#"));
    parts->host = LowerAscii(host);
    parts->path = rest.starts_with('/') ? rest : "/";
    return NO_ERROR;
}

bool IsHostWithin(const std::string& host, const std::string& domain) {
    if (host == domain) {
        return true;
    }
    return host.size() > domain.size() && host.ends_with(domain) &&
           host[host.size() - domain.size() - 1] == '.' && !IsIpAddress(host);
}

bool IsIpAddress(const std::string& host) {
    in6_addr address;
    return inet_pton(AF_INET, host.c_str(), &address) == 1 ||
           inet_pton(AF_INET6, host.c_str(), &address) == 1;
}

bool IsPathWithin(std::string_view path, std::string_view cookiePath) {
    return path.starts_with(cookiePath) &&
           (path.size() == cookiePath.size() || cookiePath.ends_with('/') ||
            path[cookiePath.size()] == '/');
}

std::string LowerAscii(std::string_view text) {
    std::string lower(text);
    for (char& character : lower) {
        if (character >= 'A' && character <= 'Z') {
            character = static_cast<char>(character + ('a' - 'A'));
        }
    }
    return lower;
}

}  // namespace brevik::platform
