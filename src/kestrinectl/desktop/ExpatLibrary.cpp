#include "kestrinectl/desktop/ExpatLibrary.h"

#include "platform/host/process/DynamicLibrary.h"
#include "platform/host/process/SystemLibraries.h"

namespace kestrine::expat {

const Result<Functions>& installedFunctions() {
    static const Result<Functions> functions = DynamicLibrary::load<Functions>(
        {systemLibrary(OnDemand::expat).file},
        missingMessage("the actions of Thunar need libexpat", OnDemand::expat),
        [](const DynamicLibrary& library, Functions& f) {
            return library.find(f.createParser, "XML_ParserCreate")
                   && library.find(f.freeParser, "XML_ParserFree")
                   && library.find(f.setHashSalt, "XML_SetHashSalt")
                   && library.find(f.setUserData, "XML_SetUserData")
                   && library.find(f.setElementHandler, "XML_SetElementHandler")
                   && library.find(f.setCharacterDataHandler, "XML_SetCharacterDataHandler")
                   && library.find(f.setDoctypeHandler, "XML_SetStartDoctypeDeclHandler")
                   && library.find(f.parse, "XML_Parse") && library.find(f.stop, "XML_StopParser")
                   && library.find(f.byteIndex, "XML_GetCurrentByteIndex")
                   && library.find(f.byteCount, "XML_GetCurrentByteCount")
                   && library.find(f.lineNumber, "XML_GetCurrentLineNumber")
                   && library.find(f.errorCode, "XML_GetErrorCode")
                   && library.find(f.errorString, "XML_ErrorString");
        });
    return functions;
}

} // namespace kestrine::expat
