// The stand-in for the library of the online services, in the hands of a test.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/test_machine.h"

class StandIn {
  public:
    // Puts a copy into a folder of the host, which is made.
    explicit StandIn(const std::filesystem::path& folder = SharedFolder()) : folder_(folder) {
        std::filesystem::create_directories(folder);
        std::filesystem::copy_file(BREVIK_TEST_STAND_IN, folder / "VelmarHTTPClient13.dll");
    }

    // Where all hosts of the machine find it.
    static std::filesystem::path SharedFolder() {
        return TestMachine::Folder() /
               "drives/c/Program Files/Common Files/Ondrel Shared/DllShared";
    }

    void Remove() const { std::filesystem::remove(folder_ / "VelmarHTTPClient13.dll"); }

    // Replaces the settings.
    void Set(const std::string& text) const {
        std::ofstream(folder_ / "VelmarHTTPClient13.settings", std::ios::trunc) << text;
    }

    // The lines of the log since the last call.
    std::vector<std::string> Take() {
        std::ifstream file(folder_ / "VelmarHTTPClient13.log");
        std::vector<std::string> lines;
        std::size_t number = 0;
        for (std::string line; std::getline(file, line);) {
            if (number++ >= taken_) {
                lines.push_back(line);
            }
        }
        taken_ += lines.size();
        return lines;
    }

    // A line as it stands in the log.
    static std::string Line(const std::string& interface, int object, int slot,
                            const std::string& operation, const std::string& arguments) {
        return "{\"interface\":\"" + interface + "\",\"object\":" + std::to_string(object) +
               ",\"slot\":" + std::to_string(slot) + ",\"operation\":\"" + operation +
               "\",\"arguments\":{" + arguments + "}}";
    }
    static std::string Creation(const std::string& name) {
        return Line("IClassFactory", 0, 3, "CreateInstance", "\"class\":\"" + name + "\"");
    }

  private:
    std::filesystem::path folder_;
    std::size_t taken_ = 0;
};
