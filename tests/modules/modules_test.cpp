#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>

#include "modules/CLibraryUtilsImpl.h"
#include "modules/DllPathManager.h"
#include "modules/ModuleFolders.h"
#include "modules/SmartComInitializer.h"
#include "platform/folders.h"
#include "support/test_machine.h"
#include "text/StringConversions.h"

namespace {

namespace fs = std::filesystem;

// A host path under drive Z: as the library tells folders.
WideString LowerPath(const fs::path& host) {
    std::string text = "z:" + host.string();
    std::replace(text.begin(), text.end(), '/', '\\');
    return StringToLower(NarrowToWide(text));
}

WideString CurrentFolder() {
    WCHAR path[MAX_PATH];
    return WideString(path, GetCurrentDirectoryW(MAX_PATH, path));
}

// Each place of the search holds a file; the nearest is removed one by one.
TEST(ModuleFolders, LibraryIsLookedForInFourPlacesInTheirOrder) {
    const fs::path own = fs::canonical("/proc/self/exe").parent_path();
    const fs::path parent =
        fs::canonical("/proc/" + std::to_string(getppid()) + "/exe").parent_path();
    const fs::path system = TestMachine::Folder() / "drives/c/Windows/System32";
    const fs::path shared =
        TestMachine::Folder() / "drives/c/Program Files/Common Files/Ondrel Shared/DllShared";
    EXPECT_EQ(GetProcessFolder(), LowerPath(own));
    EXPECT_EQ(GetParentProcessFolder(), LowerPath(parent));

    const std::string name = "BrevikSearch" + std::to_string(getpid()) + ".dll";
    const WideString wide = NarrowToWide(name);
    EXPECT_EQ(FindLibraryFolder(wide), WIDE(""));  // makes the machine, too
    fs::create_directories(shared);
    const auto put = [&](const fs::path& folder) { std::ofstream(folder / name) << "x"; };
    put(shared);
    EXPECT_EQ(FindLibraryFolder(wide),
              WIDE("c:\\program files\\common files\\ondrel shared\\dllshared"));
    put(system);
    EXPECT_EQ(FindLibraryFolder(wide), WIDE("c:\\windows\\system32"));
    put(own);
    EXPECT_EQ(FindLibraryFolder(wide), LowerPath(own));
    fs::remove(own / name);
    fs::create_directory(own / name);  // a folder of the name counts as absent
    EXPECT_EQ(FindLibraryFolder(wide), WIDE("c:\\windows\\system32"));
    fs::remove(own / name);
}

TEST(DllPathManager, MakesAFolderCurrentForItsLifetime) {
    using BrevikUtils::DllPathManager;
    const WideString before = CurrentFolder();
    auto first = std::make_unique<DllPathManager>(WIDE("C:\\Windows"));
    EXPECT_EQ(CurrentFolder(), WIDE("C:\\Windows"));
    const DllPathManager none(WIDE(""));
    const DllPathManager missing(WIDE("C:\\no such folder"));
    EXPECT_EQ(CurrentFolder(), WIDE("C:\\Windows"));
    auto second = std::make_unique<DllPathManager>(WIDE("C:\\"));
    auto third = std::make_unique<DllPathManager>(WIDE("C:\\ProgramData"));
    second.reset();
    EXPECT_EQ(CurrentFolder(), WIDE("C:\\ProgramData"));
    third.reset();
    EXPECT_EQ(CurrentFolder(), WIDE("C:\\Windows"));
    third = std::make_unique<DllPathManager>(WIDE("C:\\ProgramData"));
    first.reset();
    EXPECT_EQ(CurrentFolder(), WIDE("C:\\ProgramData"));
    third.reset();
    EXPECT_EQ(CurrentFolder(), before);
}

// Also to one that no path of the library's leads to, or whose path leads to another one.
TEST(DllPathManager, ComesBackToAnyFolder) {
    const fs::path before = fs::current_path();
    fs::create_directory(TestMachine::ScratchFolder() / "dot");
    fs::create_directory(TestMachine::ScratchFolder() / "x\uFFFD");
    for (const char* name : {"x\xFF", "what?", "dot.", "back\\slash"}) {
        const fs::path folder = TestMachine::ScratchFolder() / name;
        fs::create_directory(folder);
        fs::current_path(folder);
        { const BrevikUtils::DllPathManager manager(WIDE("C:\\Windows")); }
        EXPECT_EQ(fs::current_path(), folder);
    }
    fs::current_path(before);
}

class ComponentLibrary : public testing::Test {
  protected:
    void SetUp() override {
        WCHAR path[MAX_PATH];
        ASSERT_TRUE(SHGetSpecialFolderPathW(nullptr, path, CSIDL_COMMON_APPDATA, FALSE));
        const fs::path folder = TestMachine::Folder() / "drives/c/ProgramData";
        fs::copy_file(BREVIK_TEST_COMPONENT, folder / "Component.dll",
                      fs::copy_options::overwrite_existing);
        std::ofstream(folder / "Text.dll") << "no library";
    }

    static constexpr const WCHAR* kLibrary = WIDE("C:\\ProgramData\\Component.dll");
    static constexpr CLSID kClass = {1, 0, 0, {}};
    static constexpr CLSID kOtherClass = {2, 0, 0, {}};
};

TEST_F(ComponentLibrary, MakesObjectsAndReleasesTheFactory) {
    const CLibraryUtils::ScopedLibrary library(LoadLibraryW(kLibrary));
    const auto living = library.Find<int (*)()>("LivingObjects");
    ASSERT_NE(living, nullptr);
    {
        CLibraryUtils::CLibraryUtilsImpl holder;
        IUnknown* object = nullptr;
        EXPECT_EQ(holder.CreateInstance(kClass, nullptr, kLibrary, IID_IUnknown,
                                        reinterpret_cast<void**>(&object)),
                  S_OK);
        ASSERT_NE(object, nullptr);
        EXPECT_EQ(living(), 1);
        object->Release();
        EXPECT_EQ(living(), 0);
        EXPECT_EQ(holder.CreateInstance(kOtherClass, nullptr, kLibrary, IID_IUnknown,
                                        reinterpret_cast<void**>(&object)),
                  CLASS_E_CLASSNOTAVAILABLE);
        EXPECT_EQ(holder.CreateInstance(kClass, nullptr, kLibrary, IID_IClassFactory,
                                        reinterpret_cast<void**>(&object)),
                  E_NOINTERFACE);
    }
    EXPECT_EQ(living(), 0);
}

TEST_F(ComponentLibrary, LibrariesThatAreNoneFail) {
    CLibraryUtils::CLibraryUtilsImpl holder;
    void* object = nullptr;
    for (const WCHAR* name : {WIDE("C:\\ProgramData\\Missing.dll"),
                              WIDE("C:\\ProgramData\\Text.dll"), WIDE("kernel32.dll")}) {
        EXPECT_EQ(holder.CreateInstance(kClass, nullptr, name, IID_IUnknown, &object), E_FAIL);
    }
}

TEST(SmartComInitializer, LeavesTheThreadsApartmentAsItWas) {
    for (const DWORD kind : {COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED}) {
        ASSERT_EQ(CoInitializeEx(nullptr, kind), S_OK);
        { const CLibraryUtils::SmartComInitializer scope; }
        EXPECT_EQ(CoInitializeEx(nullptr, kind), S_FALSE);
        CoUninitialize();
        CoUninitialize();
    }
    { const CLibraryUtils::SmartComInitializer scope; }
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    CoUninitialize();
}

}  // namespace
