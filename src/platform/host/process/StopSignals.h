// The signals by which people and the system ask a program to end: SIGINT, SIGTERM and SIGHUP.
#pragma once

#include <csignal>

namespace kestrine {

/// Holds the stop signals back from this thread while it exists; those that came meanwhile arrive at its end.
/// For a step that must not be cut in two. Signals that were held back before stay so. Where StopSignalsNoted
/// is in force, a second signal to any thread ends the process only when no such object exists.
class StopSignalsBlocked {
public:
    StopSignalsBlocked();
    ~StopSignalsBlocked();
    StopSignalsBlocked(const StopSignalsBlocked&) = delete;
    StopSignalsBlocked& operator=(const StopSignalsBlocked&) = delete;

private:
    sigset_t before_;
};

/// While it exists, the first stop signal to the process is only noted; a second one ends the process, at
/// once or after the steps that StopSignalsBlocked protects, with the status 128 plus its number. A signal
/// that was ignored before (as under nohup) stays ignored. At most one at a time.
class StopSignalsNoted {
public:
    StopSignalsNoted();
    ~StopSignalsNoted();
    StopSignalsNoted(const StopSignalsNoted&) = delete;
    StopSignalsNoted& operator=(const StopSignalsNoted&) = delete;

    /// The number of the signal that was noted; 0 when none was. Safe to call from any thread.
    static int noted();
};

/// "SIGINT" for SIGINT, and so on; "" for a number that is no stop signal.
const char* nameOfStopSignal(int number);

} // namespace kestrine
