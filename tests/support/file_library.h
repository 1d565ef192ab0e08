// The started file library, and what its operations raise.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <string>

#include "filesystem/FileChannel.h"
#include "filesystem/FileException.h"
#include "filesystem/FileSpec_Impl.h"
#include "filesystem/FileSystem.h"
#include "support/drive_files.h"
#include "support/open_file_count.h"

inline std::string Text(const Utf8String& text) {
    return std::string(text.begin(), text.end());
}

inline FileSpec File(const char* path) {
    return FileSpec(FilePath(path));
}

inline std::string PathOf(const FileSpec& file) {
    return Text(file.GetPath());
}

// What an operation raised.
struct Failure {
    std::string message;  // empty when it raised nothing
    bool isFile = false;  // whether it is a FileException; only then the rest is told
    std::string path;
    std::string inner;
};

template <typename Operation>
Failure FailureOf(Operation operation) {
    try {
        operation();
        return {};
    } catch (const FileException& raised) {
        const Utf8String inner = raised.GetInner()->GetMessage();
        return {Text(raised.GetMessage()), true, Text(raised.GetPath()), Text(inner)};
    } catch (const VelmarException& raised) {
        return {Text(raised.GetMessage()), false, {}, {}};
    }
}

template <typename Operation>
std::string MessageOf(Operation operation) {
    return FailureOf(operation).message;
}

inline std::string InternalError(const char* file, int line) {
    return std::string("internal software error: ") + file + ", line " + std::to_string(line);
}

class FileLibrary : public testing::Test {
  protected:
    void SetUp() override {
        FileSystem_Start(nullptr);
        folder = NewFolder("work");
        work = FolderSpec(FilePath("C:\\work"));
    }

    FileSpec Child(const char* name) const { return work.MakeChild(FilePath(name)); }

    std::filesystem::path folder;  // the host's path of `work`
    FolderSpec work;
};
