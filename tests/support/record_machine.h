// A machine whose certificates lie in C:\certs as plain text.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "catalogue/records/SQLCertificate.h"
#include "modules/SmartComInitializer.h"
#include "platform/posix/text/host_text.h"
#include "support/child_process.h"
#include "support/debug_output.h"
#include "support/drive_files.h"
#include "support/numbered_certificates.h"
#include "support/registry_machine.h"
#include "support/test_machine.h"
#include "trace/UTrace.h"

class RecordMachine : public testing::Test {
  protected:
    void SetUp() override {
        WriteRegistry(
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\CLSID\\"
            "{91C11C22-4B99-439F-90A6-A0F3758E1717}\\InprocServer32]\n@=\"Z:" BREVIK_TEST_READER
            "\"\n");
        NewFolder("certs");
        setenv("TEXT_READER_COUNT", CountFile().c_str(), 1);
        UTrace::Initialize();
        UTrace::SetClientName("T");
        output_.Take();
    }

    // Makes a certificate and gives its record key.
    static std::string AddCertificate(const std::string& name, const std::string& text) {
        WriteHostFile(DriveC() / "certs" / name, text);
        return "c:\\certs\\" + name;
    }

    static void AddNumberedCertificates(int count) {
        for (int number = 0; number < count; ++number) {
            AddCertificate(NumberedCertificate::FileName(number),
                           NumberedCertificate::Text(number));
        }
    }

    // Reads the first numbered certificates in a process of its own.
    static ChildResult RunRecordHost(int count,
                                     const std::map<std::string, std::string>& environment = {}) {
        return RunChild(RecordHost(count), environment);
    }
    static std::vector<std::string> RecordHost(int count) {
        return {BREVIK_TEST_BINARY_FOLDER "/record_host", "c:\\certs", std::to_string(count)};
    }

    // How often a certificate file was opened by any process of the test.
    static std::size_t ReaderOpenings() { return ReadHostFile(CountFile()).size(); }

    // The lines of the trace since the last call.
    std::vector<std::string> Lines() {
        std::vector<std::string> lines;
        std::string text = output_.Take();
        for (std::size_t end; (end = text.find("\r\n")) != std::string::npos;
             text.erase(0, end + 2)) {
            lines.push_back(text.substr(3, end - 3));  // behind "T: "
        }
        return lines;
    }

    static std::filesystem::path DatabaseFile() { return DriveC() / "ProgramData/Velmar/qzc13.db"; }

    static bool HasLoaded(const std::string& library) {
        return ReadHostFile("/proc/self/maps").find(library) != std::string::npos;
    }

    static constexpr char kKey[] =
        "0123456789012345678901234567890123456789012345678901234567890123456789012345678901234567"
        "890123456789012345678901234567890123456789";

  private:
    static std::string CountFile() { return TestMachine::ScratchFolder() / "openings"; }

    DebugOutput output_;
    CLibraryUtils::SmartComInitializer apartment_;
};

using TextList = std::vector<std::string>;
