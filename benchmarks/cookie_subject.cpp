#include <benchmark/benchmark.h>
#include <brevikconfig.h>
#include <curl/curl.h>

#include <fstream>
#include <stdexcept>
#include <string>

#include "platform/posix/machine/machine.h"
#include "subjects.h"

namespace {

constexpr int kCookies = 50;
constexpr char16_t kDomain[] = u"www.ondrel.example";
constexpr char16_t kCookie[] = u"bench_cookie";

// A file of 50 cookies: one that is read and written, nine more of its host, forty of others.
std::string MakeCookieFile() {
    const std::string path = Machine::Current().UserFolder() + "/cookies.txt";
    std::ofstream file(path);
    const auto add = [&file](const std::string& host, const std::string& name) {
        file << host << "\tFALSE\t/\tFALSE\t4102444800\t" << name << "\tvalue of a usual length\n";
    };
    file << "# Netscape HTTP Cookie File\n";
    add("www.ondrel.example", "bench_cookie");
    for (int i = 1; i < kCookies; ++i) {
        const std::string number = std::to_string(i);
        add(i < 10 ? "www.ondrel.example" : "host" + number + ".example", "name" + number);
    }
    if (!file.flush()) {
        throw std::runtime_error("the file " + path + " cannot be written");
    }
    return path;
}

void ReadOurs(benchmark::State& state) {
    for (auto _ : state) {
        bvkc_wchar* value = nullptr;
        if (bvkc_VCM_ReadCookieValue(kDomain, kCookie, kCookie, &value) != 0 || value[0] != u'v') {
            state.SkipWithError("no value");
        }
        CoTaskMemFree(value);
    }
}

void ReadPeer(benchmark::State& state, const std::string& path) {
    CURL* client = curl_easy_init();
    curl_easy_setopt(client, CURLOPT_COOKIEFILE, path.c_str());
    for (auto _ : state) {
        curl_easy_setopt(client, CURLOPT_COOKIELIST, "ALL");
        curl_easy_setopt(client, CURLOPT_COOKIELIST, "RELOAD");
        curl_slist* cookies = nullptr;
        curl_easy_getinfo(client, CURLINFO_COOKIELIST, &cookies);
        int count = 0;
        for (const curl_slist* cookie = cookies; cookie != nullptr; cookie = cookie->next) {
            ++count;
        }
        if (count != kCookies) {
            state.SkipWithError("not all cookies");
        }
        curl_slist_free_all(cookies);
    }
    curl_easy_cleanup(client);
}

void WriteOurs(benchmark::State& state) {
    int number = 0;
    for (auto _ : state) {
        const bool odd = ++number % 2 != 0;
        const bvkc_wchar* value = odd ? u"an odd value" : u"an even value";
        if (bvkc_VCM_WriteCookieValue(kDomain, kCookie, kCookie, value) != 0) {
            state.SkipWithError("not written");
        }
    }
}

void WritePeer(benchmark::State& state, const std::string& path) {
    const std::string jar = path + ".peer";
    CURL* client = curl_easy_init();
    curl_easy_setopt(client, CURLOPT_COOKIEFILE, path.c_str());
    curl_easy_setopt(client, CURLOPT_COOKIEJAR, jar.c_str());
    curl_easy_setopt(client, CURLOPT_COOKIELIST, "RELOAD");
    int number = 0;
    for (auto _ : state) {
        const std::string cookie =
            std::string("www.ondrel.example\tFALSE\t/\tFALSE\t4102444800\tbench_cookie\t") +
            (++number % 2 != 0 ? "an odd value" : "an even value");
        curl_easy_setopt(client, CURLOPT_COOKIELIST, cookie.c_str());
        curl_easy_setopt(client, CURLOPT_COOKIELIST, "FLUSH");
    }
    curl_easy_cleanup(client);
    if (!std::ifstream(jar)) {
        state.SkipWithError("not written");
    }
}

}  // namespace

void RegisterCookieRead() {
    const std::string path = MakeCookieFile();
    benchmark::RegisterBenchmark("ours", ReadOurs);
    benchmark::RegisterBenchmark("peer", ReadPeer, path);
}

void RegisterCookieWrite() {
    const std::string path = MakeCookieFile();
    benchmark::RegisterBenchmark("ours", WriteOurs);
    benchmark::RegisterBenchmark("peer", WritePeer, path);
}
