// The machine: the folder that holds what Windows keeps about a computer.
//
// It is the one that BREVIK_MACHINE names, else /var/lib/brevikconfig when that exists, else
// brevikconfig in the user's data folder. It is settled once in a process, and its folders are made
// on first use. Safe on any thread.
#pragma once

#include <string>

#include "platform/types.h"

namespace brevik::platform {

class PLATFORM_API Machine {
  public:
    static const Machine& Current();

    // Tells where the machine is and whether it has been made, and makes nothing.
    static bool IsMade(std::string* folder);

    // Host path of the machine's folder, absolute, without a trailing slash.
    const std::string& Folder() const { return folder_; }

    // Whether its folders are there; false where they could not be made.
    bool Exists() const { return exists_; }

    // Lets every user into the machine of all users, as far as this user may: folders that root
    // made under a strict mask, or ahead of the machine, are closed to others.
    void SetModes() const;

    // Host path of users/LOGIN for the effective user, made with mode 0700 where it was missing.
    // Where somebody else has taken that name, it is brevikconfig/users/LOGIN in the user's own
    // data folder. Empty when it cannot be made.
    std::string UserFolder() const;

  private:
    Machine();

    std::string folder_;
    bool exists_ = false;
};

}  // namespace brevik::platform
