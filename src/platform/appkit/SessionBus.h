// The desktop's message bus (D-Bus), through libsystemd, which is loaded when first needed.
// Its header is used for types only; nothing here links to it.
#pragma once

#include "platform/host/Result.h"

#include <memory>
#include <systemd/sd-bus.h>

namespace kestrine {

/// The functions used, named as in libsystemd without "sd_bus_". A negative result is a negated error number.
struct BusFunctions {
    decltype(&sd_bus_open_user) openUser;
    decltype(&sd_bus_flush_close_unref) flushCloseUnref;
    decltype(&sd_bus_process) process;
    decltype(&sd_bus_wait) wait;
    decltype(&sd_bus_list_names) listNames;
    decltype(&sd_bus_match_signal) matchSignal;
    decltype(&sd_bus_set_method_call_timeout) setMethodCallTimeout;
    decltype(&sd_bus_get_property_trivial) getPropertyTrivial;
    decltype(&sd_bus_call_method) callMethod;
    decltype(&sd_bus_message_unref) messageUnref;
    decltype(&sd_bus_message_is_signal) messageIsSignal;
    decltype(&sd_bus_message_get_path) messageGetPath;
    decltype(&sd_bus_message_get_sender) messageGetSender;
    decltype(&sd_bus_message_read) messageRead;
    decltype(&sd_bus_message_skip) messageSkip;
    decltype(&sd_bus_message_enter_container) messageEnterContainer;
    decltype(&sd_bus_message_exit_container) messageExitContainer;
};

/// The functions of the system's libsystemd, looked up once. Fails as "unsupported" and names the package if
/// it is missing.
const Result<BusFunctions>& busFunctions();

struct BusRelease {
    void operator()(sd_bus* bus) const { busFunctions()->flushCloseUnref(bus); }
    void operator()(sd_bus_message* message) const { busFunctions()->messageUnref(message); }
};
/// A connection; closing it cancels all requests sent through it.
using Bus = std::unique_ptr<sd_bus, BusRelease>;
using BusMessage = std::unique_ptr<sd_bus_message, BusRelease>;

} // namespace kestrine
