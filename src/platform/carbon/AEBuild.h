// Builds Apple Events from a string that describes their parameters.
#pragma once

#include "platform/carbon/AEEvents.h"

#include <initializer_list>

namespace kestrine {

/// Errors in a parameter string. The numbers are the platform's.
enum AEBuildErrorCode : std::uint32_t {
    aeBuildSyntaxNoErr = 0,
    aeBuildSyntaxBadToken = 1,     ///< an unexpected character
    aeBuildSyntaxBadEOF = 2,       ///< unexpected end of the string
    aeBuildSyntaxNoEOF = 3,        ///< text after the last parameter
    aeBuildSyntaxMissingQuote = 5, ///< a code without its closing quote
    aeBuildSyntaxBadDesc = 11,     ///< a missing value, or records nested too deeply
    aeBuildSyntaxNoCloseParen = 13,
    aeBuildSyntaxNoCloseBrace = 15,
    aeBuildSyntaxNoKey = 16,
    aeBuildSyntaxNoColon = 17,
};

struct AEBuildError {
    AEBuildErrorCode fError = aeBuildSyntaxNoErr;
    std::uint32_t fErrorPos = 0; ///< in bytes from the start of the string
};

/// Makes an event for the address of type `addressType`. `text` lists the parameters:
///     'key':value, key:value, ...
/// A key or code is up to four letters and digits, padded with blanks, or any four characters in single
/// quotes. A value is
///     (@)                  the next of `descriptors`,
///     code                 a code of type 'enum',
///     type(code)           a code of that type,
///     type{key:value, ...} a record of that type; without a type it is a 'reco'.
/// Blanks are allowed between all of these. -10206 for an invalid string, with details in `error`, which may
/// be null; -50 when there are too few or too many descriptors.
OSStatus AEBuildAppleEvent(AEEventClass eventClass, AEEventID eventID, DescType addressType,
                           const void* address, Size addressSize, AEReturnID returnID,
                           AETransactionID transactionID, AppleEvent* result, AEBuildError* error,
                           const char* text, std::initializer_list<const AEDesc*> descriptors);

} // namespace kestrine
