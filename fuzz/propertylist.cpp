// Reads any bytes as a property list in both forms. Those within the bounds must be read, searched and
// written without errors.
#include "platform/foundation/propertylist/PropertyList.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace kestrine;
    Result<PropertyList> list = PropertyList::fromBytes({bytes, size});
    if (!list)
        return 0;
    const auto data = list->dataForKey(u"resizeSets");
    list->setData(u"selectionIndexes", data ? ByteView(data->bytes()) : ByteView());
    (void)list->toBinary();
    (void)list->toXML();
    return 0;
}
