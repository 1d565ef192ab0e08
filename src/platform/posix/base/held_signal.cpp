#include "platform/threads.h"

#include <sys/resource.h>

#include <ctime>

namespace brevik::platform {

HeldSignal::HeldSignal(int signal, bool isNeeded) : isNeeded_(isNeeded) {
    if (!isNeeded_) {
        return;
    }
    sigset_t pending;
    sigpending(&pending);
    wasPending_ = sigismember(&pending, signal) == 1;
    sigemptyset(&signal_);
    sigaddset(&signal_, signal);
    pthread_sigmask(SIG_BLOCK, &signal_, &previous_);
}

HeldSignal::~HeldSignal() {
    if (!isNeeded_) {
        return;
    }
    constexpr timespec kNow = {0, 0};
    while (!wasPending_ && sigtimedwait(&signal_, nullptr, &kNow) > 0) {
    }
    pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
}

bool IsFileSizeLimited() {
    rlimit limit;
    return getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY;
}

}  // namespace brevik::platform
