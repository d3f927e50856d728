// Nested objects are read by recursion up to a fixed depth. References are recorded and not followed, so an
// object may contain itself.
#include "platform/foundation/archiving/TypedStreamReader.h"

#include "platform/foundation/archiving/TypedStreamCursor.h"

namespace kestrine {

using namespace typedstream;

namespace {

using Content = decltype(TypedValue::content);
using Values = std::vector<TypedValue>;

/// Whether the item at `index` is an array of single bytes, which are stored unchanged.
bool isBlock(const TypeEncoding& type, std::size_t index) {
    const char element = type[index + 1].code;
    return type[index].end == index + 2 && (element == 'c' || element == 'C');
}

class TypedStreamReader {
public:
    explicit TypedStreamReader(ByteView bytes) : cursor_(bytes) {}

    Result<TypedStream> read() {
        cursor_.readHeader();
        const TypeEncoding* type = readType();
        if (type != nullptr && (type->size() != 1 || type->front().code != '@')) {
            cursor_.fail(Reason::malformed, "the archive does not start with an object");
        }
        const Content root = readObject();
        if (cursor_.failed()) {
            return cursor_.failure();
        }
        if (const auto* index = std::get_if<ObjectIndex>(&root)) {
            stream_.root = *index;
        }
        return std::move(stream_);
    }

private:
    const TypeEncoding* readType();
    void readGroup(Values& into);
    void readItems(const TypeEncoding& type, std::size_t begin, std::size_t end, Values& into);
    void readItem(const TypeEncoding& type, std::size_t index, Values& into);
    void readRepeated(const TypeEncoding& type, std::size_t index, Values& into);
    Content readContent(char code);
    Content readBytesOrNil();
    Content readSelector();
    Content readCString();
    Content readObject();
    ObjectIndex readNewObject();
    Content readClass();
    Content readNewClasses();
    template <class T>
    Content readReferenceTo();

    /// Counts one level of nesting during its lifetime.
    class Level {
    public:
        explicit Level(TypedStreamReader& reader) : reader_(reader) {
            if (++reader_.depth_ > depthLimit) {
                reader_.cursor_.fail(Reason::tooLarge, "the archive is nested too deeply");
            }
        }
        ~Level() { --reader_.depth_; }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;

    private:
        TypedStreamReader& reader_;
    };

    TypedStreamCursor cursor_;
    TypedStream stream_;
    /// Objects, classes and C strings share one numbering.
    std::vector<std::variant<ObjectIndex, ClassIndex, std::string_view>> shared_;
    std::size_t depth_ = 0;
    std::size_t itemsRead_ = 0;
};

const TypeEncoding* TypedStreamReader::readType() {
    SharedString* string = cursor_.readSharedString();
    if (string == nullptr) {
        cursor_.fail(Reason::malformed, "a type string is nil");
        return nullptr;
    }
    if (string->encoding.empty()) {
        Result<TypeEncoding> encoding = parseTypeEncoding(string->text);
        if (!encoding) {
            cursor_.fail(Reason::malformed, "a type string is malformed");
            return nullptr;
        }
        string->encoding = *std::move(encoding);
    }
    return &string->encoding;
}

void TypedStreamReader::readGroup(Values& into) {
    if (const TypeEncoding* type = readType()) {
        readItems(*type, 0, type->size(), into);
    }
}

void TypedStreamReader::readItems(const TypeEncoding& type, std::size_t begin, std::size_t end,
                                  Values& into) {
    for (std::size_t index = begin; index < end && !cursor_.failed(); index = type[index].end) {
        readItem(type, index, into);
    }
}

void TypedStreamReader::readItem(const TypeEncoding& type, std::size_t index, Values& into) {
    if (++itemsRead_ > valueLimit) {
        return cursor_.fail(Reason::tooLarge, "the archive contains too many values");
    }
    const char code = type[index].code;
    if (code == '[' && isBlock(type, index)) {
        into.push_back({code, cursor_.readBytes(type[index].count)});
    } else if (code == '[' || code == '{') {
        readRepeated(type, index, into);
    } else if (code != '!') {
        into.push_back({code, readContent(code)});
    }
}

void TypedStreamReader::readRepeated(const TypeEncoding& type, std::size_t index, Values& into) {
    const Level level(*this);
    for (std::uint64_t i = 0; i < type[index].count && !cursor_.failed(); ++i) {
        readItems(type, index + 1, type[index].end, into);
    }
}

Content TypedStreamReader::readContent(char code) {
    switch (code) {
    case 'c':
        return std::int64_t{static_cast<std::int8_t>(cursor_.readByte())};
    case 'C':
    case 'B':
        return std::int64_t{cursor_.readByte()};
    case 's':
        return std::int64_t{static_cast<std::int16_t>(cursor_.readInteger())};
    case 'S':
        return std::int64_t{static_cast<std::uint16_t>(cursor_.readInteger())};
    case 'i':
    case 'l':
        return std::int64_t{static_cast<std::int32_t>(cursor_.readInteger())};
    case 'I':
    case 'L':
        return std::int64_t{static_cast<std::uint32_t>(cursor_.readInteger())};
    case 'q':
    case 'Q':
        return cursor_.readInteger();
    case 'f':
        return cursor_.readFloat(4);
    case 'd':
        return cursor_.readFloat(8);
    case '+':
        return readBytesOrNil();
    case ':':
    case '%':
        return readSelector();
    case '*':
        return readCString();
    case '#':
        return readClass();
    default:
        return readObject();
    }
}

Content TypedStreamReader::readBytesOrNil() {
    const std::optional<ByteView> bytes = cursor_.readCountedBytes();
    return bytes ? Content(*bytes) : Content();
}

Content TypedStreamReader::readSelector() {
    const SharedString* string = cursor_.readSharedString();
    return string != nullptr ? Content(string->text) : Content();
}

/// A reference to an entry of the shared table, which must be a T.
template <class T>
Content TypedStreamReader::readReferenceTo() {
    const auto index = cursor_.readReference(shared_.size());
    if (!index) {
        return {};
    }
    if (const T* entry = std::get_if<T>(&shared_[*index])) {
        return *entry;
    }
    cursor_.fail(Reason::malformed, "a reference has a target of the wrong kind");
    return {};
}

Content TypedStreamReader::readCString() {
    if (cursor_.take(nil)) {
        return {};
    }
    if (!cursor_.take(fresh)) {
        return readReferenceTo<std::string_view>();
    }
    const SharedString* string = cursor_.readSharedString();
    if (string == nullptr) {
        cursor_.fail(Reason::malformed, "a new C string is nil");
        return {};
    }
    shared_.emplace_back(string->text);
    return string->text;
}

Content TypedStreamReader::readObject() {
    if (cursor_.take(nil)) {
        return {};
    }
    return cursor_.take(fresh) ? Content(readNewObject()) : readReferenceTo<ObjectIndex>();
}

ObjectIndex TypedStreamReader::readNewObject() {
    const ObjectIndex index{stream_.objects.size()};
    stream_.objects.emplace_back();
    shared_.emplace_back(index);
    const Level level(*this);
    const Content itsClass = readClass();
    if (!std::holds_alternative<ClassIndex>(itsClass)) {
        cursor_.fail(Reason::malformed, "an object has no class");
        return index;
    }
    Values values;
    while (!cursor_.failed() && !cursor_.take(endOfObject)) {
        readGroup(values);
    }
    stream_.objects[index.position] = {std::get<ClassIndex>(itsClass), std::move(values)};
    stream_.finished.push_back(index);
    return index;
}

Content TypedStreamReader::readClass() {
    if (cursor_.take(nil)) {
        return {};
    }
    return cursor_.take(fresh) ? readNewClasses() : readReferenceTo<ClassIndex>();
}

/// Reads a new class after its mark, together with its new superclasses. References to these classes become
/// valid only after the last one is read, so no class can be its own superclass.
Content TypedStreamReader::readNewClasses() {
    const std::size_t first = stream_.classes.size();
    do {
        const SharedString* name = cursor_.readSharedString();
        if (name == nullptr) {
            cursor_.fail(Reason::malformed, "a class has no name");
            return {};
        }
        const ClassIndex next{stream_.classes.size() + 1};
        stream_.classes.push_back({name->text, cursor_.readInteger(), next});
        if (next.position - first > depthLimit) {
            cursor_.fail(Reason::tooLarge, "a class has too many superclasses");
        }
    } while (cursor_.take(fresh));
    stream_.classes.back().superclass.reset();
    if (!cursor_.take(nil)) {
        const Content known = readReferenceTo<ClassIndex>();
        if (const auto* superclass = std::get_if<ClassIndex>(&known)) {
            stream_.classes.back().superclass = *superclass;
        }
    }
    for (std::size_t position = first; position < stream_.classes.size(); ++position) {
        shared_.emplace_back(ClassIndex{position});
    }
    return ClassIndex{first};
}

} // namespace

Result<TypedStream> readTypedStream(ByteView bytes) { return TypedStreamReader(bytes).read(); }

} // namespace kestrine
