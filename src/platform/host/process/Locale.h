// Locale: the character encoding that programs take from the environment.
#pragma once

#include "platform/host/process/CapturedRun.h"

namespace kestrine {

/// The changes to the environment of a program after which its character encoding is UTF-8; empty if it is
/// UTF-8 already. The language of its messages does not change, unless LC_ALL names a locale of another
/// encoding or a locale of the environment is not installed: with these, the C library would not use that
/// language or not read UTF-8.
EnvironmentChanges changesForUTF8();

} // namespace kestrine
