// Libraries that call the exports while they are loaded, and the library itself loaded and unloaded
// by its host.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/stand_in.h"
#include "support/updatable_product.h"

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

const std::string kItem = "1 6 Mixer";

class Loading : public testing::Test {
  protected:
    void SetUp() override {
        InstalledProducts::RegisterReader(BREVIK_TEST_READER_COMPONENT);
        UpdatableProduct::Install();
    }

    static void PutCallingSibling() {
        fs::create_directories(StandIn::SharedFolder());
        fs::copy_file(BREVIK_TEST_CALLING_LIBRARY,
                      StandIn::SharedFolder() / "VelmarHTTPClient13.dll");
    }

    // So many lines of a host, in the order of their text.
    static Lines Take(ChildProcess& host, std::size_t count) {
        Lines lines(count);
        std::ranges::generate(lines, [&] { return host.ReadLine(); });
        std::ranges::sort(lines);
        return lines;
    }
    static Lines Say(std::vector<std::string> words, std::size_t count) {
        words.insert(words.begin(), BREVIK_TEST_HOST);
        words.push_back("wait");
        ChildProcess host(words);
        return Take(host, count);
    }
};

TEST_F(Loading, SiblingThatCallsAtTheFirstCall) {
    PutCallingSibling();
    EXPECT_EQ(Say({"get", "{G}", "QDR_ProductName"}, 3), Lines(3, kItem));
}

TEST_F(Loading, SiblingThatCallsAtALaterCall) {
    ChildProcess host({BREVIK_TEST_HOST, "get", "{G}", "QDR_ProductName", "wait", "get", "{G}",
                       "QDR_ProductName", "wait"});
    EXPECT_EQ(Take(host, 1), Lines(1, kItem));
    PutCallingSibling();
    host.WriteLine("go");
    EXPECT_EQ(Take(host, 3), Lines(3, kItem));
}

// The other thread's first call waits for the loader: for the reader and the database library, for
// the database library alone, and for the sibling.
TEST_F(Loading, PlugInThatCallsBesideAFirstCall) {
    const std::vector<std::string> words = {"load", BREVIK_TEST_CALLING_LIBRARY};
    EXPECT_EQ(Say(words, 2), Lines(2, kItem));
    EXPECT_EQ(Say(words, 2), Lines(2, kItem));
    const StandIn sibling;
    EXPECT_EQ(Say(words, 2), Lines(2, kItem));
}

TEST_F(Loading, CertificateReaderThatCalls) {
    InstalledProducts::RegisterReader(BREVIK_TEST_CALLING_LIBRARY);
    EXPECT_EQ(Say({"get", "{G}", "QDR_ProductName"}, 3), Lines(3, kItem));
}

// Its dispatch asks for a service anew, and the one within that finds none.
TEST_F(Loading, UpdateServiceThatDispatchesWhileItIsMade) {
    PutCallingSibling();
    EXPECT_EQ(Say({"update", "Mixer", "DEU", "0"}, 5), (Lines{"0", "0", "0", kItem, kItem}));
}

TEST_F(Loading, HostThatLoadsAndUnloadsKeepsItsDescriptors) {
    const ChildResult host = RunChild({BREVIK_TEST_LOADING_HOST, BREVIK_TEST_LIBRARY});
    EXPECT_EQ(host.output, kItem + "\nlevel\n") << host.errors;
}

}  // namespace
