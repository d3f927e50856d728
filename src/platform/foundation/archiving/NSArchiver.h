// NSArchiver: writes an object and all objects in it as a typedstream. It is also the coder that the objects'
// classes write to. An object that occurs again (the same object, not an equal one) is written as a
// reference.
#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/archiving/ArchivedClass.h"
#include "platform/foundation/archiving/TypedStreamWriter.h"
#include "platform/foundation/text/NSString.h"
#include "platform/host/Result.h"

#include <unordered_map>

namespace kestrine {

class NSArchiver {
public:
    /// Archives objects of the platform's classes and of `classes`. The table must outlive the archiver.
    explicit NSArchiver(ArchivedClasses classes = {}) : classes_(classes) {}

    /// `archivedDataWithRootObject:`. Fails with unsupported if the class of an object is in no table, and
    /// with tooLarge if objects are nested deeper than NSUnarchiver allows.
    static Result<std::shared_ptr<const NSData>> archivedDataWithRootObject(const Object& root,
                                                                            ArchivedClasses classes = {});

    /// `encodeClassName:intoClassName:`: writes objects of the class `trueName` as `inArchiveName`, for
    /// example every NSArray as NSMutableArray. Both must be in the tables.
    void encodeClassName(std::string_view trueName, std::string_view inArchiveName);

    /// Does the same as archivedDataWithRootObject(). To be called once per archiver.
    Result<std::shared_ptr<const NSData>> archivedData(const Object& root);

    // For the encodeWithCoder: of a class. Each call writes one group.

    /// `encodeObject:`. The object may be nil.
    void encodeObject(const Object& object);
    void encodeString(const OptionalString& string) { encodeObject(string ? string->object() : nullptr); }
    /// `encodeValueOfObjCType:at:` for a number, with the type code of T.
    template <class T>
    void encodeValue(T value) {
        constexpr char code = typeCode<T>;
        writer_.writeType({&code, 1});
        writer_.writeNumber(value);
    }
    /// Bytes with their count, code '+'.
    void encodeBytes(ByteView bytes);
    /// `encodeArrayOfObjCType:count:at:` for single bytes. Only the type string contains their number.
    void encodeArrayOfBytes(ByteView bytes);
    /// A C string, code '*'.
    void encodeCString(std::string_view text);
    /// Makes the whole archive fail. Later failures are ignored.
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
