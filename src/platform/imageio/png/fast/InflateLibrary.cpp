#include "platform/imageio/png/fast/InflateLibrary.h"

#include "platform/host/process/DynamicLibrary.h"
#include "platform/host/process/SystemLibraries.h"

namespace kestrine::png {

Result<InflateFunctions> loadInflateFunctions(std::initializer_list<const char*> libraries) {
    return DynamicLibrary::load<InflateFunctions>(
        libraries, missingMessage("fast PNG decoding needs ISA-L", OnDemand::isal),
        [](const DynamicLibrary& library, InflateFunctions& functions) {
            return library.find(functions.initialise, "isal_inflate_init")
                   && library.find(functions.inflate, "isal_inflate");
        });
}

const Result<InflateFunctions>& inflateFunctions() {
    static const Result<InflateFunctions> functions =
        loadInflateFunctions({systemLibrary(OnDemand::isal).file});
    return functions;
}

} // namespace kestrine::png
