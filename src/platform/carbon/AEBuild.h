// Apple Events from a text that describes their parameters.
#pragma once

#include "platform/carbon/AEEvents.h"

#include <initializer_list>

namespace kestrine {

/// What is wrong with a parameter text. The numbers are the platform's.
enum AEBuildErrorCode : std::uint32_t {
    aeBuildSyntaxNoErr = 0,
    aeBuildSyntaxBadToken = 1,     ///< a character that begins nothing
    aeBuildSyntaxBadEOF = 2,       ///< the text ends too early
    aeBuildSyntaxNoEOF = 3,        ///< something follows the parameters
    aeBuildSyntaxMissingQuote = 5, ///< a quoted code without its second quote
    aeBuildSyntaxBadDesc = 11,     ///< no value where one belongs, or one nested too deeply
    aeBuildSyntaxNoCloseParen = 13,
    aeBuildSyntaxNoCloseBrace = 15,
    aeBuildSyntaxNoKey = 16,
    aeBuildSyntaxNoColon = 17,
};

struct AEBuildError {
    AEBuildErrorCode fError = aeBuildSyntaxNoErr;
    std::uint32_t fErrorPos = 0; ///< in bytes from the start of the text
};

/// Makes an event addressed by `addressType` and its bytes. `text` lists the parameters:
///     'key':value, key:value, ...
/// where a key or code is up to four letters and digits, filled up with blanks, or any four characters in
/// single quotes, and a value is
///     (@)                  the next of `descriptors`,
///     code                 an 'enum',
///     type(code)           a code of that type,
///     type{key:value, ...} a record of that type; 'reco' when the type is left out.
/// Blanks may stand between all of these. -10206 for a text that is none, and `error`, which may be null,
/// then tells more; -50 when a descriptor is missing, or left over.
OSStatus AEBuildAppleEvent(AEEventClass eventClass, AEEventID eventID, DescType addressType,
                           const void* address, Size addressSize, AEReturnID returnID,
                           AETransactionID transactionID, AppleEvent* result, AEBuildError* error,
                           const char* text, std::initializer_list<const AEDesc*> descriptors);

} // namespace kestrine
