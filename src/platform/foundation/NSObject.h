// NSObject: the root of everything that is shared by reference, and Object, a reference that may be nil.
#pragma once

#include <memory>

namespace kestrine {

class NSObject {
public:
    virtual ~NSObject() = default;

protected:
    NSObject() = default;
    NSObject(const NSObject&) = default;
    NSObject& operator=(const NSObject&) = default;
};

/// A shared, read-only reference to any object; null is nil. Two references are the same object exactly
/// when they hold the same address.
using Object = std::shared_ptr<const NSObject>;

} // namespace kestrine
