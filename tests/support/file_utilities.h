// What the tests of the file utilities share: the started library with two drives, a sink of
// progress, and what an operation raised.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "filesystem/FileException.h"
#include "filesystem/FileSystem.h"
#include "filesystem/FileUtilities.h"
#include "support/test_machine.h"
#include "text/SystemException.h"
#include "text/VelmarText.h"

inline std::string Text(const Utf8String& text) {
    return {text.begin(), text.end()};
}

inline FileSpec File(const std::string& path) {
    return FileSpec(FilePath(path));
}
inline FolderSpec Folder(const std::string& path) {
    return FolderSpec(FilePath(path));
}

inline std::vector<std::string> Names(const std::vector<FileSpec>& files) {
    std::vector<std::string> names;
    for (const FileSpec& file : files) {
        names.push_back(Text(file.GetName()));
    }
    return names;
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

// The failure of an action: its number and its path, and the system's code beneath it.
struct NumberedFailure {
    long number = 0;
    std::string path;
    unsigned long code = 0;
};

inline NumberedFailure NumberedFailureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const FileException& failure) {
        const auto* inner = dynamic_cast<const SystemException::Win32*>(failure.GetInner());
        return {failure.GetNumber(), Text(failure.GetPath()),
                inner != nullptr ? inner->GetCode() : 0};
    }
    return {};
}

class FileUtilities : public testing::Test {
  protected:
    void SetUp() override {
        FileSystem_Start(nullptr);
        std::filesystem::create_directory(Host("D:\\"));
    }

    // Where a path of a drive lies on the host.
    static std::filesystem::path Host(std::string path) {
        std::replace(path.begin(), path.end(), '\\', '/');
        std::string drive(1, static_cast<char>(std::tolower(path[0])));
        return TestMachine::Folder() / "drives" / (drive + path.substr(2));
    }

    static void Write(const std::string& path, const std::string& text) {
        std::filesystem::create_directories(Host(path).parent_path());
        std::ofstream(Host(path), std::ios::binary) << text;
    }

    static std::string Read(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    Sink sink;
    Tickler tickler = Tickler(&sink);
};

// Everything of a tree that a copy keeps, a line an entry.
inline std::vector<std::string> Listing(const std::filesystem::path& root) {
    std::vector<std::string> lines;
    for (const std::filesystem::directory_entry& entry :
         std::filesystem::recursive_directory_iterator(root)) {
        std::string line = entry.path().lexically_relative(root).string();
        if (entry.is_directory()) {
            line += "/";
        } else {
            std::ifstream file(entry.path(), std::ios::binary);
            line += " " + std::to_string(entry.last_write_time().time_since_epoch().count() / 100) +
                    " " + std::string(std::istreambuf_iterator<char>(file), {});
        }
        lines.push_back(line);
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}
