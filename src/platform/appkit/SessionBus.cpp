#include "platform/appkit/SessionBus.h"

#include "platform/host/process/DynamicLibrary.h"

namespace kestrine {

namespace {

Result<BusFunctions> loadBusFunctions() {
    const Failure missing{Reason::unsupported, "the desktop's portal needs libsystemd (package libsystemd0)"};
    const Result<DynamicLibrary> library = DynamicLibrary::open({"libsystemd.so.0"});
    if (!library)
        return missing;
    BusFunctions functions{};
    const bool complete = library->find(functions.openUser, "sd_bus_open_user")
                          && library->find(functions.flushCloseUnref, "sd_bus_flush_close_unref")
                          && library->find(functions.process, "sd_bus_process")
                          && library->find(functions.wait, "sd_bus_wait")
                          && library->find(functions.listNames, "sd_bus_list_names")
                          && library->find(functions.matchSignal, "sd_bus_match_signal")
                          && library->find(functions.setMethodCallTimeout, "sd_bus_set_method_call_timeout")
                          && library->find(functions.getPropertyTrivial, "sd_bus_get_property_trivial")
                          && library->find(functions.callMethod, "sd_bus_call_method")
                          && library->find(functions.messageUnref, "sd_bus_message_unref")
                          && library->find(functions.messageIsSignal, "sd_bus_message_is_signal")
                          && library->find(functions.messageGetPath, "sd_bus_message_get_path")
                          && library->find(functions.messageGetSender, "sd_bus_message_get_sender")
                          && library->find(functions.messageRead, "sd_bus_message_read")
                          && library->find(functions.messageSkip, "sd_bus_message_skip")
                          && library->find(functions.messageEnterContainer, "sd_bus_message_enter_container")
                          && library->find(functions.messageExitContainer, "sd_bus_message_exit_container");
    if (!complete)
        return missing;
    return functions;
}

} // namespace

const Result<BusFunctions>& busFunctions() {
    static const Result<BusFunctions> functions = loadBusFunctions();
    return functions;
}

} // namespace kestrine
