#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <new>
#include <stdexcept>

#include "platform/folders.h"
#include "support/test_machine.h"
#include "text/StackWalker.h"
#include "text/SystemException.h"
#include "text/Texts.h"

namespace {

using testing::MatchesRegex;
using testing::StartsWith;

std::string Message(const VelmarException& exception) {
    const Utf8String& message = exception.GetMessage();
    return std::string(message.begin(), message.end());
}

TEST(VelmarException, MadeFromForeignExceptions) {
    const VelmarException memory{static_cast<const std::exception&>(std::bad_alloc())};
    EXPECT_EQ(memory.GetNumber(), -1);
    EXPECT_EQ(Message(memory), "memory allocation error");

    const std::runtime_error cause("disk on fire");
    const VelmarException runtime{static_cast<const std::exception&>(cause)};
    EXPECT_EQ(runtime.GetNumber(), -3);
    EXPECT_EQ(Message(runtime), "runtime error: disk on fire");

    SystemException::Win32 own(5);
    own.SetNote("while looking");
    const VelmarException kept{static_cast<const std::exception&>(own)};
    EXPECT_EQ(kept.GetNumber(), -12);
    EXPECT_EQ(kept.GetMessage(), own.GetMessage());
    EXPECT_EQ(kept.GetNote(), "while looking");
}

TEST(VelmarException, MadeFromANumberOrAPlace) {
    EXPECT_EQ(Message(VelmarException::FromId(-2)), "internal software error: %0, line %1");
    const VelmarException unknown = VelmarException::FromId(-777);
    EXPECT_EQ(unknown.GetNumber(), -777);
    EXPECT_EQ(Message(unknown), "unknown error: -777");
    const VelmarException place(".\\SQLCertificate", 12);
    EXPECT_EQ(place.GetNumber(), -2);
    EXPECT_STREQ(place.what(), "internal software error: .\\SQLCertificate, line 12");
}

TEST(VelmarException, CloneAndRaiseKeepTheClass) {
    SystemException::Win32 original(5);
    original.SetNote("n").SetNote("note");
    const VelmarException& base = original;
    const std::unique_ptr<VelmarException> clone(base.Clone());
    ASSERT_NE(dynamic_cast<SystemException::Win32*>(clone.get()), nullptr);
    EXPECT_EQ(clone->GetNote(), "note");
    try {
        base.Raise();
    } catch (const SystemException::Win32& raised) {
        EXPECT_EQ(raised.GetCode(), 5u);
        EXPECT_EQ(raised.GetNote(), "note");
    }
    EXPECT_THROW(SystemException::HRESULT(-1).Raise(), SystemException::HRESULT);
    EXPECT_THROW(SystemException::Errno(2).Raise(), SystemException::Errno);
    EXPECT_THROW(SystemException::MMRESULT(2).Raise(), SystemException::MMRESULT);
}

TEST(SystemException, MessagesBearTheCodeAndTheSystemsWording) {
    const SystemException::Win32 win32(5);
    EXPECT_EQ(win32.GetNumber(), -12);
    EXPECT_THAT(Message(win32),
                MatchesRegex("operating system error: number = 0x00000005 - .+[^\r\n]"));
    const SystemException::Errno runtime(2);
    EXPECT_EQ(runtime.GetNumber(), -11);
    EXPECT_EQ(Message(runtime), "operating system error: number = 2 - No such file or directory");
    const SystemException::HRESULT result(static_cast<std::int32_t>(0x80004005));
    EXPECT_EQ(result.GetNumber(), -14);
    EXPECT_THAT(Message(result), StartsWith("operating system error: HRESULT = 0x80004005 - "));
    const SystemException::MMRESULT sound(11);
    EXPECT_EQ(sound.GetNumber(), -15);
    EXPECT_EQ(Message(sound), "operating system error: MMRESULT = 0x0000000B");
    const SystemException::Win32 unknown(0xDEAD0001);
    EXPECT_EQ(Message(unknown), "operating system error: number = 0xDEAD0001 - ");
}

TEST(SystemMessages, EveryFileErrorHasAWording) {
    for (const DWORD code : {2,   3,   5,   15,  19,   21,   32,   38,   39,   53,   80,   112,
                             123, 145, 161, 183, 1112, 1231, 1785, 4300, 4303, 4308, 4315, 4318}) {
        const WideString text = GetSystemMessage(code);
        ASSERT_FALSE(text.empty()) << code;
        EXPECT_NE(text.back(), WIDE('\n')) << code;
        EXPECT_NE(text.back(), WIDE('\r')) << code;
    }
}

// The second library of a facility is asked when the first has no text, and the first text ends the
// search.
TEST(SystemMessages, LibrariesOfAFacilityInTheirOrder) {
    WCHAR path[MAX_PATH];
    ASSERT_TRUE(SHGetSpecialFolderPathW(nullptr, path, CSIDL_COMMON_APPDATA, FALSE));
    const auto put = [](const char* name) {
        std::filesystem::copy_file(BREVIK_TEST_MESSAGE_LIBRARY,
                                   TestMachine::Folder() / "drives/c/Windows/System32" / name);
    };
    constexpr auto kOfFacility7 = static_cast<std::int32_t>(0x80070005);
    const WideString system = GetHResultMessage(kOfFacility7);
    ASSERT_FALSE(system.empty());
    put("netmsg.dll");
    const WideString library = GetHResultMessage(kOfFacility7);
    EXPECT_NE(library, system);
    EXPECT_EQ(library, WIDE("facility 7, code 5"));
    EXPECT_EQ(GetHResultMessage(static_cast<std::int32_t>(0x80000005)),
              GetSystemMessage(0x80000005));
    put("msxml3r.dll");
    EXPECT_EQ(GetHResultMessage(static_cast<std::int32_t>(0x800C0005)),
              WIDE("facility 12, code 5"));
    EXPECT_EQ(GetHResultMessage(static_cast<std::int32_t>(0x800D0005)), WIDE(""));
    put("wmerror.dll");
    EXPECT_EQ(GetHResultMessage(static_cast<std::int32_t>(0x800D0005)),
              WIDE("facility 13, code 5"));
}

struct Counter : StackWalker::StackWalker_IF {
    void Walk() override { ++walks; }
    int walks = 0;
};

TEST(StackWalker, WalksOnceForEachFailureMadeAndNotForCopies) {
    const auto counter = std::make_shared<Counter>();
    StackWalker::SetCurrent(counter);
    const VelmarException text(Texts::accessDenied);
    EXPECT_EQ(counter->walks, 1);
    const VelmarException copy(text);
    const VelmarException own{static_cast<const std::exception&>(copy)};
    EXPECT_EQ(counter->walks, 1);
    const VelmarException place("f", 1);
    const std::bad_alloc cause;
    const VelmarException foreign{static_cast<const std::exception&>(cause)};
    const SystemException::Win32 system(2);
    EXPECT_EQ(counter->walks, 4);
    StackWalker::SetCurrent(nullptr);
    const VelmarException unseen(Texts::accessDenied);
    EXPECT_EQ(counter->walks, 4);
}

}  // namespace
