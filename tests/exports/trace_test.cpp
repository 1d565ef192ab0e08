// What one exported call says, byte for byte, seen from outside the process.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "brevikctl/trace/trace_socket.h"
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
              "BREVIK KIT:   GetCertificatesPathsInDatabase - enter\r\n"
              "BREVIK KIT:     CreateDirectoryW path = C:\\ProgramData\\Velmar, result = TRUE\r\n"
              "BREVIK KIT:     SqlDatabasePath result = C:\\ProgramData\\Velmar\\qzc13.db)\r\n"
              "BREVIK KIT:     TableList failed \r\n"
              "BREVIK KIT:     TableList failed \r\n"
              "BREVIK KIT:     GetCertificatesPathsInDatabase, found 0 certificates.)\r\n"
              "BREVIK KIT:   GetCertificatesPathsInDatabase - return\r\n"
              "BREVIK KIT:   GetCertificatePathsFromRegistry - enter\r\n"
              "BREVIK KIT:     GetCertificatePathsFromRegistry, found 0 certificates.)\r\n"
              "BREVIK KIT:   GetCertificatePathsFromRegistry - return\r\n"
              "BREVIK KIT:   MUI is disabled. But the installed lang can't be found!\r\n"
              "BREVIK KIT:   LangIdList [0]: 1031\r\n"
              "BREVIK KIT:   LangIdList [1]: 1033\r\n"
              "BREVIK KIT:   Found English installed (1033).\r\n"
              "BREVIK KIT:   Unable to find a suitable language installed. Defaulting to ENU "
              "(1033).\r\n"
              "BREVIK KIT:   Selected Lang = 1033\r\n"
              "BREVIK KIT: BrevikKit:GetUserLanguage_Ids - return\r\n");
}

// The lines ahead of each function's own work, in the order of the calls.
TEST(ExportTrace, EveryExportHasItsLineAndItsScope) {
    std::istringstream lines(DebuggerOutputOf({"every"}));
    std::string seen;
    for (std::string line; std::getline(lines, line);) {
        if (line.find("BREVIK KIT: Brevik") == 0 && line.find(" - return") == std::string::npos) {
            seen += line.substr(12, line.size() - 13) + "\n";
        }
        if (line.find("BREVIK KIT:   BrevikKit:") == 0) {
            seen += line.substr(12, line.size() - 13) + "\n";
        }
    }
    EXPECT_EQ(seen,
              "BrevikKitAPI bvkc_CertificateItemValue (InstallerGUID={g},sIdentifier=i)\n"
              "BrevikKit:CertificateItemValue - enter\n"
              "  BrevikKit:CertificateItemValue(InstallerGUID={g}, sIdentifier=i)\n"
              "  BrevikKit:CertificateItemValue--RESULT--(void)\n"
              "BrevikKitAPI bvkc_CertificateItemValueByProdName (sProdName=p,sIdentifier=i)\n"
              "BrevikKit:CertificateItemValueByProdName - enter\n"
              "  BrevikKit:CertificateItemValueByProdName(sProdName=p, sIdentifier=i)\n"
              "  BrevikKit:CertificateItemValueByProdName--RESULT--(void)\n"
              "BrevikKitAPI bvkc_GetLocalGUIDs\n"
              "BrevikKit:GetLocalGUIDs - enter\n"
              "BrevikKitAPI bvkc_GetUserLanguage_Ids\n"
              "BrevikKit:GetUserLanguage_Ids - enter\n"
              "BrevikKitAPI bvkc_GetUserLanguage_Code\n"
              "BrevikKit:GetUserLanguage_Str - enter\n"
              "BrevikKit:WriteOndrelCookieValue - enter\n"
              "BrevikKit:ReadOndrelCookieValue - enter\n"
              "BrevikKit:WriteCookieValue - enter\n"
              "BrevikKit:ReadCookieValue - enter\n"
              "BrevikKitAPI bvkc_Dispatch_InvokeUpdate "
              "(productIdentifier=p,locale=DEU,bRunInBackground=1)\n"
              "BrevikKit:Dispatch_InvokeUpdate - enter\n"
              "  BrevikKit:Dispatch_InvokeUpdate - productIdentifier=p, locale=DEU, "
              "bRunInBackground=true\n"
              "BrevikKitAPI bvkc_Dispatch_IsUpdateOrMessageAvailable "
              "(productIdentifier=p,locale=DEU,connectToServer=0)\n"
              "BrevikKit:Dispatch_IsUpdateOrMessageAvailable - enter\n"
              "  BrevikKit:Dispatch_IsUpdateOrMessageAvailable - productIdentifier=p, locale=DEU, "
              "connectToServer=false\n"
              "BrevikKitAPI bvkc_Dispatch_GetKindletProfileID (strKindletUID=u,locale=DEU,hWnd=1)\n"
              "BrevikKit:Dispatch_GetKindletProfileID - enter\n"
              "  BrevikKit:Dispatch_GetKindletProfileID(strKindletUID=u, locale=DEU, "
              "hwnd=0000AB12: returns strProfileID=<na>)\n"
              "BrevikKitAPI bvkc_Dispatch_GetKindletProfileID (strKindletUID=u,locale=DEU,hWnd=0)\n"
              "BrevikKit:Dispatch_GetKindletProfileID - enter\n"
              "  BrevikKit:Dispatch_GetKindletProfileID(strKindletUID=u, locale=DEU, "
              "hwnd=00000000: returns strProfileID=<na>)\n");
}

TEST(ExportTrace, CallsWhileTheProcessEndsAreTracedOrDroppedButNeverCrash) {
    DebuggerOutputOf({"atexit", "every"});
    const ChildResult silent = RunChild({BREVIK_TEST_HOST, "atexit", "ids", "1031"});
    EXPECT_EQ(silent.exitCode, 0);
}

TEST(ExportTrace, ReaderThatIsGoneAndPipeWithoutOneDoNoHarm) {
    const std::string pipe = (TestMachine::ScratchFolder() / "pipe").string();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const ChildResult host =
        RunChild({BREVIK_TEST_HOST, "ids", "1031"}, {{"BREVIK_DEBUG_OUTPUT", pipe}});
    EXPECT_EQ(host.output, "0 1031\n");
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    close(ends[0]);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDERR_FILENO);
        setenv("BREVIK_DEBUG_OUTPUT", "-", 1);
        execl(BREVIK_TEST_HOST, BREVIK_TEST_HOST, "every", "every", nullptr);
        _exit(127);
    }
    close(ends[1]);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);  // neither a signal nor a failure
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
