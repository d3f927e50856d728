// Chooses the class of each object, detects shared objects and limits nesting. TypedStreamWriter writes the
// bytes.
#include "platform/foundation/archiving/NSArchiver.h"

#include "platform/foundation/archiving/TypedStreamFormat.h"

namespace kestrine {

Result<std::shared_ptr<const NSData>> NSArchiver::archivedDataWithRootObject(const Object& root,
                                                                             ArchivedClasses classes) {
    return NSArchiver(classes).archivedData(root);
}

void NSArchiver::encodeClassName(std::string_view trueName, std::string_view inArchiveName) {
    substitutes_.insert_or_assign(std::string(trueName), std::string(inArchiveName));
}

Result<std::shared_ptr<const NSData>> NSArchiver::archivedData(const Object& root) {
    encodeObject(root);
    if (failure_) {
        return *failure_;
    }
    return std::make_shared<const NSData>(writer_.takeBytes());
}

void NSArchiver::fail(Reason reason, const char* text) {
    if (!failure_) {
        failure_ = Failure{reason, text};
    }
}

void NSArchiver::encodeObject(const Object& object) {
    writer_.writeType("@");
    if (object == nullptr) {
        return writer_.writeNil();
    }
    if (const auto known = written_.find(object); known != written_.end()) {
        return writer_.writeReference(known->second);
    }
    if (depth_ == typedstream::depthLimit) {
        return fail(Reason::tooLarge, "objects are nested too deeply for an archive");
    }
    ++depth_;
    writeNewObject(object);
    --depth_;
}

void NSArchiver::writeNewObject(const Object& object) {
    const ArchivedClass* itsClass = classOf(object);
    std::vector<ClassVersion> chain;
    if (itsClass == nullptr || !collectChain(*itsClass, chain)) {
        return fail(Reason::unsupported, "objects of this class cannot be archived");
    }
    written_.emplace(object, writer_.beginObject(chain));
    itsClass->encode(object, *this);
    writer_.endObject();
}

const ArchivedClass* NSArchiver::classOf(const Object& object) const {
    const ArchivedClass* row = findArchivedClass(classes_, object);
    if (row == nullptr) {
        return nullptr;
    }
    const auto substitute = substitutes_.find(row->name);
    return substitute == substitutes_.end() ? row : findArchivedClass(classes_, substitute->second);
}

bool NSArchiver::collectChain(const ArchivedClass& first, std::vector<ClassVersion>& chain) const {
    const ArchivedClass* row = &first;
    while (row != nullptr && chain.size() < typedstream::depthLimit) {
        chain.push_back({row->name, row->version});
        if (row->superclass.empty()) {
            return true;
        }
        row = findArchivedClass(classes_, row->superclass);
    }
    return false;
}

void NSArchiver::encodeBytes(ByteView bytes) {
    writer_.writeType("+");
    writer_.writeCountedBytes(bytes);
}

void NSArchiver::encodeArrayOfBytes(ByteView bytes) {
    writer_.writeType("[" + std::to_string(bytes.size()) + "c]");
    writer_.writeBytes(bytes);
}

void NSArchiver::encodeCString(std::string_view text) {
    writer_.writeType("*");
    writer_.writeCString(text);
}

} // namespace kestrine
