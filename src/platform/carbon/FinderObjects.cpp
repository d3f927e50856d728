#include "platform/carbon/FinderObjects.h"

#include "platform/carbon/Aliases.h"
#include "platform/carbon/Coercions.h"
#include "platform/carbon/DescriptorData.h"
#include "platform/carbon/RecordFields.h"
#include "platform/finder/FinderErrors.h"
#include "platform/finder/FinderPath.h"

namespace kestrine {
namespace {

struct Specifier {
    DescType desiredClass;
    AEDesc container;
    DescType keyForm;
    AEDesc keyData;
};

std::optional<Specifier> specifierIn(const AEDesc& object) {
    AEDesc desiredClass;
    AEDesc container;
    AEDesc keyForm;
    AEDesc keyData;
    const bool isComplete = object.descriptorType == typeObjectSpecifier
                            && getField(object, keyAEDesiredClass, desiredClass) == noErr
                            && getField(object, keyAEContainer, container) == noErr
                            && getField(object, keyAEKeyForm, keyForm) == noErr
                            && getField(object, keyAEKeyData, keyData) == noErr;
    if (!isComplete)
        return std::nullopt;
    return Specifier{codeOf(desiredClass), container, codeOf(keyForm), keyData};
}

FinderError noSuchObject(const std::string& why) { return {errAENoSuchObject, NSString::fromUTF8(why)}; }

FoundObject foundObject(Result<std::string> path) {
    if (path)
        return FoundObject(*std::move(path));
    const Failure& failure = path.failure();
    const bool isNothing = failure.reason == Reason::notFound || failure.reason == Reason::malformed;
    return isNothing ? noSuchObject(failure.text) : finderError(failure);
}

FoundObject itemOfAlias(const AEDesc& alias) { return foundObject(pathOfAlias(dataOf(alias))); }

bool isNamedItem(const Specifier& specifier) {
    const bool isItem = specifier.desiredClass == cFile || specifier.desiredClass == cObject;
    return isItem && specifier.keyForm == formName && specifier.container.descriptorType == typeNull;
}

bool isPositionedAlias(const Specifier& specifier) {
    return specifier.desiredClass == typeAlias && specifier.keyForm == formAbsolutePosition
           && specifier.keyData.descriptorType == typeAlias;
}

} // namespace

FoundObject pathOfObject(const AEDesc& object) {
    if (object.descriptorType == typeAlias)
        return itemOfAlias(object);
    const std::optional<Specifier> specifier = specifierIn(object);
    if (!specifier)
        return noSuchObject("the descriptor is not an object of the Finder");
    if (isPositionedAlias(*specifier))
        return itemOfAlias(specifier->keyData);
    const std::optional<AEDesc> name = coerced(specifier->keyData, typeUnicodeText);
    if (!isNamedItem(*specifier) || !name)
        return noSuchObject("the Finder does not know this kind of object");
    return foundObject(pathOfFinderPath(unicodeTextOf(*name)));
}

std::optional<FinderProperty> propertyOf(const AEDesc& object) {
    const std::optional<Specifier> specifier = specifierIn(object);
    const bool isProperty =
        specifier && specifier->desiredClass == cProperty && specifier->keyForm == formPropertyID;
    if (!isProperty)
        return std::nullopt;
    return FinderProperty{codeOf(specifier->keyData), specifier->container};
}

} // namespace kestrine
