#include "models/ResizeSet.h"

#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSNumber.h"

#include <algorithm>
#include <array>

namespace kestrine {

namespace {

constexpr std::string_view className = "ResizeSet";

constexpr const char16_t* replaceFileKey = u"replaceFile";

template <class... Functions>
struct Overloaded : Functions... {
    using Functions::operator()...;
};
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

/// `value`, converted to the type of a field.
template <class T>
T numberFrom(const NSNumber& value) {
    if constexpr (std::is_same_v<T, float>)
        return value.floatValue();
    else if constexpr (std::is_same_v<T, std::int8_t>)
        return value.charValue();
    else
        return value.intValue();
}

} // namespace

ResizeSet::ResizeSet() : name_(u"Untitled") {}

ResizeSet::ResizeSet(const ResizeSet& other) : NSObject(other) {
    for (const Field& field : fields())
        std::visit([&](auto member) { this->*member = other.*member; }, field.member);
}

std::span<const ResizeSet::Field> ResizeSet::fields() {
    using Set = ResizeSet;
    static constexpr Field table[] = {
        {"name", &Set::name_},
        {"replaceFile", &Set::replaceFile_},
        {"resizeType", &Set::resizeType_},
        {"height", &Set::height_},
        {"width", &Set::width_},
        {"ratio", &Set::ratio_},
        {"maxSize", &Set::maxSize_},
        {"formatType", &Set::formatType_},
        {"compression", &Set::compression_},
        {"attachExifData", &Set::attachExifData_},
        {"convertResolution", &Set::convertResolution_},
        {"autoRotate", &Set::autoRotate_, 2},
        {"chooseFolder", &Set::chooseFolder_, 3},
        {"highQuality", &Set::highQuality_, 4},
        {"chosenFolderPath", &Set::chosenFolderPath_, neverArchived},
    };
    return table;
}

const ResizeSet::Field& ResizeSet::fieldNamed(const NSString& key) {
    const auto field = std::ranges::find(fields(), key.utf8(), &Field::key);
    if (field == fields().end())
        throw NSException("NSUnknownKeyException", "ResizeSet has no field " + key.utf8());
    return *field;
}

Object ResizeSet::valueForKey(const NSString& key) const {
    return std::visit(
        [this](auto member) -> Object {
            const auto& value = this->*member;
            if constexpr (std::is_same_v<decltype(value), const OptionalString&>)
                return value ? value->object() : nullptr;
            else
                return std::make_shared<NSNumber>(value);
        },
        fieldNamed(key).member);
}

void ResizeSet::setValueForKey(const Object& value, const NSString& key) {
    const Field& field = fieldNamed(key);
    const auto number = std::dynamic_pointer_cast<const NSNumber>(value);
    if (key == replaceFileKey && number != nullptr)
        return setReplaceFile(number->charValue());
    const auto setText = [&](OptionalString ResizeSet::*member) {
        OptionalString text = NSString::fromObject(value);
        if (value != nullptr && !text)
            return false;
        this->*member = std::move(text);
        return true;
    };
    const auto setNumber = [&]<class T>(T ResizeSet::*member) {
        if (number == nullptr)
            return false;
        this->*member = numberFrom<T>(*number);
        return true;
    };
    if (!std::visit(Overloaded{setText, setNumber}, field.member))
        throw NSException(NSInvalidArgumentException, "the value does not fit " + key.utf8());
    observers_.notify(key);
}

void ResizeSet::setReplaceFile(std::int8_t value) {
    replaceFile_ = value;
    if (value == 1)
        setValueForKey(std::make_shared<NSNumber>(false), u"chooseFolder");
    observers_.notify(replaceFileKey);
}

void ResizeSet::encodeWithCoder(NSArchiver& coder) const { encodeFields(coder, *this, fields()); }

std::shared_ptr<const ResizeSet> ResizeSet::initWithCoder(NSUnarchiver& coder) {
    auto set = std::make_shared<ResizeSet>();
    decodeFields(coder, *set, fields(), coder.versionForClassName(className));
    return set;
}

void ResizeSet::chooseFolder(const Object&) {
    const std::unique_ptr<NSOpenPanel> panel = NSOpenPanel::openPanel();
    panel->allowsMultipleSelection = false;
    panel->canChooseFiles = false;
    panel->canCreateDirectories = true;
    panel->canChooseDirectories = true;
    const NSString format =
        NSBundle::mainBundle().localizedString(u"Please choose directory for \"%@\"", u"");
    const auto pieces = format.componentsSeparatedBy(u"%@");
    panel->message = pieces.front();
    for (std::size_t i = 1; i < pieces.size(); ++i)
        panel->message = panel->message + name_.value_or(u"(null)") + pieces[i];
    didEndOpenSheet(*panel, panel->runModal(), nullptr);
}

void ResizeSet::didEndOpenSheet(const NSOpenPanel& panel, int returnCode, const void*) {
    if (returnCode == NSOKButton)
        setValueForKey(panel.filename().object(), u"chosenFolderPath");
}

ArchivedClasses archivedSetClasses() {
    static const std::array classes = {
        archivedClass<ResizeSet>(className, currentVersion(ResizeSet::fields()))};
    return classes;
}

} // namespace kestrine
