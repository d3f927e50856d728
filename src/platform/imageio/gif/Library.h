// The functions of giflib, which is opened when the first GIF file is read. Its header is used for types
// only; the program does not link to the library.
#pragma once

#include "platform/host/Result.h"

#include <gif_lib.h>
#include <initializer_list>

namespace kestrine::gif {

/// The functions that are used.
struct Functions {
    decltype(&DGifCloseFile) close;
    decltype(&DGifExtensionToGCB) parseControl;
    decltype(&DGifGetExtension) readExtension;
    decltype(&DGifGetExtensionNext) readExtensionBlock;
    decltype(&DGifGetImageDesc) readDescriptor;
    decltype(&DGifGetLZCodes) readCode;
    decltype(&DGifGetLine) readIndices;
    decltype(&DGifGetRecordType) readRecordType;
    decltype(&DGifOpen) open;
};

/// The functions of the first of these libraries that exists. Fails with reason "unsupported" and names the
/// package if there is none.
Result<Functions> loadFunctions(std::initializer_list<const char*> names);

/// The functions of the installed library; opened once. Any thread.
const Result<Functions>& installedFunctions();

} // namespace kestrine::gif
