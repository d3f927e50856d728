// OwnProcess: the process that made an object. A fork copies objects, but not the resources that they
// represent.
#pragma once

#include <sys/types.h>
#include <unistd.h>

namespace kestrine {

/// A member of objects that may be used only by the process that made them. Any thread; costs one fast system
/// call.
class OwnProcess {
public:
    /// False in a forked copy of the process that made this object.
    bool isCurrent() const { return process_ == ::getpid(); }

private:
    pid_t process_ = ::getpid();
};

} // namespace kestrine
