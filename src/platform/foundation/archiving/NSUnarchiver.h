// NSUnarchiver: creates objects from a typedstream. It is also the coder that the objects' classes read from.
// The values of an object are one flat list. Its class must read all of them.
#pragma once

#include "platform/foundation/archiving/ArchivedClass.h"
#include "platform/foundation/archiving/TypedStream.h"
#include "platform/foundation/text/NSString.h"
#include "platform/host/Result.h"

#include <type_traits>

namespace kestrine {

class NSUnarchiver {
public:
    /// `unarchiveObjectWithData:`. Supports objects of the platform's classes and of `classes`. An object of
    /// any other class makes the whole archive fail, and so does a nil root, so the result is never nil.
    static Result<Object> unarchiveObjectWithData(ByteView data, ArchivedClasses classes = {});

    // For the initWithCoder: of a class. A failure makes the whole archive fail. After it, all values are
    // zero and all objects nil, so a class need not check each call.

    /// `decodeObject`: may be nil. An object that occurs several times in the archive gives one object.
    Object decodeObject();
    /// A string or nil. Any other object is a failure.
    OptionalString decodeString();
    /// `decodeValueOfObjCType:at:` for a number. An integral T accepts all integer codes and keeps the low
    /// bits. A floating-point T accepts all number codes and rounds.
    template <class T>
    T decodeValue();
    /// The content of a byte array, with or without a count. Valid as long as the archive's data.
    ByteView decodeBytes();
    /// A C string. Valid as long as the archive's data.
    std::string_view decodeCString();

    /// The type code of the next value ('[' for an array of single bytes), or '\0' if there is none.
    char nextTypeCode() const;
    /// The number of values that are not yet read.
    std::size_t valuesLeft() const { return current_->values.size() - taken_; }

    /// `versionForClassName:`: the version that the archive stores for this class, as an unsigned 32-bit
    /// number; NSNotFound if the archive has no such class. If the archive has the name twice, the class of
    /// the current object counts, otherwise the first class with that name.
    std::size_t versionForClassName(std::string_view name) const;

    /// To be called before a class expands or compares `bytes` bytes of an object that may be shared. If the
    /// sum exceeds typedstream::workLimit, the whole archive fails and the result is false.
    bool spendWork(std::size_t bytes);

    /// Makes the whole archive fail. Later failures are ignored.
    void fail(Reason reason, const char* text);
    bool failed() const { return failure_.has_value(); }

private:
    NSUnarchiver(TypedStream stream, ArchivedClasses classes);
    Result<Object> unarchive();
    void build(ObjectIndex index);
    template <class Content>
    const Content* takeAs(const char* complaint);
    const TypedValue* take();
    std::int64_t takeInteger();
    double takeFloat();

    TypedStream stream_;
    ArchivedClasses classes_;
    /// The objects by ObjectIndex; nil until an object is complete.
    std::vector<Object> built_;
    const TypedObject* current_ = nullptr;
    std::size_t taken_ = 0;
    std::size_t work_ = 0;
    std::optional<Failure> failure_;
};

template <class T>
T NSUnarchiver::decodeValue() {
    if constexpr (std::is_integral_v<T>) {
        return static_cast<T>(takeInteger());
    } else {
        return static_cast<T>(takeFloat());
    }
}

} // namespace kestrine
