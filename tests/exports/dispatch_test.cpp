// The three functions that ask the online services, against the stand-in.

#include <brevikconfig.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <latch>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "support/child_process.h"
#include "support/debug_output.h"
#include "support/stand_in.h"
#include "support/updatable_product.h"

namespace {

namespace fs = std::filesystem;
using namespace InstalledProducts;
using UpdatableProduct::Entry;
using Lines = std::vector<std::string>;

std::string Update(int slot, const std::string& arguments) {
    return StandIn::Line("IUpdateServices", 1, slot,
                         slot == 16 ? "RunUpdate" : "RunUpdateInBackground", arguments);
}
std::string Check(const std::string& arguments) {
    return StandIn::Line("IUpdateServices", 1, 17, "CheckUpdateOrMessage", arguments);
}
std::string Told(const std::string& sku, const std::string& version, int language) {
    return "\"sku\":\"" + sku + "\",\"version\":\"" + version +
           "\",\"langId\":" + std::to_string(language);
}
const std::string kProduct = ",\"productIdentifier\":\"Mixer\"";

class UpdateExports : public testing::Test {
  protected:
    void SetUp() override { RegisterReader(BREVIK_TEST_READER_COMPONENT); }

    // What an update that reaches the service tells it.
    std::string UpdateTells(const char* locale) {
        EXPECT_EQ(bvkc_Dispatch_InvokeUpdate("Mixer", locale, 0), 0);
        const Lines lines = sibling_.Take();
        return lines.empty() ? "nothing" : lines.back();
    }

    StandIn sibling_;
};

TEST_F(UpdateExports, SlotsAndArguments) {
    UpdatableProduct::Install();
    EXPECT_EQ(bvkc_Dispatch_InvokeUpdate("Mixer", "DEU", 0), 0);
    EXPECT_EQ(bvkc_Dispatch_InvokeUpdate("Mixer", "DEU", 1), 0);
    EXPECT_EQ(bvkc_Dispatch_IsUpdateOrMessageAvailable("MIXER", "DEU", 0), 1);
    EXPECT_EQ(bvkc_Dispatch_IsUpdateOrMessageAvailable("MIXER", "DEU", 7), 1);
    const std::string told = Told("SKU-1", "13.2", 1031);
    EXPECT_EQ(sibling_.Take(),
              (Lines{StandIn::Creation("UpdateServices"), Update(16, told + kProduct),
                     Update(20, told + kProduct), Check(told + ",\"connectToServer\":0"),
                     Check(told + ",\"connectToServer\":-1")}));
}

TEST_F(UpdateExports, WithoutUpdateInformationTheServiceIsNotAsked) {
    DebugOutput output;
    const std::string used = "\"UsedBy\"=\"{S}\"\n";
    Install("{off}", "C:\\off.qzc", "Off", "QDR_UpdateManager = 0\n");
    Install("{missing}", "C:\\missing.qzc", "Missing");
    Install("{unused}", "C:\\unused.qzc", "Unused", "QDR_UpdateManager = 1\n");
    AddToRegistry(Entry("{off}", used) + Entry("{missing}", used) + Entry("{unused}", "") +
                  Entry("{S}", ""));
    for (const char* product : {"Off", "Missing", "Unused", "none", "", "\xFF\xC3"}) {
        EXPECT_EQ(bvkc_Dispatch_InvokeUpdate(product, "", 0), 2) << product;
        EXPECT_EQ(bvkc_Dispatch_IsUpdateOrMessageAvailable(product, "", 0), 0) << product;
    }
    EXPECT_EQ(sibling_.Take(), Lines());
    // Nor are the uninstall keys looked at.
    EXPECT_EQ(output.Take().find("strVersion"), std::string::npos);
}

TEST_F(UpdateExports, UninstallDataIsReadAnewEachTime) {
    UpdatableProduct::Install();
    EXPECT_EQ(UpdateTells("FRA"), Update(16, Told("SKU-1", "13.2", 1036) + kProduct));

    AddToRegistry(Entry("{S}", "\"VersionMajor\"=-\n\"VersionMinor\"=\"1\"\n\"SKUID\"=-\n"));
    EXPECT_EQ(UpdateTells("FRA"), Update(16, Told("{G}", "0.0", 1036) + kProduct));

    UpdatableProduct::RemoveEntry("{S}");
    EXPECT_EQ(UpdateTells("FRA"), Update(16, Told("{G}", "", 1036) + kProduct));

    UpdatableProduct::RemoveEntry("{G}");
    EXPECT_EQ(bvkc_Dispatch_InvokeUpdate("Mixer", "FRA", 0), 3);
    EXPECT_EQ(bvkc_Dispatch_IsUpdateOrMessageAvailable("Mixer", "FRA", 0), 0);
    EXPECT_EQ(sibling_.Take(), Lines());
}

TEST_F(UpdateExports, UninstallKeysOfThe32BitViewCount) {
    UpdatableProduct::Install();
    AddToRegistry(
        "\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\"
        "Uninstall\\{S}]\n\"VersionMajor\"=dword:00000007\n\"SKUID\"=\"SKU-32\"\n");
    EXPECT_EQ(UpdateTells("DEU"), Update(16, Told("SKU-32", "7.0", 1031) + kProduct));
}

TEST_F(UpdateExports, LocaleIsALanguageAnUnknownOneIs0AndAnEmptyOneTheSuitesOwn) {
    UpdatableProduct::Install();
    const auto told = [](int language) {
        return Update(16, Told("SKU-1", "13.2", language) + kProduct);
    };
    EXPECT_EQ(UpdateTells("DEU"), told(1031));
    EXPECT_EQ(UpdateTells("deu"), told(1031));
    EXPECT_EQ(UpdateTells("xyz"), told(0));
    EXPECT_EQ(UpdateTells("\xFF"), told(0));
    EXPECT_EQ(UpdateTells(""), told(1033));
    EXPECT_EQ(UpdateTells(nullptr), told(1033));
    SetEntry("{G}", {{"Filename", "C:\\g.qzc"}, {"Language", "1040"}});
    EXPECT_EQ(UpdateTells(""), told(1040));
}

TEST_F(UpdateExports, IdentifierThatIsNoTextIsPassedOnAsConverted) {
    UpdatableProduct::Install("Mixer\uFFFD");
    EXPECT_EQ(bvkc_Dispatch_InvokeUpdate("Mixer\xFF", "DEU", 1), 0);
    EXPECT_EQ(sibling_.Take().back(),
              Update(20, Told("SKU-1", "13.2", 1031) + ",\"productIdentifier\":\"Mixer\uFFFD\""));
}

TEST_F(UpdateExports, AnswersOfTheService) {
    UpdatableProduct::Install();
    const struct {
        const char* settings;
        int update;
        int background;
        int available;
    } kCases[] = {
        {"", 0, 0, 1},
        {"RunUpdate = 1", 4, 0, 1},
        {"RunUpdate = 0x80004005", 4, 0, 1},
        {"RunUpdateInBackground = 1", 0, 4, 1},
        {"RunUpdate = throw\nRunUpdateInBackground = throw", 4, 4, 1},
        {"available = 0", 0, 0, 0},
        {"available = 1", 0, 0, 0},
        {"available = 0xFFFF", 0, 0, 1},
        {"CheckUpdateOrMessage = 1", 0, 0, 0},
        {"CheckUpdateOrMessage = 0x80004005", 0, 0, 0},
        {"CheckUpdateOrMessage = throw", 0, 0, 0},
    };
    for (const auto& answer : kCases) {
        sibling_.Set(answer.settings);
        EXPECT_EQ(bvkc_Dispatch_InvokeUpdate("Mixer", "DEU", 0), answer.update) << answer.settings;
        EXPECT_EQ(bvkc_Dispatch_InvokeUpdate("Mixer", "DEU", 1), answer.background)
            << answer.settings;
        EXPECT_EQ(bvkc_Dispatch_IsUpdateOrMessageAvailable("Mixer", "DEU", 1), answer.available)
            << answer.settings;
    }
}

// Without a service nothing is told, which is no failure; it is asked for again each time.
TEST_F(UpdateExports, WithoutAService) {
    UpdatableProduct::Install();
    for (const char* failure : {"CreateInstance = 0x80040154", "CreateInstance = throw"}) {
        sibling_.Set(failure);
        EXPECT_EQ(bvkc_Dispatch_InvokeUpdate("Mixer", "DEU", 0), 0);
        EXPECT_EQ(bvkc_Dispatch_IsUpdateOrMessageAvailable("Mixer", "DEU", 0), 1);
        for (const std::string& line : sibling_.Take()) {
            EXPECT_EQ(line, StandIn::Creation("UpdateServices")) << failure;
        }
    }
    sibling_.Set("");
    EXPECT_EQ(UpdateTells("DEU"), Update(16, Told("SKU-1", "13.2", 1031) + kProduct));
}

TEST_F(UpdateExports, WithoutTheLibraryUntilItIsInstalled) {
    UpdatableProduct::Install();
    sibling_.Remove();
    EXPECT_EQ(bvkc_Dispatch_InvokeUpdate("Mixer", "DEU", 0), 0);
    EXPECT_EQ(bvkc_Dispatch_IsUpdateOrMessageAvailable("Mixer", "DEU", 0), 1);
    EXPECT_EQ(bvkc_Dispatch_InvokeUpdate("none", "DEU", 0), 2);
    StandIn installed;
    installed.Set("available = 0");
    EXPECT_EQ(bvkc_Dispatch_IsUpdateOrMessageAvailable("Mixer", "DEU", 0), 0);
    EXPECT_EQ(installed.Take().size(), 2u);
}

// Each may make one; who was not the first gives it back.
TEST_F(UpdateExports, FirstDispatchesAtOnceTellOneService) {
    UpdatableProduct::Install();
    sibling_.Set("delay = 50");
    constexpr int kThreads = 8;
    std::latch start(kThreads);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&start] {
            start.arrive_and_wait();
            EXPECT_EQ(bvkc_Dispatch_InvokeUpdate("Mixer", "DEU", 0), 0);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const Lines lines = sibling_.Take();
    const auto made = std::ranges::count(lines, StandIn::Creation("UpdateServices"));
    const auto given_back = std::ranges::count_if(lines, [](const std::string& line) {
        return line.find("\"Release\"") != std::string::npos;
    });
    EXPECT_EQ(given_back, made - 1);
    EXPECT_EQ(std::ranges::count(lines, lines.back()), kThreads) << lines.back();
}

TEST_F(UpdateExports, TraceTellsTheRoadOfADispatch) {
    UpdatableProduct::Install();
    DebugOutput output;
    bvkc_Dispatch_InvokeUpdate("Mixer", "DEU", 0);
    output.Take();
    bvkc_Dispatch_InvokeUpdate("Mixer", "DEU", 1);
    const std::string road =
        "BREVIK KIT:   CVelmarProductCertifier::GetUpdateInfo - enter\r\n"
        "BREVIK KIT:     CVelmarProductCertifier::GetUpdateInfo() - strProductName = Mixer\r\n"
        "BREVIK KIT:     CVelmarProductCertifier::FindValidatedCertificate - enter\r\n"
        "BREVIK KIT:       CCertificateMgr::GetValidCertificateReference(), Mixer founded\r\n"
        "BREVIK KIT:     CVelmarProductCertifier::FindValidatedCertificate - return\r\n"
        "BREVIK KIT:     CVelmarProductCertifier::GetUpdateInfo() - QDR_UpdateManager = 1, "
        "certificate name = Mixer, installer guid = {G} \r\n"
        "BREVIK KIT:   CVelmarProductCertifier::GetUpdateInfo - return\r\n";
    const std::string told =
        "BREVIK KIT:   Dispatch_InvokeUpdate(dwLangID=1031, strVersion=13.2)\r\n";
    EXPECT_EQ(output.Take(),
              "BREVIK KIT: BrevikKitAPI bvkc_Dispatch_InvokeUpdate "
              "(productIdentifier=Mixer,locale=DEU,bRunInBackground=1)\r\n"
              "BREVIK KIT: BrevikKit:Dispatch_InvokeUpdate - enter\r\n"
              "BREVIK KIT:   BrevikKit:Dispatch_InvokeUpdate - productIdentifier=Mixer, "
              "locale=DEU, bRunInBackground=true\r\n" +
                  road +
                  "BREVIK KIT:   Dispatch_InvokeUpdate: bGotUpdateInfo = true, "
                  "certUpdateInfo.m_strInstallerGUID = {G}\r\n" +
                  told + "BREVIK KIT: BrevikKit:Dispatch_InvokeUpdate - return\r\n");
    sibling_.Set("CheckUpdateOrMessage = throw");
    bvkc_Dispatch_IsUpdateOrMessageAvailable("Mixer", "DEU", 0);
    const std::string check = output.Take();
    EXPECT_EQ(check.substr(check.find(road)),
              road +
                  "BREVIK KIT:   Dispatch_IsUpdateOrMessageAvailable: bGotUpdateInfo = true, "
                  "certUpdateInfo.m_strInstallerGUID = {G}\r\n" +
                  told +
                  "BREVIK KIT:   IUpdateServices::CheckUpdateOrMessage: error = -3, message = "
                  "\"runtime error: the stand-in's settings say so\"\r\n"
                  "BREVIK KIT: BrevikKit:Dispatch_IsUpdateOrMessageAvailable - return\r\n");
}

// A product that is not found ends behind the outcome; missing uninstall data behind the last line.
TEST_F(UpdateExports, TraceTellsWhereADispatchEnds) {
    UpdatableProduct::Install();
    DebugOutput output;
    const auto end = [](const std::string& lines) {
        return lines + "BREVIK KIT: BrevikKit:Dispatch_InvokeUpdate - return\r\n";
    };
    EXPECT_EQ(bvkc_Dispatch_InvokeUpdate("none", "DEU", 0), 2);
    EXPECT_TRUE(output.Take().ends_with(
        end("BREVIK KIT:   CVelmarProductCertifier::GetUpdateInfo - return\r\n"
            "BREVIK KIT:   Dispatch_InvokeUpdate: bGotUpdateInfo = false, "
            "certUpdateInfo.m_strInstallerGUID = \r\n")));
    // Which installation uses the product is read once.
    EXPECT_EQ(bvkc_Dispatch_InvokeUpdate("Mixer", "DEU", 0), 0);
    UpdatableProduct::RemoveEntry("{S}");
    UpdatableProduct::RemoveEntry("{G}");
    output.Take();
    EXPECT_EQ(bvkc_Dispatch_InvokeUpdate("Mixer", "DEU", 0), 3);
    EXPECT_TRUE(output.Take().ends_with(
        end("BREVIK KIT:   Dispatch_InvokeUpdate: bGotUpdateInfo = true, "
            "certUpdateInfo.m_strInstallerGUID = {G}\r\n"
            "BREVIK KIT:   Dispatch_InvokeUpdate(dwLangID=0, strVersion=)\r\n")));
}

// The handler was registered ahead of the object, so its calls come when that is gone.
TEST_F(UpdateExports, ObjectIsReleasedAtTheEndAndCallsBehindItMakeAnother) {
    UpdatableProduct::Install("p");
    const ChildResult host = RunChild({BREVIK_TEST_HOST, "atexit", "update", "p", "DEU", "0"});
    EXPECT_EQ(host.output, "0\n");
    EXPECT_EQ(host.exitCode, 0) << host.errors;
    const Lines lines = sibling_.Take();
    ASSERT_GE(lines.size(), 6u);
    const std::string told = Told("SKU-1", "13.2", 1031);
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + 6),
              (Lines{StandIn::Creation("UpdateServices"),
                     Update(16, told + ",\"productIdentifier\":\"p\""),
                     StandIn::Line("IUpdateServices", 1, 2, "Release", ""),
                     StandIn::Creation("UpdateServices"),
                     StandIn::Line("IUpdateServices", 2, 20, "RunUpdateInBackground",
                                   told + ",\"productIdentifier\":\"p\""),
                     StandIn::Line("IUpdateServices", 2, 17, "CheckUpdateOrMessage",
                                   told + ",\"connectToServer\":0")}));
}

class ProfileExport : public testing::Test {
  protected:
    // Result and text of a call that owns no window, as "RESULT TEXT".
    static std::string Profile(const char* uid = "u", const char* locale = "ENU") {
        char* text = const_cast<char*>("left as it was");
        const std::int32_t result = bvkc_Dispatch_GetKindletProfileID(uid, locale, nullptr, &text);
        const std::string shown = text != nullptr ? text : "(none)";
        brevik_CoTaskMemFree(text);
        return std::to_string(result) + " " + shown;
    }

    // The calls on one dialog.
    static Lines Calls(int object, const std::string& locale, const std::string& uid,
                       unsigned window) {
        const auto line = [object](int slot, const char* operation, const std::string& arguments) {
            return StandIn::Line("IDialogServices", object, slot, operation, arguments);
        };
        const std::string ofWindow = "\",\"window\":" + std::to_string(window);
        return {StandIn::Creation("DialogServices"),
                line(20, "SetLocale", "\"locale\":\"" + locale + "\""),
                line(25, "SetParameter", "\"name\":\"dialogwidth\",\"type\":22,\"value\":600"),
                line(25, "SetParameter", "\"name\":\"dialogheight\",\"type\":22,\"value\":450"),
                line(26, "GetProfileID", "\"kindletUID\":\"" + uid + ofWindow),
                line(2, "Release", "")};
    }
};

TEST_F(ProfileExport, DialogIsMadeAnewForEachCall) {
    StandIn sibling;
    sibling.Set("profile = P-\u00E9-1");
    EXPECT_EQ(Profile("user", "xx"), "0 P-\u00E9-1");
    EXPECT_EQ(sibling.Take(), Calls(1, "xx", "user", 0));
    EXPECT_EQ(Profile("\xFFz", ""), "0 P-\u00E9-1");
    EXPECT_EQ(sibling.Take(), Calls(2, "ENU", "\uFFFDz", 0));
    char* text = nullptr;
    void* const window = reinterpret_cast<void*>(std::uintptr_t{0xFFFFFFFF9ABCDEF0});
    EXPECT_EQ(bvkc_Dispatch_GetKindletProfileID("", nullptr, window, &text), 0);
    brevik_CoTaskMemFree(text);
    EXPECT_EQ(sibling.Take(), Calls(3, "ENU", "", 0x9ABCDEF0));
}

TEST_F(ProfileExport, AnswersOfTheService) {
    StandIn sibling;
    const struct {
        const char* settings;
        const char* outcome;
    } kCases[] = {
        {"profile = P", "0 P"},
        {"profile =", "2 (none)"},
        {"profile = \"\"", "2 (none)"},
        {"profile = P\nGetProfileID = 1", "1 P"},
        {"profile =\nGetProfileID = 1", "1 (none)"},
        {"profile = P\nGetProfileID = 2", "2 P"},
        {"profile = P\nGetProfileID = 0x80004005", "2 P"},
        {"profile =\nGetProfileID = 0x80004005", "2 (none)"},
        {"profile =\nGetProfileID = throw", "2 (none)"},
        {"profile = P\nSetLocale = 0x80004005\nSetParameter = 1", "0 P"},
        {"profile = P\nSetLocale = throw\nSetParameter = throw", "0 P"},
        {"profile = P\nCreateInstance = 1", "2 (none)"},
        {"profile = P\nCreateInstance = 0x80004005", "2 (none)"},
        {"profile = P\nCreateInstance = throw", "2 (none)"},
    };
    for (const auto& answer : kCases) {
        sibling.Set(answer.settings);
        EXPECT_EQ(Profile(), answer.outcome) << answer.settings;
    }
}

TEST_F(ProfileExport, TraceTellsHowItEnded) {
    const auto last = [](const std::string& profile) {
        return "BREVIK KIT:   BrevikKit:Dispatch_GetKindletProfileID(strKindletUID=u, locale=, "
               "hwnd=00000000: returns strProfileID=" +
               profile + ")\r\nBREVIK KIT: BrevikKit:Dispatch_GetKindletProfileID - return\r\n";
    };
    DebugOutput output;
    EXPECT_EQ(Profile("u", ""), "2 (none)");
    EXPECT_EQ(output.Take(),
              "BREVIK KIT: BrevikKitAPI bvkc_Dispatch_GetKindletProfileID "
              "(strKindletUID=u,locale=,hWnd=0)\r\n"
              "BREVIK KIT: BrevikKit:Dispatch_GetKindletProfileID - enter\r\n"
              "BREVIK KIT:   pServices.CoCreateInstance failed?! hr = 80004005\r\n" +
                  last("<na>"));
    StandIn sibling;
    EXPECT_EQ(Profile("u", ""), "0 stand-in");
    EXPECT_TRUE(output.Take().ends_with(last("stand-in")));
    sibling.Set("CreateInstance = 1");
    EXPECT_EQ(Profile("u", ""), "2 (none)");
    EXPECT_NE(output.Take().find("failed?! hr = 00000001\r\n" + last("<na>")), std::string::npos);
    sibling.Set("profile =\nGetProfileID = 0x80004005");
    EXPECT_EQ(Profile("u", ""), "2 (none)");
    EXPECT_TRUE(output.Take().ends_with(last("<na>")));
}

// Beside the host, beside the program that started it, on the search path, in the shared folder.
TEST_F(ProfileExport, LibraryIsTakenFromTheFirstPlaceThatHasIt) {
    const fs::path own = TestMachine::ScratchFolder() / "Own";
    const fs::path launcher = TestMachine::ScratchFolder() / "Launcher";
    const fs::path onPath = TestMachine::ScratchFolder() / "OnPath";
    const std::vector<fs::path> places = {own, launcher, onPath, StandIn::SharedFolder()};
    std::vector<StandIn> siblings;
    for (std::size_t place = 0; place < places.size(); ++place) {
        siblings.emplace_back(places[place]);
        siblings.back().Set("profile = " + std::to_string(place));
    }
    fs::copy_file(BREVIK_TEST_HOST, own / "host");
    fs::copy_file(BREVIK_TEST_HOST, launcher / "host");
    const auto answer = [&] {
        return RunChild({launcher / "host", "start", own / "host", "profile", "u", "ENU"},
                        {{"PATH", onPath.string() + ":/usr/bin:/bin"}})
            .output;
    };
    for (std::size_t place = 0; place < places.size(); ++place) {
        EXPECT_EQ(answer(), "0 " + std::to_string(place) + "\n");
        EXPECT_EQ(siblings[place].Take().size(), 6u);
        siblings[place].Remove();
    }
    EXPECT_EQ(answer(), "2 (none)\n");
}

}  // namespace
