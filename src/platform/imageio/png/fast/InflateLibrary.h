// ISA-L's inflate, opened when the first PNG file asks for it: its functions as a table.
// Its header serves for types only; nothing here links to it.
#pragma once

#include "platform/host/Result.h"

#include <initializer_list>
#include <isa-l/igzip_lib.h>

namespace kestrine::png {

/// The functions that are called, under ISA-L's names without "isal_".
struct InflateFunctions {
    decltype(&isal_inflate_init) initialise;
    decltype(&isal_inflate) inflate;
};

/// The functions in the first of `libraries` that is there; unsupported, naming the package, without one.
Result<InflateFunctions> loadInflateFunctions(std::initializer_list<const char*> libraries);

/// The functions of the system's ISA-L, looked up once.
const Result<InflateFunctions>& inflateFunctions();

} // namespace kestrine::png
