// Reads any bytes as a strings table. The strings must not be longer than the input.
#include "platform/foundation/text/StringsTable.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace kestrine;
    const Result<StringsTable> table = parseStringsTable({bytes, size});
    if (!table)
        return 0;
    std::size_t units = 0;
    for (const auto& [key, value] : *table)
        units += key.length() + value.length();
    if (units > 2 * size)
        std::abort();
    return 0;
}
