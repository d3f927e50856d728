// NSObject: the base class of shared objects. Object: a reference to one, which may be nil.
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

/// A shared, read-only reference to an object; null is nil. Two references with the same address refer to the
/// same object.
using Object = std::shared_ptr<const NSObject>;

} // namespace kestrine
