// The limit on the work that classes do while they read shared objects.
#include "platform/foundation/NSCollections.h"
#include "platform/foundation/archiving/NSArchiver.h"
#include "platform/foundation/archiving/NSUnarchiver.h"
#include "platform/foundation/archiving/TypedStreamFormat.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

/// An object whose class needs half of the allowed work to read it.
class HalfOfTheWork final : public NSObject {
public:
    void encodeWithCoder(NSArchiver&) const {}
    static std::shared_ptr<const HalfOfTheWork> initWithCoder(NSUnarchiver& coder) {
        (void)coder.spendWork(typedstream::workLimit / 2);
        return std::make_shared<HalfOfTheWork>();
    }
};

constexpr ArchivedClass classes[] = {archivedClass<HalfOfTheWork>("HalfOfTheWork", 0)};

Result<Object> roundTripOf(std::size_t count) {
    std::vector<Object> objects;
    for (std::size_t i = 0; i < count; ++i)
        objects.push_back(std::make_shared<HalfOfTheWork>());
    const Object list = std::make_shared<NSArray>(std::move(objects));
    const auto archive = TRY(NSArchiver::archivedDataWithRootObject(list, classes));
    return NSUnarchiver::unarchiveObjectWithData(archive->bytes(), classes);
}

TEST(WorkLimit, appliesToTheSumOfAllObjects) {
    EXPECT_TRUE(roundTripOf(2));
    const Result<Object> tooMuch = roundTripOf(3);
    ASSERT_FALSE(tooMuch);
    EXPECT_EQ(tooMuch.failure().reason, Reason::tooLarge);
}

} // namespace
} // namespace kestrine
