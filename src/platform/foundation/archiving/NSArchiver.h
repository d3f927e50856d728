// NSArchiver: turns an object and all it holds into a typedstream, and is the coder an object writes itself
// to. An object that is met again, told by identity, becomes a reference.
#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/text/NSString.h"
#include "platform/foundation/archiving/ArchivedClass.h"
#include "platform/foundation/archiving/TypedStreamWriter.h"
#include "platform/host/Result.h"

#include <unordered_map>

namespace kestrine {

class NSArchiver {
public:
    /// Objects of the platform's classes and of `classes` can be archived; the table must outlive the
    /// archiver.
    explicit NSArchiver(ArchivedClasses classes = {}) : classes_(classes) {}

    /// `archivedDataWithRootObject:`. Fails with unsupported when an object's class is in no table, and with
    /// tooLarge when objects are nested deeper than could be read again.
    static Result<std::shared_ptr<const NSData>> archivedDataWithRootObject(const Object& root,
                                                                            ArchivedClasses classes = {});

    /// `encodeClassName:intoClassName:`: objects of the class `trueName` are written as `inArchiveName`,
    /// such as every NSArray as NSMutableArray. Both must be in the tables.
    void encodeClassName(std::string_view trueName, std::string_view inArchiveName);

    /// As archivedDataWithRootObject(), once per archiver.
    Result<std::shared_ptr<const NSData>> archivedData(const Object& root);

    // What a class calls from its encodeWithCoder:. Each call writes one group.

    /// `encodeObject:`; nil is legal.
    void encodeObject(const Object& object);
    void encodeString(const OptionalString& string) { encodeObject(string ? string->object() : nullptr); }
    /// `encodeValueOfObjCType:at:` for a number, under the type code of exactly this type.
    template <class T>
    void encodeValue(T value) {
        constexpr char code = typeCode<T>;
        writer_.writeType({&code, 1});
        writer_.writeNumber(value);
    }
    /// Counted bytes, code '+'.
    void encodeBytes(ByteView bytes);
    /// `encodeArrayOfObjCType:count:at:` of single bytes, which does not store their number as a value.
    void encodeArrayOfBytes(ByteView bytes);
    /// A C string, code '*'.
    void encodeCString(std::string_view text);
    /// Makes the whole archive fail. The first failure stays.
    void fail(Reason reason, const char* text);

private:
    const ArchivedClass* classOf(const Object& object) const;
    bool collectChain(const ArchivedClass& first, std::vector<ClassVersion>& chain) const;
    void writeNewObject(const Object& object);

    ArchivedClasses classes_;
    std::map<std::string, std::string, std::less<>> substitutes_;
    TypedStreamWriter writer_;
    std::unordered_map<Object, std::size_t> written_;
    std::size_t depth_ = 0;
    std::optional<Failure> failure_;
};

} // namespace kestrine
