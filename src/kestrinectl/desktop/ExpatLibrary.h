// The functions of libexpat, which is opened when a file of Thunar is read. Its header is used for types
// only; the program does not link to the library.
#pragma once

#include "platform/host/Result.h"

#include <expat.h>

namespace kestrine::expat {

/// The functions that are used.
struct Functions {
    decltype(&XML_ParserCreate) createParser;
    decltype(&XML_ParserFree) freeParser;
    decltype(&XML_SetHashSalt) setHashSalt;
    decltype(&XML_SetUserData) setUserData;
    decltype(&XML_SetElementHandler) setElementHandler;
    decltype(&XML_SetCharacterDataHandler) setCharacterDataHandler;
    decltype(&XML_SetStartDoctypeDeclHandler) setDoctypeHandler;
    decltype(&XML_Parse) parse;
    decltype(&XML_StopParser) stop;
    decltype(&XML_GetCurrentByteIndex) byteIndex;
    decltype(&XML_GetCurrentByteCount) byteCount;
    decltype(&XML_GetCurrentLineNumber) lineNumber;
    decltype(&XML_GetErrorCode) errorCode;
    decltype(&XML_ErrorString) errorString;
};

/// The functions of the installed library. Fails with reason "unsupported" and names the package if it is
/// missing. Any thread.
const Result<Functions>& installedFunctions();

} // namespace kestrine::expat
