// Apartments, counted text, and component objects of classes whose library the registry names.

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "platform/component_model.h"
#include "platform/modules.h"
#include "support/registry_machine.h"
#include "support/test_machine.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_view_literals;

constexpr DWORD kAnyContext =
    CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;

// The test component has the class whose first number is 1.
constexpr CLSID kCounted = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
constexpr CLSID kNotOfTheLibrary = {2, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
constexpr CLSID kAbsent = {3, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
constexpr CLSID kNoLibrary = {4, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
constexpr CLSID kNoClasses = {5, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
constexpr CLSID kWrongType = {6, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
constexpr CLSID kUnknown = {7, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};

std::string ServerEntry(int first, const std::string& data) {
    return "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\CLSID\\{0000000" + std::to_string(first) +
           "-0002-0003-0405-060708090A0B}\\InprocServer32]\n@=" + data + "\n";
}

std::string Quoted(const fs::path& host) {
    return "\"Z:" + host.string() + "\"";
}

class ClassObjects : public RegistryMachine {
  protected:
    void SetUp() override {
        RegistryMachine::SetUp();
        ASSERT_EQ(CoInitialize(nullptr), S_OK);
        const fs::path text = TestMachine::ScratchFolder() / "text.dll";
        std::ofstream(text) << "no library";
        WriteRegistry(ServerEntry(1, Quoted(BREVIK_TEST_COMPONENT)) +
                      ServerEntry(2, Quoted(BREVIK_TEST_COMPONENT)) +
                      ServerEntry(3, Quoted(TestMachine::ScratchFolder() / "absent.dll")) +
                      ServerEntry(4, Quoted(text)) +
                      ServerEntry(5, Quoted(BREVIK_TEST_BINARY_FOLDER "/plain_library.so")) +
                      ServerEntry(6, "dword:00000001"));
    }
    void TearDown() override { CoUninitialize(); }
};

HMODULE ComponentModule() {
    return GetModuleHandleW(fs::path(BREVIK_TEST_COMPONENT).filename().u16string().c_str());
}

int LivingObjects() {
    const FARPROC function = GetProcAddress(ComponentModule(), "LivingObjects");
    return function == nullptr
               ? -1
               : reinterpret_cast<int (*)()>(reinterpret_cast<void (*)()>(function))();
}

TEST_F(ClassObjects, AreMadeByTheLibraryThatTheRegistryNames) {
    EXPECT_EQ(LivingObjects(), -1);
    void* object = nullptr;
    ASSERT_EQ(CoCreateInstance(kCounted, nullptr, kAnyContext, IID_IUnknown, &object), S_OK);
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(LivingObjects(), 1);  // the class object has been given back
    static_cast<IUnknown*>(object)->Release();
    EXPECT_EQ(LivingObjects(), 0);  // and the library has stayed
}

TEST_F(ClassObjects, WhatFailsLeavesNull) {
    IUnknown* const outer = reinterpret_cast<IUnknown*>(this);
    const struct {
        const char* what;
        CLSID id;
        IUnknown* outer;
        DWORD context;
        IID iid;
        HRESULT result;
    } cases[] = {
        {"unknown", kUnknown, nullptr, kAnyContext, IID_IUnknown, REGDB_E_CLASSNOTREG},
        {"no path", kWrongType, nullptr, kAnyContext, IID_IUnknown, REGDB_E_CLASSNOTREG},
        {"missing file", kAbsent, nullptr, kAnyContext, IID_IUnknown, MakeHResult(0x8007007E)},
        {"no library", kNoLibrary, nullptr, kAnyContext, IID_IUnknown, MakeHResult(0x800700C1)},
        {"no classes", kNoClasses, nullptr, kAnyContext, IID_IUnknown, CO_E_ERRORINDLL},
        {"other class", kNotOfTheLibrary, nullptr, kAnyContext, IID_IUnknown,
         CLASS_E_CLASSNOTAVAILABLE},
        {"interface", kCounted, nullptr, kAnyContext, IID_IClassFactory, E_NOINTERFACE},
        {"outer", kCounted, outer, kAnyContext, IID_IUnknown, CLASS_E_NOAGGREGATION},
        {"process", kCounted, nullptr, CLSCTX_LOCAL_SERVER, IID_IUnknown, REGDB_E_CLASSNOTREG},
    };
    for (const auto& row : cases) {
        void* object = this;
        EXPECT_EQ(CoCreateInstance(row.id, row.outer, row.context, row.iid, &object), row.result)
            << row.what;
        EXPECT_EQ(object, nullptr) << row.what;
    }
    CoUninitialize();
    void* object = this;
    EXPECT_EQ(CoCreateInstance(kCounted, nullptr, kAnyContext, IID_IUnknown, &object),
              CO_E_NOTINITIALIZED);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
}

static_assert(sizeof(VARIANT) == (sizeof(void*) == 8 ? 24 : 16));

TEST(Apartment, CountsEntriesOfOneKind) {
    CoUninitialize();  // one more exit than entries does nothing
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
    // The refused entry does not count: two undo both, and then the kind is free again.
    CoUninitialize();
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
    CoUninitialize();
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    EXPECT_EQ(CoInitialize(nullptr), RPC_E_CHANGED_MODE);
    CoUninitialize();
}

TEST(CountedText, KnowsItsLength) {
    EXPECT_EQ(SysStringLen(nullptr), 0u);
    SysFreeString(nullptr);

    BSTR text = SysAllocStringLen(u"", 0);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(SysStringLen(text), 0u);
    EXPECT_EQ(text[0], u'\0');
    SysFreeString(text);

    text = SysAllocStringLen(u"a\0b?", 3);
    EXPECT_EQ(SysStringLen(text), 3u);
    EXPECT_EQ(std::u16string_view(text, 4), u"a\0b\0"sv);
    std::uint32_t prefix = 0;
    std::memcpy(&prefix, reinterpret_cast<const char*>(text) - 4, 4);
    EXPECT_EQ(prefix, 6u);
    SysFreeString(text);

    text = SysAllocStringLen(nullptr, 1000);
    text[999] = u'x';
    EXPECT_EQ(SysStringLen(text), 1000u);
    EXPECT_EQ(text[1000], u'\0');
    SysFreeString(text);
    // Its length in bytes would not fit into the prefix.
    EXPECT_EQ(SysAllocStringLen(nullptr, 0x80000000), nullptr);
}

}  // namespace
