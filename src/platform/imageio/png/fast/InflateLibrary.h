// The inflate functions of ISA-L, which is opened when the first PNG file is read.
// Its header is used for types only; the program does not link to the library.
#pragma once

#include "platform/host/Result.h"

#include <initializer_list>
#include <isa-l/igzip_lib.h>

namespace kestrine::png {

/// The functions that are used, without the prefix "isal_".
struct InflateFunctions {
    decltype(&isal_inflate_init) initialise;
    decltype(&isal_inflate) inflate;
};

/// The functions of the first of `libraries` that exists. Fails with reason "unsupported" and names the
/// package if there is none.
Result<InflateFunctions> loadInflateFunctions(std::initializer_list<const char*> libraries);

/// The functions of the installed ISA-L; opened once. Any thread.
const Result<InflateFunctions>& inflateFunctions();

} // namespace kestrine::png
