// CallOptions: the options of a call of the C interface, which kestrine.h lists.
#pragma once

#include "models/ConversionRecipe.h"
#include "platform/host/Result.h"
#include "platform/host/files/AtomicFile.h"

#include <string_view>

namespace kestrine {

struct CallOptions {
    ConversionRecipe recipe; ///< its result is returned, not written
    bool acceptsDamaged = false;
    Overwrite overwrite = Overwrite::no;
    bool usesOneThread = false;
};

/// Reads a JSON object. Fails with reason "malformed" and a message for the caller.
Result<CallOptions> callOptionsIn(std::string_view text);

} // namespace kestrine
