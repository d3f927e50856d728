// OwnProcess: the process that made an object. A fork copies objects, but not what they stand for.
#pragma once

#include <sys/types.h>
#include <unistd.h>

namespace kestrine {

/// A member of objects that may be used only by the process that made them. Any thread; one cheap system
/// call.
class OwnProcess {
public:
    /// False in a forked copy of the process that made this object.
    bool isCurrent() const { return process_ == ::getpid(); }

private:
    pid_t process_ = ::getpid();
};

} // namespace kestrine
