#include "platform/imageio/png/fast/InflateLibrary.h"

#include "platform/host/process/DynamicLibrary.h"

namespace kestrine::png {

Result<InflateFunctions> loadInflateFunctions(std::initializer_list<const char*> libraries) {
    const Result<DynamicLibrary> library = DynamicLibrary::open(libraries);
    if (library) {
        const InflateFunctions functions{
            .initialise = library->symbol<decltype(isal_inflate_init)>("isal_inflate_init"),
            .inflate = library->symbol<decltype(isal_inflate)>("isal_inflate")};
        if (functions.initialise && functions.inflate)
            return functions;
    }
    return Failure{Reason::unsupported, "fast PNG decoding needs ISA-L (package libisal2)"};
}

const Result<InflateFunctions>& inflateFunctions() {
    static const Result<InflateFunctions> functions = loadInflateFunctions({"libisal.so.2"});
    return functions;
}

} // namespace kestrine::png
