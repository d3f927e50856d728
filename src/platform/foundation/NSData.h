// NSData: immutable bytes, shared by reference.
#pragma once

#include "platform/foundation/NSObject.h"
#include "platform/host/Bytes.h"

namespace kestrine {

class NSData final : public NSObject {
public:
    explicit NSData(Bytes content) : content_(std::move(content)) {}

    const Bytes& bytes() const { return content_; }
    std::size_t length() const { return content_.size(); }

private:
    const Bytes content_;
};

} // namespace kestrine
