// NSParagraphStyle: the layout of a paragraph. The only property here is the line break mode.
#pragma once

#include "platform/foundation/NSObject.h"

namespace kestrine {

enum NSLineBreakMode : int {
    NSLineBreakByWordWrapping = 0,
    NSLineBreakByCharWrapping = 1,
    NSLineBreakByClipping = 2,
    NSLineBreakByTruncatingHead = 3,
    NSLineBreakByTruncatingTail = 4,
    NSLineBreakByTruncatingMiddle = 5,
};

class NSParagraphStyle final : public NSObject {
public:
    /// Any number is allowed as `lineBreakMode`, also an unknown one.
    explicit NSParagraphStyle(int lineBreakMode) : lineBreakMode_(lineBreakMode) {}

    int lineBreakMode() const { return lineBreakMode_; }

private:
    const int lineBreakMode_;
};

} // namespace kestrine
