// What one exported call says, byte for byte, seen from outside the process.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "platform/posix/trace_socket.h"
#include "support/child_process.h"
#include "support/test_machine.h"

namespace {

std::string DebuggerOutputOf(std::vector<std::string> command) {
    const std::string file = (TestMachine::ScratchFolder() / "host-output").string();
    command.insert(command.begin(), BREVIK_TEST_HOST);
    const ChildResult host = RunChild(command, {{"BREVIK_DEBUG_OUTPUT", file}});
    EXPECT_EQ(host.exitCode, 0) << host.errors;
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(ExportTrace, OneLanguageCallOnTheDebuggerOutput) {
    EXPECT_EQ(DebuggerOutputOf({"ids", "1031", "1033"}),
              "BREVIK KIT: BrevikKitAPI bvkc_GetUserLanguage_Ids\r\n"
              "BREVIK KIT: BrevikKit:GetUserLanguage_Ids - enter\r\n"
              "BREVIK KIT:   englishLang = MAKELANGID(LANG_ENGLISH, SUBLANG_DEFAULT) returned "
              "(1033).\r\n"
              "BREVIK KIT:   MUI is disabled. But the installed lang can't be found!\r\n"
              "BREVIK KIT:   LangIdList [0]: 1031\r\n"
              "BREVIK KIT:   LangIdList [1]: 1033\r\n"
              "BREVIK KIT:   Found English installed (1033).\r\n"
              "BREVIK KIT:   Unable to find a suitable language installed. Defaulting to ENU "
              "(1033).\r\n"
              "BREVIK KIT:   Selected Lang = 1033\r\n"
              "BREVIK KIT: BrevikKit:GetUserLanguage_Ids - return\r\n");
}

TEST(ExportTrace, LongArgumentsOnTheDebuggerOutputAndInTheRecords) {
    const std::string item(2000, 'i');
    const std::string head =
        "BrevikKitAPI bvkc_CertificateItemValue (InstallerGUID={g},sIdentifier=";
    const std::string first = head + std::string(1023 - head.size(), 'i');
    TraceSocket viewer(WIDE("Velmar Works::Trace::1.0"));
    const std::string said = DebuggerOutputOf({"item", item});
    EXPECT_EQ(said.substr(0, said.find('\n') + 1), "BREVIK KIT: " + first + "\r\n");

    TraceSocket::Packet packet;
    ASSERT_TRUE(viewer.Receive(&packet, 2000));
    ASSERT_EQ(packet.bytes.size(), 1105u);
    EXPECT_EQ(packet.bytes.substr(0, 17),
              std::string("\x51\x04\0\0\x32\x31\x54\x55\x03\0\0\0\0\0\0\0\0", 17));
    EXPECT_EQ(packet.bytes.substr(17, 64), "BREVIK KIT" + std::string(54, '\0'));
    EXPECT_EQ(packet.bytes.substr(81), first + '\0');

    ASSERT_TRUE(viewer.Receive(&packet, 2000));
    EXPECT_EQ(packet.bytes.substr(81),
              std::string("BrevikKit:CertificateItemValue - enter") + '\0');
    EXPECT_EQ(packet.bytes[8], 4);
    // The inner line is made of the same 1023 bytes, and its record ends two earlier.
    ASSERT_TRUE(viewer.Receive(&packet, 2000));
    ASSERT_EQ(packet.bytes.size(), 1105u);
    const std::string inner = "  BrevikKit:CertificateItemValue(InstallerGUID={g}, sIdentifier=";
    EXPECT_EQ(packet.bytes.substr(81), inner + std::string(1023 - inner.size(), 'i') + '\0');
    EXPECT_NE(said.find("BREVIK KIT: " + inner + std::string(1025 - inner.size(), 'i') + "\r\n"),
              std::string::npos);
}

}  // namespace
