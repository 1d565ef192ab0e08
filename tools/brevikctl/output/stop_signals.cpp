#include "brevikctl/output/stop_signals.h"

#include <sys/eventfd.h>

#include <cerrno>
#include <iterator>

namespace {

volatile sig_atomic_t last_signal = 0;
volatile sig_atomic_t event_descriptor = -1;

void Note(int number) {
    const int error = errno;
    last_signal = number;
    eventfd_write(event_descriptor, 1);
    errno = error;
}

}  // namespace

StopSignals::StopSignals() : event_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    event_descriptor = event_.Get();
    struct sigaction action = {};
    action.sa_handler = Note;
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
        sigaction(kSignals[i], &action, &before_[i]);
    }
}

StopSignals::~StopSignals() {
    for (std::size_t i = 0; i < std::size(kSignals); ++i) {
        sigaction(kSignals[i], &before_[i], nullptr);
    }
}

int StopSignals::Last() {
    return last_signal;
}
