// NSUnarchiver: makes objects from a typedstream, and is the coder an object reads itself from.
// A class sees the values of its object as one flat list and must take them all, no more and no fewer.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/foundation/archiving/ArchivedClass.h"
#include "platform/foundation/archiving/TypedStream.h"
#include "platform/host/Result.h"

#include <type_traits>

namespace kestrine {

class NSUnarchiver {
public:
    /// `unarchiveObjectWithData:`. Objects of the platform's classes and of `classes` are understood; one of
    /// any other class makes the whole archive fail. The result is never nil: a nil root is a failure.
    static Result<Object> unarchiveObjectWithData(ByteView data, ArchivedClasses classes = {});

    // What a class calls from its initWithCoder:. A failure makes the whole archive fail; from then on every
    // value is zero and every object nil, so a class need not look for it in between.

    /// `decodeObject`; may be nil. The same object in the archive gives the same object here.
    Object decodeObject();
    /// An object that is a text, or nil.
    OptionalString decodeString();
    /// `decodeValueOfObjCType:at:` for a number. Any integer code will do for an integral T, which keeps the
    /// low bits, and any number at all for a floating T, which rounds to its own width.
    template <class T>
    T decodeValue();
    /// Bytes of a counted or plain array of bytes; they live as long as the archive's data.
    ByteView decodeBytes();
    /// A C string; it lives as long as the archive's data.
    std::string_view decodeCString();

    /// Type code of the next value ('[' for an array of single bytes), or '\0' when there is none.
    char nextTypeCode() const;
    /// Number of values not yet taken.
    std::size_t valuesLeft() const { return current_->values.size() - taken_; }

    /// `versionForClassName:`: the version stored beside this name, as unsigned 32 bits; NSNotFound when the
    /// archive names no such class. A name stored twice means the class of the object being read, or else
    /// the first of them.
    std::size_t versionForClassName(std::string_view name) const;

    /// To be called before a class unfolds or compares `bytes` bytes of an object that may be shared: beyond
    /// the limit (workLimit) the whole archive fails, and false is answered.
    bool spendWork(std::size_t bytes);

    /// Makes the whole archive fail. The first failure stays.
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
    /// By ObjectIndex; nil for what is not complete yet.
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
