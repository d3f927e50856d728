// NSParagraphStyle: how a paragraph is laid out; here, where its lines break.
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
    /// `lineBreakMode` is kept as given, also when it is none of the known modes.
    explicit NSParagraphStyle(int lineBreakMode) : lineBreakMode_(lineBreakMode) {}

    int lineBreakMode() const { return lineBreakMode_; }

private:
    const int lineBreakMode_;
};

} // namespace kestrine
