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
    const auto find = [&]<class F>(F*& function, const char* name) {
        function = library->symbol<F>(name);
        return function != nullptr;
    };
    const bool complete = find(functions.openUser, "sd_bus_open_user")
                          && find(functions.flushCloseUnref, "sd_bus_flush_close_unref")
                          && find(functions.process, "sd_bus_process") && find(functions.wait, "sd_bus_wait")
                          && find(functions.listNames, "sd_bus_list_names")
                          && find(functions.matchSignal, "sd_bus_match_signal")
                          && find(functions.setMethodCallTimeout, "sd_bus_set_method_call_timeout")
                          && find(functions.getPropertyTrivial, "sd_bus_get_property_trivial")
                          && find(functions.callMethod, "sd_bus_call_method")
                          && find(functions.messageUnref, "sd_bus_message_unref")
                          && find(functions.messageIsSignal, "sd_bus_message_is_signal")
                          && find(functions.messageGetPath, "sd_bus_message_get_path")
                          && find(functions.messageGetSender, "sd_bus_message_get_sender")
                          && find(functions.messageRead, "sd_bus_message_read")
                          && find(functions.messageSkip, "sd_bus_message_skip")
                          && find(functions.messageEnterContainer, "sd_bus_message_enter_container")
                          && find(functions.messageExitContainer, "sd_bus_message_exit_container");
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
