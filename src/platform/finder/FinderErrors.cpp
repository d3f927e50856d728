#include "platform/finder/FinderErrors.h"

#include <algorithm>
#include <limits>

namespace kestrine {

namespace {

struct Row {
    Reason reason;
    std::int32_t number;
};

constexpr std::int32_t inputOutputError = -36;

constexpr Row rows[] = {
    {Reason::notFound, -43},         // file not found
    {Reason::alreadyExists, -15267}, // duplicate name
    {Reason::notPermitted, -5000},   // access denied
    {Reason::notRegularFile, -1700}, // wrong type
    {Reason::tooLarge, -1309},       // file too large
    {Reason::malformed, -50},        // invalid parameter
    {Reason::truncated, -47},        // file busy: it changed during the operation
    {Reason::unsupported, -1426},    // not supported by the file system
    {Reason::noSpace, -34},          // disk full
    {Reason::inputOutput, inputOutputError},
    {Reason::refused, -10006}, // operation forbidden
    {Reason::empty, -39},      // unexpected end of file
};

/// Apple Events and the File Manager use 16 bits.
static_assert(std::ranges::all_of(rows, [](const Row& row) {
    return row.number < 0 && row.number >= std::numeric_limits<std::int16_t>::min();
}));

} // namespace

std::int32_t finderErrorNumber(Reason reason) {
    for (const Row& row : rows)
        if (row.reason == reason)
            return row.number;
    return inputOutputError;
}

FinderError finderError(const Failure& failure) {
    return {finderErrorNumber(failure.reason), NSString::fromUTF8(failure.text)};
}

} // namespace kestrine
