#include "platform/foundation/archiving/IndexSetCoding.h"

#include "platform/foundation/NSData.h"
#include "platform/foundation/archiving/NSArchiver.h"
#include "platform/foundation/archiving/NSUnarchiver.h"

#include <limits>

namespace kestrine {
namespace {

using Numbers = std::vector<std::uint64_t>;

/// The values of an archived set, independent of their grouping.
struct Parts {
    Numbers integers;
    std::optional<Bytes> block;
};

void takeBlock(Parts& parts, ByteView block, NSUnarchiver& coder) {
    if (parts.block) {
        coder.fail(Reason::malformed, "an archived index set has two blocks of bytes");
    }
    // Two packed bytes can become a range of sixteen bytes.
    if (coder.spendWork(16 * block.size())) {
        parts.block = Bytes(block.begin(), block.end());
    }
}

void takeInteger(Parts& parts, NSUnarchiver& coder) {
    const bool isUnsigned = coder.nextTypeCode() == 'Q';
    const auto integer = coder.decodeValue<std::int64_t>();
    if (integer < 0 && !isUnsigned) {
        coder.fail(Reason::malformed, "an archived index set contains a negative number");
    }
    parts.integers.push_back(static_cast<std::uint64_t>(integer));
}

Parts takeParts(NSUnarchiver& coder) {
    Parts parts;
    while (const char code = coder.nextTypeCode()) {
        if (code == '+' || code == '[') {
            takeBlock(parts, coder.decodeBytes(), coder);
        } else if (code == '@') {
            const Object object = coder.decodeObject();
            if (const auto* data = dynamic_cast<const NSData*>(object.get())) {
                takeBlock(parts, data->bytes(), coder);
            } else {
                coder.fail(Reason::malformed, "an archived index set contains an object of another class");
            }
        } else {
            takeInteger(parts, coder);
        }
    }
    return parts;
}

/// The numbers packed in `block`. Empty if the last one is incomplete or one has more than 64 bits.
std::optional<Numbers> unpack(const Bytes& block) {
    Numbers numbers;
    std::uint64_t number = 0;
    unsigned shift = 0;
    for (const std::uint8_t byte : block) {
        const std::uint64_t bits = byte & 0x7fU;
        if (shift >= 64 || bits << shift >> shift != bits) {
            return std::nullopt;
        }
        number |= bits << shift;
        shift += 7;
        if ((byte & 0x80U) == 0) {
            numbers.push_back(number);
            number = 0;
            shift = 0;
        }
    }
    return shift == 0 ? std::optional(std::move(numbers)) : std::nullopt;
}

/// The locations and lengths, alternating. Empty if the parts do not match.
std::optional<Numbers> pairsOf(Parts parts) {
    std::optional<std::uint64_t> count;
    if (!parts.integers.empty()) {
        count = parts.integers.front();
        parts.integers.erase(parts.integers.begin());
    }
    if (parts.block && !parts.integers.empty()) {
        return std::nullopt;
    }
    std::optional<Numbers> pairs = parts.block ? unpack(*parts.block) : std::move(parts.integers);
    if (!pairs || pairs->size() % 2 != 0 || pairs->size() / 2 != count.value_or(pairs->size() / 2)) {
        return std::nullopt;
    }
    return pairs;
}

} // namespace

Object decodeIndexSet(NSUnarchiver& coder) {
    const std::optional<Numbers> pairs = pairsOf(takeParts(coder));
    if (!pairs) {
        coder.fail(Reason::malformed, "an archived index set has an unknown layout");
        return nullptr;
    }
    std::vector<NSRange> ranges;
    for (std::size_t i = 0; i < pairs->size(); i += 2) {
        ranges.push_back({(*pairs)[i], (*pairs)[i + 1]});
    }
    return std::make_shared<const NSIndexSet>(std::move(ranges));
}

void encodeIndexSet(const Object& object, NSArchiver& coder) {
    const auto encode = [&coder](std::size_t number) {
        if (number > std::numeric_limits<std::uint32_t>::max()) {
            coder.fail(Reason::tooLarge, "an index set has an index above 32 bits");
        }
        coder.encodeValue(static_cast<std::uint32_t>(number));
    };
    const std::vector<NSRange>& ranges = static_cast<const NSIndexSet&>(*object).ranges();
    encode(ranges.size());
    for (const NSRange& range : ranges) {
        encode(range.location);
        encode(range.length);
    }
}

} // namespace kestrine
