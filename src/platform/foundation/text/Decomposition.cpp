#include "platform/foundation/text/Decomposition.h"

#include "platform/foundation/text/UnicodeLibrary.h"

#include <limits>

namespace kestrine {

std::u16string decomposed(std::u16string_view text, Decomposition form) {
    const UnicodeNormalizerFunctions& library = unicodeNormalizerFunctions();
    const auto normalizerOf = form == Decomposition::canonical ? library.canonical : library.compatible;
    constexpr std::size_t longest = std::numeric_limits<std::int32_t>::max();
    if (!normalizerOf || !library.decompose || text.size() > longest)
        return std::u16string(text);
    int errorCode = 0;
    const UnicodeNormalizer* const normalizer = normalizerOf(&errorCode);
    if (errorCode > 0)
        return std::u16string(text);
    const auto length = static_cast<std::int32_t>(text.size());
    const std::int32_t needed = library.decompose(normalizer, text.data(), length, nullptr, 0, &errorCode);
    std::u16string result(static_cast<std::size_t>(needed > 0 ? needed : 0), u'\0');
    errorCode = 0;
    library.decompose(normalizer, text.data(), length, result.data(), needed, &errorCode);
    return errorCode > 0 ? std::u16string(text) : result;
}

bool areCanonicallyEquivalent(std::u16string_view text, std::u16string_view other) {
    return text == other
           || decomposed(text, Decomposition::canonical) == decomposed(other, Decomposition::canonical);
}

} // namespace kestrine
