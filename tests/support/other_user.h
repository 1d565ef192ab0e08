// What another user of the machine can do. Only root can be another user.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "support/test_machine.h"

inline constexpr uid_t kNobody = 65534;

// Lets other users through to a folder of the test's machine.
inline void OpenTheWayTo(const std::filesystem::path& folder) {
    for (std::filesystem::path path = folder;
         path != TestMachine::Folder().parent_path().parent_path(); path = path.parent_path()) {
        std::filesystem::permissions(path, std::filesystem::perms::others_exec,
                                     std::filesystem::perm_options::add);
    }
}

// What `action` answers as a user who owns nothing here.
inline bool AsNobody(const std::function<bool()>& action) {
    const pid_t child = fork();
    if (child == 0) {
        umask(0077);
        const bool isNobody = setgid(kNobody) == 0 && setuid(kNobody) == 0;
        _exit(isNobody && action() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
