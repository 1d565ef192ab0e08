// The list of certificates: where they come from, in which order they stand, and how they are
// found.

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <atomic>
#include <fstream>
#include <sstream>
#include <thread>

#include "catalogue/RecordGathering.h"
#include "catalogue/SQLite3Wrapper/SQLite3WrapperException.h"
#include "support/catalogue_test.h"
#include "support/child_process.h"
#include "support/test_machine.h"

namespace {

namespace fs = std::filesystem;
using namespace InstalledProducts;

using Texts = std::vector<std::string>;

class CertificateMgr : public CatalogueTest {
  protected:
    CBrevikKitCertificateMgr manager_;
};

TEST_F(CertificateMgr, DatabaseGoesFirstAndTheRegistryGivesTheGuid) {
    PutCertificate("C:\\Suite\\b.qzc", "Vector Location = HKLM\\x\\{B}\n");
    PutCertificate("C:\\Suite\\c.qzc", "Vector Location = HKLM\\x\\{C}\n");
    Import("C:\\Suite\\c.qzc");
    Import("C:\\Suite\\b.qzc");
    Install("{A}", "C:\\Suite\\a.qzc", "A", "Vector Location = HKLM\\x\\{other}\n");
    Register("{registered}", "C:\\SUITE\\C.qzc");
    EXPECT_EQ(Lines(manager_), (Texts{"c:\\suite\\c.qzc {registered}", "c:\\suite\\b.qzc {B}",
                                      "c:\\suite\\a.qzc {A}"}));
}

TEST_F(CertificateMgr, EntriesBelowAnEntryBelongToItsGuid) {
    Install("{B}", "C:\\b.qzc", "B");
    Install("{A}", "C:\\a.qzc", "A");
    Install("{A}\\z", "C:\\a z.qzc", "A");
    Install("{A}\\b", "C:\\a b.qzc", "A");
    Install("{A}\\b\\deeper", "C:\\deeper.qzc", "A");
    EXPECT_EQ(Lines(manager_),
              (Texts{"c:\\a.qzc {A}", "c:\\a b.qzc {A}", "c:\\a z.qzc {A}", "c:\\b.qzc {B}"}));
}

TEST_F(CertificateMgr, EntriesWithoutAReadablePathArePassedOver) {
    const std::string longest = "C:\\" + std::string(252, 'l') + ".qzc";  // 259 characters
    const std::string tooLong = "C:\\" + std::string(253, 't') + ".qzc";
    SetEntry("{1 none}", {{"Language", "1031"}});
    Register("{2 number}", "dword:00000041");
    Register("{3 empty}", "");
    Register("{4 longest}", longest);
    Register("{5 too long}", tooLong);
    Register("{6 missing}", "C:\\missing.qzc");
    PutFile("C:\\damaged.qzc", ForeignCertificate("N = x\n"));
    Register("{7 damaged}", "C:\\damaged.qzc");
    Install("{8}\\only below", "C:\\below.qzc", "Below");

    Utf8StringList paths;
    Utf8StringList guids;
    EXPECT_EQ(manager_.GetCertificatePathsFromRegistry(&paths, &guids), 0);
    Texts found;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        found.push_back(N(guids[i]) + " " + N(paths[i]));
    }
    EXPECT_EQ(found, (Texts{"{3 empty} ", "{4 longest} " + longest, "{6 missing} C:\\missing.qzc",
                            "{7 damaged} C:\\damaged.qzc", "{8} C:\\below.qzc"}));
    EXPECT_EQ(Lines(manager_), Texts{"c:\\below.qzc {8}"});
}

TEST_F(CertificateMgr, MachineWithoutCertificatesHasAnEmptyList) {
    EXPECT_EQ(manager_.GetCertificateCount(), 0);
    EXPECT_EQ(manager_.GetCertificateReferenceByGUID({}), nullptr);
    Utf8StringList paths = {U("old")};
    Utf8StringList guids = {U("old")};
    EXPECT_EQ(manager_.GetCertificatePathsFromRegistry(&paths, &guids), E_FAIL);
    EXPECT_TRUE(paths.empty() && guids.empty());
    std::vector<FileSpec> files(1);
    EXPECT_EQ(manager_.GetCertificatesPathsInDatabase(&files), E_FAIL);
    EXPECT_TRUE(files.empty());
    EXPECT_EQ(manager_.GetCertificatesFolderPath(FilePath("C:\\none"), &files), E_FAIL);
    EXPECT_EQ(manager_.GetCertificatesFolderPath(FilePath("no|path"), &files), E_FAIL);
}

TEST_F(CertificateMgr, FirstMatchWinsInEveryLookup) {
    Install("{1}", "C:\\1.qzc", "Writer, Pen", "QDR_ParentName = Suite\nShared = x\n");
    Install("{2}", "C:\\2.qzc", "Writer, Reader", "QDR_ParentName = Other\n");
    Install("{c}", "C:\\3.qzc", "Mixer", "Shared = y\n");
    Install("{1}\\more", "C:\\4.qzc", "Late");

    const struct {
        const char* name;
        const char* path;
        const char* parent;
    } names[] = {
        {"Writer", "c:\\1.qzc", "Suite"},
        {"wRITER", "c:\\1.qzc", "Suite"},
        {"pen", "c:\\1.qzc", "Suite"},
        {"READER", "c:\\2.qzc", "Other"},
        {"Mixer", "c:\\3.qzc", ""},
        {"Writ", "", ""},
        {"", "", ""},
    };
    for (const auto& row : names) {
        output_.Take();
        const auto found = manager_.GetValidCertificateReference(U(row.name));
        EXPECT_EQ(found == nullptr ? "" : N(found->GetPath()), row.path) << row.name;
        EXPECT_NE(output_.Take().find(": CCertificateMgr::GetValidCertificateReference(), " +
                                      std::string(row.name) +
                                      (found == nullptr ? " not founded\r\n" : " founded\r\n")),
                  std::string::npos);
        EXPECT_EQ(N(manager_.GetParentName(row.name)), row.parent) << row.name;
    }

    const auto one = manager_.GetCertificateReferenceByGUID(U("{1}"));
    ASSERT_NE(one, nullptr);
    EXPECT_EQ(N(one->GetPath()), "c:\\1.qzc");
    EXPECT_EQ(manager_.GetCertificateReferenceByGUID(U("{C}")), nullptr);  // case counts
    EXPECT_EQ(Lines(manager_.GetCertificatesWithField(U("Shared"))),
              (Texts{"c:\\1.qzc {1}", "c:\\3.qzc {c}"}));
    EXPECT_TRUE(manager_.GetCertificatesWithField(U("Share")).empty());
}

std::string Link(int number) {
    return "C:\\link" + std::to_string(number) + ".qzc";
}

// Puts links `first` to `last` - 1, each pointing to the next.
void PutChain(int first, int last) {
    for (int number = first; number < last; ++number) {
        PutCertificate(Link(number), "CertReferencePath = " + Link(number + 1) + "\n");
    }
}

TEST_F(CertificateMgr, PointingCertificatesStandForTheOneTheyLeadTo) {
    PutChain(0, 16);
    PutCertificate(Link(16), "QDR_ProductName = End\nVector Location = x\\{own}\n");
    Register("{pointer}", "C:\\LINK0.QZC");
    EXPECT_EQ(Lines(manager_), Texts{"c:\\link16.qzc {own}"});
    EXPECT_EQ(CountOf("CertReferencePath leads", output_.Take()), 0);

    EXPECT_EQ(manager_.AddCertificate(0, U(Link(3)), U("{passed on to nobody}"), 0), 1);
    EXPECT_EQ(Lines(manager_), Texts{"c:\\link16.qzc {own}"});
}

TEST_F(CertificateMgr, EndlessAndOverlongChainsEndWithOneErrorLine) {
    PutChain(0, 17);
    PutCertificate(Link(17), "QDR_ProductName = Too far\n");
    PutCertificate("C:\\self.qzc", "CertReferencePath = C:\\Self.qzc\n");
    PutCertificate("C:\\ring1.qzc", "CertReferencePath = C:\\ring2.qzc\n");
    PutCertificate("C:\\ring2.qzc", "CertReferencePath = C:\\RING1.qzc\n");
    PutCertificate("C:\\lost.qzc", "CertReferencePath = C:\\missing.qzc\n");
    for (const std::string& path :
         {Link(0), std::string("C:\\self.qzc"), std::string("C:\\ring1.qzc")}) {
        output_.Take();
        EXPECT_EQ(manager_.AddCertificate(0, U(path), {}, 0), 0) << path;
        EXPECT_EQ(CountOf("CertReferencePath leads in a circle or too far", output_.Take()), 1)
            << path;
    }
    EXPECT_EQ(manager_.AddCertificate(0, U("C:\\lost.qzc"), {}, 0), 0);
    EXPECT_EQ(manager_.AddCertificate(0, {}, U("{G}"), 0), 0);
    EXPECT_EQ(manager_.AddCertificate(0, U(Link(1)), {}, 0), 1);
}

// Ways to write the path of C:\Suite\x.qzc, and texts that are no path of it, by what comes of
// them.
const char* const kOddButReadable[] = {
    "C:\\Suite\\\\x.qzc",      "C:/Suite//x.qzc",
    "C:/Suite/x.qzc",          "C:\\Suite\\x.qzc ",
    "C:\\Suite\\x.qzc.",       "\\\\?\\C:\\Suite\\x.qzc",
    "\\\\.\\C:\\Suite\\x.qzc", "C:\\Suite\\.\\..\\Suite\\x.qzc",
};
const char* const kOddAndNothing[] = {
    "x.qzc",
    "C:",
    "\\",
    "C:\\Suite\\*.qzc",
    "C:\\Suite\\x\ty.qzc",
    "1:\\Suite\\x",
    "\\\\server",
    "\\\\s\\\\share\\x",
    "C:\\Suite\\x:y",
};

TEST_F(CertificateMgr, OddPathsLeaveTheOthersAlone) {
    PutCertificate("C:\\Suite\\x.qzc", "QDR_ProductName = Odd\n");
    Texts expected;
    int number = 0;
    const auto put = [&](const std::string& path, bool isReadable) {
        const std::string name = std::to_string(++number);
        Register("{odd " + name + "}", path);
        PutCertificate("C:\\p" + name + ".qzc", "CertReferencePath = \"" + path + "\"\n");
        Register("{pointer " + name + "}", "C:\\p" + name + ".qzc");
        if (isReadable) {
            expected.push_back(AsciiToLower(path) + " {odd " + name + "}");
        }
    };
    for (const char* path : kOddButReadable) {
        put(path, true);
    }
    for (const char* path : kOddAndNothing) {
        put(path, false);
    }
    put("C:\\Suite\\" + std::string(253, 'x'), false);  // too long for an entry, and for a name
    Install("{A}", "C:\\a.qzc", "A");
    Install("{Z}", "C:\\z.qzc", "Z");
    expected.insert(expected.end(), {"c:\\a.qzc {A}", "c:\\z.qzc {Z}"});
    std::ranges::sort(expected);
    for (int process = 0; process < 10; ++process) {
        std::istringstream output(RunChild({BREVIK_TEST_CATALOGUE_PROBE}).output);
        Texts lines;
        for (std::string line; std::getline(output, line);) {
            lines.push_back(line);
        }
        std::ranges::sort(lines);
        EXPECT_EQ(lines, expected) << "process " << process;
    }
    EXPECT_EQ(manager_.GetCertificateCount(), static_cast<int>(expected.size()));
    EXPECT_NE(
        output_.Take().find("The record key c:\\suite\\\\x.qzc names no file: invalid file path"),
        std::string::npos);
}

// How often the load asked the database for its certificates.
std::ptrdiff_t DatabasePasses(const std::string& said) {
    return CountOf("GetCertificatesPathsInDatabase, found ", said);
}

TEST_F(CertificateMgr, EmptyDatabaseIsAskedAgainWhenTheRegistryPromisedMore) {
    Install("{A}", "C:\\a.qzc", "A");
    Register("{B}", "C:\\missing.qzc");
    EXPECT_EQ(Lines(manager_), Texts{"c:\\a.qzc {A}"});
    const std::string said = output_.Take();
    EXPECT_NE(said.find("GetCertificatesPathsInDatabase, found 0 certificates.)"),
              std::string::npos);
    EXPECT_NE(said.find("GetCertificatesPathsInDatabase, found 1 certificates.)"),
              std::string::npos);
}

TEST_F(CertificateMgr, DatabaseWithCertificatesIsAskedOnce) {
    Install("{A}", "C:\\a.qzc", "A");
    Import("C:\\a.qzc");
    Register("{B}", "C:\\missing.qzc");
    EXPECT_EQ(manager_.GetCertificateCount(), 1);
    EXPECT_EQ(DatabasePasses(output_.Take()), 1);
}

TEST_F(CertificateMgr, ListOfTheProcessIsLoadedOnce) {
    Install("{A}", "C:\\a.qzc", "A");
    const Texts first = Lines(manager_);
    output_.Take();
    Install("{B}", "C:\\b.qzc", "B");
    RemoveEntry("{A}");
    CBrevikKitCertificateMgr second;
    EXPECT_EQ(Lines(second), first);
    EXPECT_EQ(output_.Take(), "");
    // The objects are the same ones.
    second.GetCertificateReferenceByGUID(U("{A}"))->SetGUID(U("{changed}"));
    EXPECT_NE(manager_.GetCertificateReferenceByGUID(U("{changed}")), nullptr);

    const ChildResult later = RunChild({BREVIK_TEST_CATALOGUE_PROBE});
    EXPECT_EQ(later.output, "c:\\a.qzc \nc:\\b.qzc {B}\n");
}

TEST_F(CertificateMgr, AddingToALoadedManagerLeavesTheOthersAlone) {
    Install("{A}", "C:\\a.qzc", "A");
    PutCertificate("C:\\b.qzc", "QDR_ProductName = B\n");
    CertificateReferences before;
    manager_.GetCertificateList(&before);
    EXPECT_EQ(manager_.AddCertificate(0, U("C:\\b.qzc"), U("{B}"), 0), 1);
    CBrevikKitCertificateMgr other;
    EXPECT_EQ(Lines(other), Texts{"c:\\a.qzc {A}"});
}

TEST_F(CertificateMgr, LoadInAnotherModeBecomesTheListOfTheProcess) {
    Install("{A}", "C:\\a.qzc", "A");
    PutCertificate("C:\\apps\\b.qzc", "QDR_ProductName = B\n");
    const WideString apps = WIDE("C:\\apps");
    EXPECT_EQ(manager_.GetCertificateCount(), 1);

    CCertificateMgr scanning;
    scanning.Load(CCertificateMgr::folders_first, &apps, 0);
    output_.Take();
    // The list is of that mode until a manager that has it asks in the usual one.
    EXPECT_EQ(scanning.GetCertificateCount(), 2);
    CBrevikKitCertificateMgr later;
    EXPECT_EQ(Lines(later), (Texts{"c:\\apps\\b.qzc ", "c:\\a.qzc {A}"}));
    EXPECT_EQ(DatabasePasses(output_.Take()), 0);
}

TEST_F(CertificateMgr, LoadedManagerOnlyNotesAnotherMode) {
    Install("{A}", "C:\\a.qzc", "A");
    EXPECT_EQ(manager_.GetCertificateCount(), 1);
    manager_.Load(CCertificateMgr::folders_first, nullptr, 0);
    output_.Take();
    CBrevikKitCertificateMgr next;
    EXPECT_EQ(next.GetCertificateCount(), 1);
    EXPECT_EQ(DatabasePasses(output_.Take()), 1);
}

TEST_F(CertificateMgr, FoldersComeFirstFilesAheadOfTheFoldersBelow) {
    Install("{R}", "C:\\registered.qzc", "R");
    PutCertificate("C:\\apps\\deep\\er\\3.QZC", "N = 3\n");
    PutCertificate("C:\\apps\\zz.qzc", "N = 2\n");
    PutCertificate("C:\\apps\\a.qzc.txt", "N = no\n");
    PutCertificate("C:\\apps\\qzc", "N = no\n");
    PutFile("C:\\apps\\deep\\damaged.qzc", ForeignCertificate("N = x\n"));
    fs::create_directory_symlink("..", HostPath("C:\\apps\\deep\\up"));
    Register("{Z}", "C:\\apps\\zz.qzc");
    std::vector<FileSpec> files;
    EXPECT_EQ(manager_.GetCertificatesFolderPath(FilePath("C:\\apps"), &files), 0);
    EXPECT_EQ(files.size(), 3u);
    EXPECT_NE(output_.Take().find("GetCertificatesFolderPath, found 3 certificates.)"),
              std::string::npos);
    const WideString apps = WIDE("C:\\Apps");
    manager_.Load(CCertificateMgr::folders_first, &apps, 0);
    EXPECT_EQ(Lines(manager_), (Texts{"c:\\apps\\zz.qzc {Z}", "c:\\apps\\deep\\er\\3.qzc ",
                                      "c:\\registered.qzc {R}"}));
}

TEST_F(CertificateMgr, FoldersOfHostAndParentAreScanned) {
    PutCertificate("C:\\Launcher\\l.qzc", "N = l\n");
    PutCertificate("C:\\Program\\p.qzc", "N = p\n");
    fs::copy_file(BREVIK_TEST_HOST, HostPath("C:\\Launcher\\start"));
    fs::copy_file(BREVIK_TEST_CATALOGUE_PROBE, HostPath("C:\\Program\\probe"));
    const ChildResult result =
        RunChild({HostPath("C:\\Launcher\\start"), "start", HostPath("C:\\Program\\probe"), "3"});
    EXPECT_EQ(result.output, "c:\\program\\p.qzc \nc:\\launcher\\l.qzc \n");
    EXPECT_EQ(RunChild({HostPath("C:\\Program\\probe"), "0"}).output,
              "c:\\program\\p.qzc \nc:\\launcher\\l.qzc \n");  // in the database by now
}

TEST_F(CertificateMgr, ProcessingCertificatesOpensTheirFilesToEverybody) {
    for (const char* name : {"C:\\apps\\1.qzc", "C:\\apps\\3.qzc"}) {
        PutCertificate(name, "N = x\n");
        ASSERT_EQ(chmod(HostPath(name).c_str(), 0600), 0);
    }
    const WideString apps = WIDE("C:\\apps");
    const auto mode_of = [](const char* name) {
        struct stat status = {};
        stat(HostPath(name).c_str(), &status);
        return status.st_mode & 0777;
    };
    manager_.Load(CCertificateMgr::folders_first, &apps, 0);
    EXPECT_EQ(mode_of("C:\\apps\\3.qzc"), 0600u);
    CCertificateMgr processing;
    processing.Load(CCertificateMgr::processing_certificates, &apps, 0);
    EXPECT_NE(output_.Take().find("SetFileSecurity result = c:\\apps\\1.qzc)"), std::string::npos);
    EXPECT_EQ(mode_of("C:\\apps\\1.qzc") & 0666u, 0666u);
}

TEST_F(CertificateMgr, ReimportReadsTheFilesAnew) {
    Install("{A}", "C:\\a.qzc", "Old");
    EXPECT_NE(manager_.GetValidCertificateReference(U("Old")), nullptr);
    PutCertificate("C:\\a.qzc", "QDR_ProductName = New\n");
    CCertificateMgr scanning;
    const WideString none = WIDE("C:\\none");
    scanning.Load(CCertificateMgr::folders_first, &none, 1);
    EXPECT_NE(scanning.GetValidCertificateReference(U("New")), nullptr);
    EXPECT_EQ(scanning.GetValidCertificateReference(U("Old")), nullptr);
}

TEST_F(CertificateMgr, LoadThatThrewIsTriedAgain) {
    Install("{A}", "C:\\a.qzc", "A");
    // A file where the database's folder belongs.
    fs::create_directories(HostPath("C:\\ProgramData"));
    std::ofstream(HostPath("C:\\ProgramData\\Velmar")) << "in the way";
    EXPECT_THROW(manager_.GetCertificateCount(), std::exception);
    fs::remove(HostPath("C:\\ProgramData\\Velmar"));
    CBrevikKitCertificateMgr next;
    fs::create_directories(HostPath("C:\\ProgramData\\Velmar"));
    EXPECT_EQ(Lines(next), Texts{"c:\\a.qzc {A}"});
    EXPECT_EQ(Lines(manager_), Texts{"c:\\a.qzc {A}"});
}

// A folder in a file's place cannot be opened, as a file cannot for want of rights or descriptors.
TEST_F(CertificateMgr, ListThatMissedSomethingForNowIsNotKept) {
    Install("{A}", "C:\\a.qzc", "A");
    Register("{B}", "C:\\b.qzc");
    fs::create_directory(HostPath("C:\\b.qzc"));
    EXPECT_EQ(Lines(manager_), Texts{"c:\\a.qzc {A}"});
    EXPECT_THAT(manager_.Missed(), testing::HasSubstr("c:\\b.qzc"));
    fs::remove(HostPath("C:\\b.qzc"));
    Install("{B}", "C:\\b.qzc", "B");
    CBrevikKitCertificateMgr next;
    EXPECT_EQ(Lines(next), (Texts{"c:\\a.qzc {A}", "c:\\b.qzc {B}"}));
    EXPECT_EQ(next.Missed(), "");
}

TEST_F(CertificateMgr, LoadEndsWithTheFirstWaitInVain) {
    PutCertificate("C:\\a.qzc", "QDR_ProductName = A\n");
    {
        RecordGathering gathering;
        RecordGathering::Note(SQLite3WrapperException(kSqliteBusy, "held by another process"));
        EXPECT_EQ(manager_.AddCertificate(0, U("C:\\a.qzc"), {}, 0), 0);
        EXPECT_TRUE(gathering.HasMissed());
    }
    EXPECT_EQ(manager_.AddCertificate(0, U("C:\\a.qzc"), {}, 0), 1);
}

TEST_F(CertificateMgr, ThreadsThatLoadAtOnceGetOneList) {
    constexpr int kThreads = 20;
    for (int i = 0; i < 10; ++i) {
        const std::string name = std::to_string(i);
        Install("{" + name + "}", "C:\\" + name + ".qzc", "P" + name);
    }
    std::atomic<int> waiting = kThreads;
    std::vector<CertificateReferences> lists(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, i] {
            CoInitialize(nullptr);
            for (--waiting; waiting > 0;) {
            }
            CBrevikKitCertificateMgr manager;
            manager.GetCertificateList(&lists[static_cast<std::size_t>(i)]);
            manager.AddCertificate(0, U("C:\\0.qzc"), U(i % 2 == 0 ? "{0}" : "{zero}"), 0);
            EXPECT_NE(manager.GetCertificateReferenceByGUID(U("{9}")), nullptr);
            CoUninitialize();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(lists.front().size(), 10u);
    for (const CertificateReferences& list : lists) {
        EXPECT_EQ(list, lists.front());
    }
}

}  // namespace
