// The cookie file is one that curl reads and writes, too.

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "cookies/CookieValues.h"
#include "platform/component_model.h"
#include "platform/posix/base/scoped_descriptor.h"
#include "support/child_process.h"
#include "support/cookie_machine.h"

namespace {

// A web server that answers one request on the loopback interface.
class OneRequestServer {
  public:
    // `header` is a line of the answer.
    explicit OneRequestServer(std::string header) : header_(std::move(header)) {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        if (bind(listener_.Get(), generic, size) != 0 || listen(listener_.Get(), 1) != 0 ||
            getsockname(listener_.Get(), generic, &size) != 0) {
            throw std::runtime_error("no server");
        }
        port_ = ntohs(address.sin_port);
        thread_ = std::thread([this] { Answer(); });
    }
    ~OneRequestServer() { Stop(); }

    std::string Port() const { return std::to_string(port_); }

    // The request; empty where none had come by now.
    const std::string& Request() {
        Stop();
        return request_;
    }

  private:
    // Ends the waiting for a request, but not an answer that has begun.
    void Stop() {
        if (thread_.joinable()) {
            shutdown(listener_.Get(), SHUT_RDWR);
            thread_.join();
        }
    }

    void Answer() {
        const ScopedDescriptor connection(accept4(listener_.Get(), nullptr, nullptr, SOCK_CLOEXEC));
        char block[4096];
        ssize_t count = 1;
        while (connection && count > 0 && request_.find("\r\n\r\n") == std::string::npos) {
            count = recv(connection.Get(), block, sizeof block, 0);
            request_.append(block, count > 0 ? static_cast<std::size_t>(count) : 0);
        }
        const std::string answer =
            "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: 0\r\n" + header_ + "\r\n\r\n";
        send(connection.Get(), answer.data(), answer.size(), MSG_NOSIGNAL);
    }

    std::string header_;
    ScopedDescriptor listener_{socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    int port_ = 0;
    std::string request_;
    std::thread thread_;
};

class Curl : public CookieMachine {
  protected:
    // Has curl ask the server as the suite's web domain, and keep what it is told in the library's
    // own file. The result is the request.
    static std::string Ask(const std::string& answerHeader) {
        OneRequestServer server(answerHeader);
        const std::string host = CookieValues::kSuiteDomain;
        const ChildResult result = RunChild(
            {"curl", "--disable", "--silent", "--show-error", "--noproxy", "*", "--max-time", "60",
             "--cookie", CookieFilePath(), "--cookie-jar", CookieFilePath(), "--resolve",
             host + ":" + server.Port() + ":127.0.0.1", "http://" + host + ":" + server.Port()});
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        return server.Request();
    }

    static WideString Read(const WideString& key) {
        WCHAR* block = nullptr;
        EXPECT_EQ(CookieValues::ReadOndrelValue(key, &block), 0);
        const WideString value = block == nullptr ? WideString() : block;
        CoTaskMemFree(block);
        return value;
    }
};

TEST_F(Curl, ValuesGoBothWays) {
    ASSERT_EQ(CookieValues::WriteOndrelValue(u"theme", u"dark \u00E4"), 0);
    ASSERT_EQ(CookieValues::WriteValue(u"ondrel.example", u"wide", u"k", u"1"), 0);
    ASSERT_EQ(CookieValues::WriteValue(u"example", u"foreign", u"k", u"1"), 0);
    EXPECT_THAT(Ask("Set-Cookie: from_web=a=1&b=x=y; Max-Age=1000"),
                testing::AllOf(testing::HasSubstr("qdr_cookie=theme=dark \xC3\xA4"),
                               testing::HasSubstr("wide=k=1"),
                               testing::Not(testing::HasSubstr("foreign"))));
    EXPECT_EQ(Read(u"theme"), u"dark \u00E4");
    WCHAR* block = nullptr;
    ASSERT_EQ(CookieValues::ReadValue(u"www.ondrel.example", u"from_web", u"b", &block), 0);
    EXPECT_EQ(WideString(block), u"x=y");
    CoTaskMemFree(block);

    Ask("Set-Cookie: qdr_cookie=theme=light&other=1; Domain=www.ondrel.example; Path=/");
    EXPECT_EQ(Read(u"theme"), u"light");
    ASSERT_EQ(CookieValues::WriteOndrelValue(u"theme", u"third"), 0);
    EXPECT_THAT(Ask("X: y"), testing::AllOf(testing::HasSubstr("qdr_cookie=other=1&theme=third"),
                                            testing::HasSubstr("from_web=a=1&b=x=y"),
                                            testing::Not(testing::HasSubstr("theme=light"))));
}

}  // namespace
