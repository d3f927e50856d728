// The signals with which users and the system ask a program to end: SIGINT, SIGTERM and SIGHUP.
#pragma once

#include <csignal>

namespace kestrine {

/// Blocks the stop signals for this thread during its lifetime; signals that arrive meanwhile take effect at
/// its end. For a step that must not be interrupted. Signals that were blocked before stay blocked. While a
/// StopSignalsNoted exists, a second signal to any thread ends the process only when no such object exists.
class StopSignalsBlocked {
public:
    StopSignalsBlocked();
    ~StopSignalsBlocked();
    StopSignalsBlocked(const StopSignalsBlocked&) = delete;
    StopSignalsBlocked& operator=(const StopSignalsBlocked&) = delete;

private:
    sigset_t before_;
};

/// During its lifetime, the first stop signal to the process is only recorded. A second one ends the process,
/// at once or after the steps that StopSignalsBlocked protects, with the status 128 plus its number. A signal
/// that was ignored before (as under nohup) stays ignored. Only one object may exist at a time.
class StopSignalsNoted {
public:
    StopSignalsNoted();
    ~StopSignalsNoted();
    StopSignalsNoted(const StopSignalsNoted&) = delete;
    StopSignalsNoted& operator=(const StopSignalsNoted&) = delete;

    /// The number of the recorded signal; 0 if there is none. Any thread.
    static int noted();
};

/// "SIGINT" for SIGINT, and so on; "" for other numbers.
const char* nameOfStopSignal(int number);

} // namespace kestrine
