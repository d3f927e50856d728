#include "platform/finder/FinderErrors.h"

namespace kestrine {

namespace {

struct Row {
    Reason reason;
    std::int32_t number;
};

constexpr std::int32_t inputOutputError = -36;

constexpr Row rows[] = {
    {Reason::notFound, -43},         // there is no such item
    {Reason::alreadyExists, -15267}, // an item with that name is there
    {Reason::notPermitted, -5000},   // no rights
    {Reason::notRegularFile, -1700}, // the item is of the wrong kind
    {Reason::tooLarge, -1309},       // beyond a bound of the file system
    {Reason::malformed, -50},        // a wrong parameter
    {Reason::truncated, -47},        // the item is in use: it changed while it was at work
    {Reason::unsupported, -1426},    // the file system cannot do it
    {Reason::noSpace, -34},          // the disk is full
    {Reason::inputOutput, inputOutputError},
    {Reason::refused, -10006}, // it is forbidden
    {Reason::empty, -39},      // the content ended too early
};

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
