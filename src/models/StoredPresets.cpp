#include "models/StoredPresets.h"

#include "platform/foundation/NSCollections.h"
#include "platform/foundation/archiving/NSArchiver.h"
#include "platform/foundation/archiving/NSUnarchiver.h"

namespace kestrine {

Result<ResizeSets> storedSets(const PropertyList& domain) {
    const std::shared_ptr<const NSData> data = domain.dataForKey(resizeSetsKey);
    if (data == nullptr)
        return ResizeSets();
    const Result<Object> root = NSUnarchiver::unarchiveObjectWithData(data->bytes(), archivedSetClasses());
    if (!root)
        return root.failure();
    const auto array = std::dynamic_pointer_cast<const NSArray>(*root);
    if (array == nullptr)
        return Failure{Reason::malformed, "the stored sets are not a list"};
    ResizeSets sets;
    for (const Object& element : array->elements()) {
        auto set = std::dynamic_pointer_cast<const ResizeSet>(element);
        if (set == nullptr)
            return Failure{Reason::malformed, "the stored list contains something that is not a set"};
        sets.push_back(std::move(set));
    }
    return sets;
}

Result<std::shared_ptr<const NSIndexSet>> storedSelection(const PropertyList& domain) {
    const std::shared_ptr<const NSData> data = domain.dataForKey(selectionIndexesKey);
    if (data == nullptr)
        return std::make_shared<const NSIndexSet>();
    const Result<Object> root = NSUnarchiver::unarchiveObjectWithData(data->bytes());
    if (!root)
        return root.failure();
    auto selection = std::dynamic_pointer_cast<const NSIndexSet>(*root);
    if (selection == nullptr)
        return Failure{Reason::malformed, "the stored selection is not an index set"};
    return selection;
}

Result<std::shared_ptr<const NSData>> archivedSets(const ResizeSets& sets) {
    NSArchiver archiver(archivedSetClasses());
    archiver.encodeClassName("NSArray", "NSMutableArray"); // the class that the presets file names
    return archiver.archivedData(std::make_shared<NSArray>(std::vector<Object>(sets.begin(), sets.end())));
}

Result<std::shared_ptr<const NSData>> archivedSelection(const NSIndexSet& selection) {
    return NSArchiver::archivedDataWithRootObject(std::make_shared<NSIndexSet>(selection));
}

} // namespace kestrine
