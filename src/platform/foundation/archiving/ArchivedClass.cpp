// The table of the platform's own classes, with their versions, superclasses and archived values.
#include "platform/foundation/archiving/ArchivedClass.h"

#include "platform/foundation/NSCollections.h"
#include "platform/foundation/NSNumber.h"
#include "platform/foundation/archiving/IndexSetCoding.h"
#include "platform/foundation/archiving/NSArchiver.h"
#include "platform/foundation/archiving/NSNull.h"
#include "platform/foundation/archiving/NSUnarchiver.h"
#include "platform/host/StringBytes.h"

#include <algorithm>
#include <limits>

namespace kestrine {
namespace {

template <class T>
bool isInstanceOf(const Object& object) {
    return dynamic_cast<const T*>(object.get()) != nullptr;
}

bool isString(const Object& object) { return NSString::fromObject(object).has_value(); }

void encodeString(const Object& object, NSArchiver& coder) {
    coder.encodeBytes(bytesOf(NSString::fromObject(object)->utf8()));
}

Object decodeString(NSUnarchiver& coder) {
    const ByteView bytes = coder.decodeBytes();
    return NSString::fromUTF8({reinterpret_cast<const char*>(bytes.data()), bytes.size()}).object();
}

/// Counts are stored as signed 32-bit numbers.
void encodeCount(NSArchiver& coder, std::size_t count) {
    if (count > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        coder.fail(Reason::tooLarge, "a collection is too large for an archive");
    }
    coder.encodeValue(static_cast<std::int32_t>(count));
}

/// Reads the stored number of elements, which have `width` values each, and checks that exactly as many
/// values are left.
void decodeCount(NSUnarchiver& coder, std::size_t width) {
    const auto count = coder.decodeValue<std::int64_t>();
    const std::size_t values = coder.valuesLeft();
    if (count < 0 || values % width != 0 || static_cast<std::uint64_t>(count) != values / width) {
        coder.fail(Reason::malformed, "an archived collection has a wrong count");
    }
}

Object decodeElement(NSUnarchiver& coder) {
    Object element = coder.decodeObject();
    if (element == nullptr) {
        coder.fail(Reason::malformed, "an archived collection contains nil");
    }
    return element;
}

void encodeArray(const Object& object, NSArchiver& coder) {
    const auto& array = static_cast<const NSArray&>(*object);
    encodeCount(coder, array.count());
    for (const Object& element : array.elements()) {
        coder.encodeObject(element);
    }
}

Object decodeArray(NSUnarchiver& coder) {
    std::vector<Object> elements;
    decodeCount(coder, 1);
    while (coder.nextTypeCode() != '\0') {
        elements.push_back(decodeElement(coder));
    }
    return std::make_shared<const NSArray>(std::move(elements));
}

void encodeDictionary(const Object& object, NSArchiver& coder) {
    const auto& entries = static_cast<const NSDictionary&>(*object).entries();
    encodeCount(coder, entries.size());
    for (const auto& [key, value] : entries) {
        coder.encodeObject(key.object());
        coder.encodeObject(value);
    }
}

/// All keys are strings. If a key occurs twice, the last value counts.
Object decodeDictionary(NSUnarchiver& coder) {
    std::map<NSString, Object> entries;
    decodeCount(coder, 2);
    while (coder.nextTypeCode() != '\0') {
        const OptionalString key = coder.decodeString();
        Object value = decodeElement(coder);
        if (!key) {
            coder.fail(Reason::malformed, "an archived dictionary has a nil key");
            break;
        }
        if (!coder.spendWork(key->length())) {
            break;
        }
        entries.insert_or_assign(*key, std::move(value));
    }
    return std::make_shared<const NSDictionary>(std::move(entries));
}

void encodeData(const Object& object, NSArchiver& coder) {
    const auto& data = static_cast<const NSData&>(*object);
    encodeCount(coder, data.length());
    coder.encodeArrayOfBytes(data.bytes());
}

Object decodeData(NSUnarchiver& coder) {
    const auto length = coder.decodeValue<std::int64_t>();
    const ByteView bytes = coder.decodeBytes();
    if (length < 0 || static_cast<std::uint64_t>(length) != bytes.size()) {
        coder.fail(Reason::malformed, "archived data has a wrong length");
    }
    return std::make_shared<const NSData>(Bytes(bytes.begin(), bytes.end()));
}

template <class T>
void encodeNumberAs(NSArchiver& coder, T value) {
    constexpr char code = typeCode<T>;
    coder.encodeCString({&code, 1});
    coder.encodeValue(value);
}

/// A boolean is stored as a signed byte, because the format has no booleans.
void encodeNumber(const Object& object, NSArchiver& coder) {
    const auto encode = [&coder](auto value) {
        if constexpr (std::is_same_v<decltype(value), bool>) {
            encodeNumberAs(coder, static_cast<std::int8_t>(value));
        } else {
            encodeNumberAs(coder, value);
        }
    };
    std::visit(encode, static_cast<const NSNumber&>(*object).value());
}

template <class T>
NSNumber::Value decodeAs(NSUnarchiver& coder) {
    return coder.decodeValue<T>();
}

struct NumberCode {
    char code;
    NSNumber::Value (*decode)(NSUnarchiver& coder);
};

constexpr NumberCode numberCodes[] = {
    {'c', decodeAs<std::int8_t>},   {'C', decodeAs<std::uint8_t>},  {'B', decodeAs<bool>},
    {'s', decodeAs<std::int16_t>},  {'S', decodeAs<std::uint16_t>}, {'i', decodeAs<std::int32_t>},
    {'I', decodeAs<std::uint32_t>}, {'l', decodeAs<std::int32_t>},  {'L', decodeAs<std::uint32_t>},
    {'q', decodeAs<std::int64_t>},  {'Q', decodeAs<std::uint64_t>}, {'f', decodeAs<float>},
    {'d', decodeAs<double>},
};

/// An archived number is its type code as a C string, followed by one value of that type.
Object decodeNumber(NSUnarchiver& coder) {
    const std::string_view type = coder.decodeCString();
    const char code = coder.nextTypeCode();
    const auto* row = std::ranges::find(numberCodes, code, &NumberCode::code);
    if (row == std::end(numberCodes) || type != std::string_view(&code, 1)) {
        coder.fail(Reason::malformed, "an archived number has a wrong type");
        return nullptr;
    }
    return std::make_shared<const NSNumber>(row->decode(coder));
}

void encodeNothing(const Object&, NSArchiver&) {}

Object decodeNull(NSUnarchiver&) { return std::make_shared<const NSNull>(); }

/// Archives with the mutable classes are read but not written. They give the same objects as the immutable
/// ones.
constexpr ArchivedClass platformClasses[] = {
    {"NSObject", 0, "", nullptr, nullptr, nullptr},
    {"NSString", 1, "NSObject", isString, encodeString, decodeString},
    {"NSMutableString", 1, "NSString", nullptr, encodeString, decodeString},
    {"NSArray", 0, "NSObject", isInstanceOf<NSArray>, encodeArray, decodeArray},
    {"NSMutableArray", 0, "NSArray", nullptr, encodeArray, decodeArray},
    {"NSDictionary", 0, "NSObject", isInstanceOf<NSDictionary>, encodeDictionary, decodeDictionary},
    {"NSMutableDictionary", 0, "NSDictionary", nullptr, encodeDictionary, decodeDictionary},
    {"NSData", 0, "NSObject", isInstanceOf<NSData>, encodeData, decodeData},
    {"NSMutableData", 0, "NSData", nullptr, encodeData, decodeData},
    {"NSValue", 0, "NSObject", nullptr, encodeNumber, decodeNumber},
    {"NSNumber", 0, "NSValue", isInstanceOf<NSNumber>, encodeNumber, decodeNumber},
    {"NSNull", 0, "NSObject", isInstanceOf<NSNull>, encodeNothing, decodeNull},
    {"NSIndexSet", 0, "NSObject", isInstanceOf<NSIndexSet>, encodeIndexSet, decodeIndexSet},
    {"NSMutableIndexSet", 0, "NSIndexSet", nullptr, encodeIndexSet, decodeIndexSet},
};

template <class Matches>
const ArchivedClass* findRow(ArchivedClasses classes, Matches matches) {
    for (const ArchivedClasses table : {classes, ArchivedClasses(platformClasses)}) {
        if (const auto row = std::ranges::find_if(table, matches); row != table.end()) {
            return &*row;
        }
    }
    return nullptr;
}

} // namespace

const ArchivedClass* findArchivedClass(ArchivedClasses classes, std::string_view name) {
    return findRow(classes, [name](const ArchivedClass& row) { return row.name == name; });
}

const ArchivedClass* findArchivedClass(ArchivedClasses classes, const Object& object) {
    return findRow(classes, [&object](const ArchivedClass& row) {
        return row.isInstance != nullptr && row.isInstance(object);
    });
}

} // namespace kestrine
