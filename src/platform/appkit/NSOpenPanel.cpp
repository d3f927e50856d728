#include "platform/appkit/NSOpenPanel.h"

#include "platform/appkit/DesktopDialog.h"
#include "platform/foundation/text/UTF8.h"

namespace kestrine {

namespace {

/// Replaces lone surrogates and zero characters, which dialogues do not accept, by U+FFFD.
std::string displayText(const NSString& text) {
    std::u16string shown = text.utf16();
    for (std::size_t i = 0; i < shown.size();) {
        const char32_t codePoint = codePointAt(shown, i);
        if (codePoint == 0 || isHighSurrogate(codePoint) || isLowSurrogate(codePoint))
            shown[i] = u'\uFFFD';
        i += utf16Length(codePoint);
    }
    return utf8FromUTF16(shown);
}

/// The desktop's own dialogue. It always lets the user create folders; canCreateDirectories has no effect.
class DesktopPanel final : public NSOpenPanel {
public:
    int runModal() override {
        path_.clear();
        if (!canChooseFiles && !canChooseDirectories)
            return NSCancelButton;
        // No dialogue offers both files and folders; when both are allowed, it offers folders.
        const Result<DialogAnswer> answer =
            askAtDesktop({displayText(message), canChooseDirectories, allowsMultipleSelection});
        if (!answer || !*answer)
            return NSCancelButton;
        path_ = **answer;
        return NSOKButton;
    }

    NSString filename() const override { return NSString::fromUTF8(path_); }

private:
    std::string path_;
};

NSOpenPanel::Factory injectedFactory = nullptr;

} // namespace

std::unique_ptr<NSOpenPanel> NSOpenPanel::openPanel() {
    return injectedFactory ? injectedFactory() : std::make_unique<DesktopPanel>();
}

void NSOpenPanel::setFactory(Factory factory) { injectedFactory = factory; }

} // namespace kestrine
