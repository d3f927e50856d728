// NSOpenPanel: asks the user at the desktop for a folder.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <memory>

namespace kestrine {

inline constexpr int NSCancelButton = 0;
inline constexpr int NSOKButton = 1;

/// Used on the main thread. An interface, so that programs without a desktop, and tests, can provide their
/// own panel.
class NSOpenPanel {
public:
    virtual ~NSOpenPanel() = default;

    bool allowsMultipleSelection = false;
    bool canChooseFiles = true;
    bool canChooseDirectories = false;
    bool canCreateDirectories = false;
    NSString message;

    /// `runModalForDirectory:file:types:` without a start folder, file or types: waits for the user and
    /// returns NSOKButton or NSCancelButton.
    virtual int runModal() = 0;
    /// `filename`: the chosen path, after runModal() has returned NSOKButton.
    virtual NSString filename() const = 0;

    /// `openPanel`: the desktop's own dialogue, or one that always cancels if there is no desktop.
    static std::unique_ptr<NSOpenPanel> openPanel();
    /// Sets what openPanel() returns from now on; null restores the desktop's own dialogue.
    using Factory = std::unique_ptr<NSOpenPanel> (*)();
    static void setFactory(Factory factory);
};

} // namespace kestrine
