// First calls of a process that is short of memory for a moment.

#include <brevikconfig.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <new>
#include <string>

#include "support/child_process.h"
#include "support/installed_products.h"

namespace {

long until_failure = 0;  // the allocation that fails, counted from now on; 0 for none

}  // namespace

// In place of the run-time library's, for this program and the libraries that it uses. Where the
// compiler sees both sides at once, it takes the pair for a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size) {
    void* const block = until_failure > 0 && --until_failure == 0 ? nullptr : std::malloc(size);
    return block != nullptr ? block : throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size);
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
    std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

namespace {

using namespace InstalledProducts;

// The item, or "failed".
std::string Ask() {
    void* value = nullptr;
    std::uint32_t size = 0;
    if (bvkc_CertificateItemValue("{G}", "x", &value, &size) != 1) {
        return "failed";
    }
    const std::string text = static_cast<const char*>(value);
    brevik_CoTaskMemFree(value);
    return text;
}

constexpr int kRight = 0;
constexpr int kWrong = 1;
constexpr int kNoneFailed = 2;

// What a process finds of whose first call one allocation fails.
int AskWithFailure(long allocation) {
    const pid_t child = fork();
    if (child == 0) {
        until_failure = allocation;
        const std::string first = Ask();
        const bool hasFailed = until_failure == 0;
        until_failure = 0;
        const bool isRight = (first == "y" || first == "failed") && Ask() == "y";
        _exit(!isRight ? kWrong : hasFailed ? kRight : kNoneFailed);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

TEST(ShortMemory, OfTheFirstCallIsForgottenByTheSecond) {
    RegisterReader(BREVIK_TEST_READER_COMPONENT);
    Install("{G}", "C:\\g.qzc", "G", "x = y\n");
    ASSERT_EQ(RunChild({BREVIK_TEST_HOST, "get", "{G}", "x"}).output, "1 2 y\n");
    constexpr long kStep = 7;
    int result = kRight;
    for (long allocation = 1; result == kRight; allocation += kStep) {
        result = AskWithFailure(allocation);
        EXPECT_TRUE(result == kRight || result == kNoneFailed)
            << "allocation " << allocation << ": " << result;
    }
}

}  // namespace
