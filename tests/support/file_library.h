// The started file library with two drives, a sink of progress, and what operations raise.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "filesystem/FileChannel.h"
#include "filesystem/FileException.h"
#include "filesystem/FileSpec.h"
#include "filesystem/FileSystem.h"
#include "filesystem/utilities/FileUtilities.h"
#include "support/drive_files.h"
#include "support/open_file_count.h"
#include "text/SystemException.h"
#include "text/VelmarText.h"

inline std::string Text(const Utf8String& text) {
    return std::string(text.begin(), text.end());
}

inline FileSpec File(const std::string& path) {
    return FileSpec(FilePath(path));
}
inline FolderSpec Folder(const std::string& path) {
    return FolderSpec(FilePath(path));
}

inline std::string PathOf(const FileSpec& file) {
    return Text(file.GetPath());
}

// Where a path of a drive is on the host.
inline std::filesystem::path Host(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    const std::string drive(1, static_cast<char>(std::tolower(path[0])));
    return DriveC().parent_path() / (drive + path.substr(2));
}

// Writes a file, with the folders above it.
inline void Write(const std::string& path, const std::string& text) {
    std::filesystem::create_directories(Host(path).parent_path());
    WriteHostFile(Host(path), text);
}

// What an operation raised.
struct Failure {
    std::string message;  // empty when it raised nothing
    long number = 0;
    bool isFile = false;  // whether it is a FileException; only then the rest is set
    std::string path;
    std::string inner;
    unsigned long code = 0;  // the system's, where one is beneath it
};

template <typename Operation>
Failure FailureOf(Operation operation) {
    try {
        operation();
        return {};
    } catch (const FileException& raised) {
        const auto* system = dynamic_cast<const SystemException::Win32*>(raised.GetInner());
        return {Text(raised.GetMessage()),
                raised.GetNumber(),
                true,
                Text(raised.GetPath()),
                Text(raised.GetInner()->GetMessage()),
                system != nullptr ? system->GetCode() : 0};
    } catch (const VelmarException& raised) {
        return {Text(raised.GetMessage()), raised.GetNumber(), false, {}, {}, 0};
    }
}

template <typename Operation>
std::string MessageOf(Operation operation) {
    return FailureOf(operation).message;
}

inline std::string InternalError(const char* file, int line) {
    return std::string("internal software error: ") + file + ", line " + std::to_string(line);
}

inline std::vector<std::string> Names(const std::vector<FileSpec>& files) {
    std::vector<std::string> names;
    for (const FileSpec& file : files) {
        names.push_back(Text(file.GetName()));
    }
    return names;
}

// Everything of a tree that a copy keeps, a line for each entry.
inline std::vector<std::string> Listing(const std::filesystem::path& root) {
    std::vector<std::string> lines;
    for (const std::filesystem::directory_entry& entry :
         std::filesystem::recursive_directory_iterator(root)) {
        const auto time = entry.last_write_time().time_since_epoch().count() / 100;
        lines.push_back(entry.path().lexically_relative(root).string() +
                        (entry.is_directory()
                             ? "/"
                             : " " + std::to_string(time) + " " + ReadHostFile(entry.path())));
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

class Sink : public TickleImplBase {
  public:
    bool IsCancelled() override { return positions.size() >= cancelAt; }
    void SetMessage(const VelmarText& message) override {
        messages.push_back(Text(message.GetText()));
    }
    void SetProgress(double position) override {
        if (fails) {
            throw std::runtime_error("sink");
        }
        positions.push_back(position);
    }
    void Tickle() override {}

    std::size_t cancelAt = 1'000'000;  // reports
    bool fails = false;
    std::vector<std::string> messages;
    std::vector<double> positions;
};

class FileLibrary : public testing::Test {
  protected:
    void SetUp() override {
        FileSystem_Start(nullptr);
        std::filesystem::create_directory(Host("D:\\"));
        folder = NewFolder("work");
        work = FolderSpec(FilePath("C:\\work"));
    }

    FileSpec Child(const char* name) const { return work.MakeChild(FilePath(name)); }

    std::filesystem::path folder;  // the host's path of `work`
    FolderSpec work;
    Sink sink;
    Tickler tickler = Tickler(&sink);
};

using FileUtilities = FileLibrary;
