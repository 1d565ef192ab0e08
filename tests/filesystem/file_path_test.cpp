#include "filesystem/FilePath.h"

#include <gtest/gtest.h>

#include <memory>

#include "support/file_library.h"
#include "text/SystemException.h"

namespace {

TEST(FilePath, NamesAndExtensions) {
    const struct {
        const char* path;
        const char* name;
        const char* baseName;
        const char* extension;
        const char* stem;
    } cases[] = {
        {"abc", "abc", "abc", "", "abc"},
        {"C:\\a/b.c.txt", "b.c.txt", "b.c", "txt", "C:\\a/b.c"},
        {"a.b/c", "c", "c", "b/c", "a"},
        {".profile", ".profile", "", "profile", ""},
        {"C:\\a\\", "", "", "", "C:\\a\\"},
        {"end.", "end.", "end", "", "end"},
        {"", "", "", "", ""},
    };
    for (const auto& each : cases) {
        const FilePath path(each.path);
        EXPECT_EQ(Text(path.GetName()), each.name) << each.path;
        EXPECT_EQ(Text(path.GetBaseName()), each.baseName) << each.path;
        EXPECT_EQ(Text(path.GetExtension()), each.extension) << each.path;
        EXPECT_EQ(Text(path.RemoveExtension()), each.stem) << each.path;
    }
    EXPECT_EQ(Text(FilePath("a").AddExtension("txt")), "a.txt");
    EXPECT_EQ(Text(FilePath("a").AddExtension(".txt")), "a.txt");
    EXPECT_EQ(Text(FilePath("a.").AddExtension("")), "a.");
}

TEST(FilePath, EqualInCanonicalForm) {
    const FilePath path("C:\\Temp\\\xC3\x84");
    EXPECT_EQ(Text(path.GetCanonical(false)), "c:/temp/\xC3\xA4");
    EXPECT_EQ(Text(path.GetCanonical(true)), "C:/Temp/\xC3\x84");
    EXPECT_TRUE(path.IsEqual("c:/temp/\xC3\xA4", false));
    EXPECT_FALSE(path.IsEqual("c:/temp/\xC3\xA4", true));
}

TEST(FilePath, MatchesPatterns) {
    const struct {
        const char* path;
        const char* pattern;
        bool matches;
    } cases[] = {
        {"a.txt", "*.txt", true},
        {"C:\\x.txt\\a.bin", "*.txt", false},
        {"abc", "abc*", false},
        {"abcd", "abc*", true},
        {"a", "*a", true},
        {"", "*", false},
        {"", "", true},
        {"a", "", false},
        {"a", "**", true},
        {"a", "a**", false},
        {"a.b", "a?b", false},
        {"axb", "a?b", true},
        {"\xC3\xA4", "?", false},
        {"\xC3\xA4", "??", true},
        {"aab", "*ab", true},
        {"abab", "*ab", true},
        {"aXbXc", "a*b*c", true},
        {"abcb", "a*bc", false},
        {"a.tar.gz", "a*?gz", false},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(FilePath(each.path).IsMatch(each.pattern, true), each.matches)
            << each.path << " and " << each.pattern;
    }
    EXPECT_TRUE(FilePath("a.txt").IsMatch("*.TXT", false));
    EXPECT_FALSE(FilePath("a.txt").IsMatch("*.TXT", true));
}

TEST(FilePath, MatchesManyStarsInReasonableTime) {
    const FilePath name(std::string(4000, 'a'));
    std::string pattern;
    for (int i = 0; i < 50; ++i) {
        pattern += "*a";
    }
    EXPECT_FALSE(name.IsMatch(pattern + "*b", true));
    EXPECT_TRUE(name.IsMatch(pattern, true));
}

TEST(FilePath, RefusesPatternsWithSeparators) {
    for (const char* pattern : {"a/*", "a\\*"}) {
        const Failure failure = FailureOf([&] { FilePath("a").IsMatch(pattern, true); });
        EXPECT_EQ(failure.message, InternalError(".\\Private\\FilePath", 112));
        EXPECT_EQ(failure.inner, failure.message);
        EXPECT_EQ(failure.path, pattern);
    }
}

TEST(FileException, KindsOfErrorCodes) {
    const struct {
        const char* message;
        long number;
        std::vector<unsigned long> codes;
    } kinds[] = {
        {"file not found", -10005, {2}},
        {"file path not found", -10010, {3, 15, 53}},
        {"access denied", -10000, {5, 32}},
        {"volume locked", -10012, {19}},
        {"media not found", -10009, {21, 1112, 1231, 4308, 4318}},
        {"end of file", -10003, {38}},
        {"volume full", -10011, {39, 112}},
        {"file exists", -10004, {80, 183}},
        {"invalid file path", -10008, {123, 161}},
        {"folder not empty", -10006, {145}},
        {"invalid media", -10007, {1785, 4300, 4303, 4315}},
    };
    for (const auto& kind : kinds) {
        for (const unsigned long code : kind.codes) {
            try {
                ThrowFileError(code, "C:\\a");
            } catch (const FileException& raised) {
                EXPECT_EQ(Text(raised.GetMessage()), kind.message) << code;
                EXPECT_EQ(raised.GetNumber(), kind.number) << code;
                EXPECT_EQ(Text(raised.GetPath()), "C:\\a");
                const auto* inner = dynamic_cast<const SystemException::Win32*>(raised.GetInner());
                ASSERT_NE(inner, nullptr) << code;
                EXPECT_EQ(inner->GetCode(), code);
                EXPECT_EQ(inner->GetNumber(), -12);
            }
        }
    }
}

TEST(FileException, OtherCodesTellTheSystemsFailure) {
    for (const unsigned long code : {1450ul, 0ul, 0x80070005ul, 0x80000000ul}) {
        try {
            ThrowFileError(code, "");
        } catch (const FileException& raised) {
            const bool isResult = code >= 0x80000000;
            EXPECT_EQ(raised.GetNumber(), isResult ? -14 : -12) << code;
            EXPECT_EQ(raised.GetMessage(), raised.GetInner()->GetMessage());
            EXPECT_EQ(dynamic_cast<const SystemException::HRESULT*>(raised.GetInner()) != nullptr,
                      isResult);
        }
    }
}

TEST(FileException, ClonesKeepTheClassAndRaiseDoesNot) {
    try {
        ThrowFileError(5, "C:\\a");
    } catch (FileException& raised) {
        raised.SetNote("note");
        const VelmarException& base = raised;
        const std::unique_ptr<VelmarException> clone(base.Clone());
        const auto* file = dynamic_cast<FileException*>(clone.get());
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(file->GetInner(), raised.GetInner());
        EXPECT_EQ(Text(file->GetPath()), "C:\\a");
        EXPECT_EQ(file->GetNote(), "note");
        const Failure plain = FailureOf([&] { base.Raise(); });
        EXPECT_EQ(plain.message, "access denied");
        EXPECT_FALSE(plain.isFile);
    }
}

}  // namespace
