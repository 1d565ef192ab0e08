// The machine: the folder that holds what Windows keeps about a computer.
//
// It is the one that BREVIK_MACHINE names, else /var/lib/brevikconfig when that exists, else
// brevikconfig in the user's data folder. It is settled once in a process, and its folders are made
// on first use. Safe on any thread.
#pragma once

#include <string>
#include <utility>

#include "platform/types.h"

namespace brevik::platform {

class PLATFORM_API Machine {
  public:
    static const Machine& Current();

    // Finds where the machine is and whether it has been made, and makes nothing. Throws
    // std::system_error when it cannot be found at this moment.
    static bool IsMade(std::string* folder);

    // False where it could not be found at this moment, as with no descriptor left: nothing of it
    // is remembered, and the next call looks again.
    bool IsKnown() const { return isKnown_; }

    // Host path of the machine's folder, absolute, without a trailing slash.
    const std::string& Folder() const { return folder_; }

    // Whether its folders are there; false where they could not be made.
    bool Exists() const { return exists_; }

    // Gives the folders of the machine of all users the modes with which every user can work there,
    // as far as this user may: root may have made them under another file mode mask.
    void SetModes() const;

    // Host path of users/LOGIN for the effective user, made with mode 0700 where it was missing.
    // Where another user has taken that name, it is brevikconfig/users/LOGIN in the user's own data
    // folder. Empty when it cannot be made.
    std::string UserFolder() const;

  private:
    Machine(std::string folder, bool isKnown, bool exists)
        : folder_(std::move(folder)), isKnown_(isKnown), exists_(exists) {}

    std::string folder_;
    bool isKnown_;
    bool exists_;
};

}  // namespace brevik::platform
