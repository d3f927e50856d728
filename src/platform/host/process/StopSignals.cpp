#include "platform/host/process/StopSignals.h"

#include <atomic>
#include <unistd.h>

namespace kestrine {

namespace {

struct StopSignal {
    int number;
    const char* name;
};
constexpr StopSignal stopSignals[] = {{SIGINT, "SIGINT"}, {SIGTERM, "SIGTERM"}, {SIGHUP, "SIGHUP"}};

std::atomic<int> notedSignal = 0;
std::atomic<int> secondSignal = 0; ///< a signal that arrived while a step was protected
std::atomic<int> protectedSteps = 0;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may take no lock");

/// A second signal ends the process; if a step is protected on any thread, the process ends after that step.
void noteOrEnd(int number) {
    int none = 0;
    if (notedSignal.compare_exchange_strong(none, number))
        return;
    secondSignal = number;
    if (protectedSteps == 0)
        ::_exit(128 + number);
}

/// The end of a protected step. The last one ends the process if a second signal arrived meanwhile.
void leaveStep() {
    if (--protectedSteps == 0 && secondSignal != 0)
        ::_exit(128 + secondSignal);
}

/// Does nothing if the signal is ignored.
void setAction(int number, void (*handler)(int)) {
    struct sigaction before {};
    if (::sigaction(number, nullptr, &before) != 0 || before.sa_handler == SIG_IGN)
        return;
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    ::sigaction(number, &action, nullptr);
}

} // namespace

StopSignalsBlocked::StopSignalsBlocked() : before_{} {
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const StopSignal& signal : stopSignals)
        ::sigaddset(&signals, signal.number);
    ::pthread_sigmask(SIG_BLOCK, &signals, &before_);
    ++protectedSteps;
    // After a second signal no step begins. Either the handler saw this step, or this thread sees the signal.
    const bool isInner = ::sigismember(&before_, SIGTERM) == 1;
    if (secondSignal != 0 && !isInner) {
        leaveStep();
        for (;;) // until another thread ends the process
            ::pause();
    }
}

StopSignalsBlocked::~StopSignalsBlocked() {
    leaveStep();
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

StopSignalsNoted::StopSignalsNoted() {
    notedSignal = 0;
    secondSignal = 0;
    for (const StopSignal& signal : stopSignals)
        setAction(signal.number, noteOrEnd);
}

StopSignalsNoted::~StopSignalsNoted() {
    for (const StopSignal& signal : stopSignals)
        setAction(signal.number, SIG_DFL);
}

int StopSignalsNoted::noted() { return notedSignal; }

const char* nameOfStopSignal(int number) {
    for (const StopSignal& signal : stopSignals)
        if (signal.number == number)
            return signal.name;
    return "";
}

} // namespace kestrine
