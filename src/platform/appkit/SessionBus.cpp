#include "platform/appkit/SessionBus.h"

#include "platform/host/process/DynamicLibrary.h"
#include "platform/host/process/SystemLibraries.h"

namespace kestrine {

const Result<BusFunctions>& busFunctions() {
    static const Result<BusFunctions> functions = DynamicLibrary::load<BusFunctions>(
        {systemLibrary(OnDemand::systemd).file},
        missingMessage("the desktop's portal needs libsystemd", OnDemand::systemd),
        [](const DynamicLibrary& library, BusFunctions& bus) {
            return library.find(bus.openUser, "sd_bus_open_user")
                   && library.find(bus.flushCloseUnref, "sd_bus_flush_close_unref")
                   && library.find(bus.process, "sd_bus_process") && library.find(bus.wait, "sd_bus_wait")
                   && library.find(bus.listNames, "sd_bus_list_names")
                   && library.find(bus.matchSignal, "sd_bus_match_signal")
                   && library.find(bus.setMethodCallTimeout, "sd_bus_set_method_call_timeout")
                   && library.find(bus.getPropertyTrivial, "sd_bus_get_property_trivial")
                   && library.find(bus.callMethod, "sd_bus_call_method")
                   && library.find(bus.messageUnref, "sd_bus_message_unref")
                   && library.find(bus.messageIsSignal, "sd_bus_message_is_signal")
                   && library.find(bus.messageGetPath, "sd_bus_message_get_path")
                   && library.find(bus.messageGetSender, "sd_bus_message_get_sender")
                   && library.find(bus.messageRead, "sd_bus_message_read")
                   && library.find(bus.messageSkip, "sd_bus_message_skip")
                   && library.find(bus.messageEnterContainer, "sd_bus_message_enter_container")
                   && library.find(bus.messageExitContainer, "sd_bus_message_exit_container");
        });
    return functions;
}

} // namespace kestrine
