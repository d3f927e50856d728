// Objects are built in the order in which the archive ends them: whatever an object holds exists before it,
// so nothing recurses, and what does not exist yet is an object that holds itself.
#include "platform/foundation/archiving/NSUnarchiver.h"

#include "platform/foundation/archiving/TypedStreamFormat.h"
#include "platform/foundation/archiving/TypedStreamReader.h"

namespace kestrine {

Result<Object> NSUnarchiver::unarchiveObjectWithData(ByteView data, ArchivedClasses classes) {
    TypedStream stream = TRY(readTypedStream(data));
    if (!stream.root) {
        return Failure{Reason::empty, "the archive holds nil"};
    }
    return NSUnarchiver(std::move(stream), classes).unarchive();
}

NSUnarchiver::NSUnarchiver(TypedStream stream, ArchivedClasses classes)
    : stream_(std::move(stream)), classes_(classes), built_(stream_.objects.size()) {}

Result<Object> NSUnarchiver::unarchive() {
    for (const ObjectIndex index : stream_.finished) {
        build(index);
        if (failure_) {
            return *failure_;
        }
    }
    return built_[stream_.root->position];
}

void NSUnarchiver::build(ObjectIndex index) {
    current_ = &stream_.objects[index.position];
    taken_ = 0;
    const std::string_view name = stream_.classes[current_->itsClass.position].name;
    const ArchivedClass* row = findArchivedClass(classes_, name);
    if (row == nullptr || row->decode == nullptr) {
        return fail(Reason::unsupported, "the archive holds an object of an unknown class");
    }
    Object object = row->decode(*this);
    if (object == nullptr) {
        fail(Reason::malformed, "a class refused its archived values");
    } else if (valuesLeft() != 0) {
        fail(Reason::malformed, "an archived object has too many values");
    }
    built_[index.position] = std::move(object);
}

const TypedValue* NSUnarchiver::take() {
    if (failed()) {
        return nullptr;
    }
    if (valuesLeft() == 0) {
        fail(Reason::malformed, "an archived object has too few values");
        return nullptr;
    }
    return &current_->values[taken_++];
}

template <class Content>
const Content* NSUnarchiver::takeAs(const char* complaint) {
    const TypedValue* value = take();
    const Content* content = value == nullptr ? nullptr : std::get_if<Content>(&value->content);
    if (content == nullptr) {
        fail(Reason::malformed, complaint);
    }
    return content;
}

std::int64_t NSUnarchiver::takeInteger() {
    const auto* integer = takeAs<std::int64_t>("an archived value is no integer");
    return integer == nullptr ? 0 : *integer;
}

double NSUnarchiver::takeFloat() {
    const char code = nextTypeCode();
    if (code == 'f' || code == 'd') {
        const auto* number = takeAs<double>("an archived value is no number");
        return number == nullptr ? 0 : *number;
    }
    const std::int64_t integer = takeInteger();
    return code == 'Q' ? static_cast<double>(static_cast<std::uint64_t>(integer))
                       : static_cast<double>(integer);
}

Object NSUnarchiver::decodeObject() {
    const TypedValue* value = take();
    if (value == nullptr) {
        return nullptr;
    }
    const auto* index = std::get_if<ObjectIndex>(&value->content);
    if (index == nullptr && value->code != '@') {
        fail(Reason::malformed, "an archived value is no object");
    }
    if (index == nullptr) {
        return nullptr;
    }
    if (built_[index->position] == nullptr) {
        fail(Reason::malformed, "an archived object holds itself");
    }
    return built_[index->position];
}

OptionalString NSUnarchiver::decodeString() {
    const Object object = decodeObject();
    const OptionalString string = NSString::fromObject(object);
    if (object != nullptr && !string) {
        fail(Reason::malformed, "an archived object is no text");
    }
    return string;
}

ByteView NSUnarchiver::decodeBytes() {
    const auto* bytes = takeAs<ByteView>("an archived value is no block of bytes");
    return bytes == nullptr ? ByteView{} : *bytes;
}

std::string_view NSUnarchiver::decodeCString() {
    if (nextTypeCode() != '*') {
        fail(Reason::malformed, "an archived value is no C string");
    }
    const auto* text = takeAs<std::string_view>("an archived C string is nil");
    return text == nullptr ? std::string_view{} : *text;
}

char NSUnarchiver::nextTypeCode() const {
    return failed() || valuesLeft() == 0 ? '\0' : current_->values[taken_].code;
}

std::size_t NSUnarchiver::versionForClassName(std::string_view name) const {
    const auto unsignedVersion = [](const TypedClass& each) {
        return static_cast<std::uint32_t>(each.version);
    };
    const TypedClass& own = stream_.classes[current_->itsClass.position];
    if (own.name == name) {
        return unsignedVersion(own);
    }
    for (const TypedClass& each : stream_.classes) {
        if (each.name == name) {
            return unsignedVersion(each);
        }
    }
    return NSNotFound;
}

bool NSUnarchiver::spendWork(std::size_t bytes) {
    if (failed() || bytes > typedstream::workLimit - work_) {
        fail(Reason::tooLarge, "the archive repeats large objects too often");
        return false;
    }
    work_ += bytes;
    return true;
}

void NSUnarchiver::fail(Reason reason, const char* text) {
    if (!failure_) {
        failure_ = Failure{reason, text};
    }
}

} // namespace kestrine
