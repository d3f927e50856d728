// Fonts: the fonts in which drawings show text. A process that can open no file later opens them before.
#pragma once

#include "platform/imageio/svg/Library.h"

#include <mutex>

namespace kestrine::svg {

/// The system's fonts for sans-serif, serif, monospace and the names that drawings use most, in four styles
/// each, and for some scripts. Any other family is shown as sans-serif, so that drawings look the same in
/// every process.
class Fonts {
public:
    /// Opens the fonts, and draws a string in each font, and a picture; afterwards no files need to be
    /// opened. Happens once.
    static Fonts& opened(const Functions& library);

    /// Only one thread draws at a time, since the libraries share the fonts. While the lock is held, the
    /// calling thread draws with them.
    std::unique_lock<std::mutex> use();

private:
    explicit Fonts(const Functions& library);
    void warmUp();

    const Functions& library_;
    std::mutex mutex_;
    FontMap* map_; ///< null if there are no fonts; lives until the end of the process
};

} // namespace kestrine::svg
