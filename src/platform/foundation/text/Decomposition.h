// Decomposition: Unicode's forms in which letters and their marks are separate characters.
#pragma once

#include <string>
#include <string_view>

namespace kestrine {

enum class Decomposition {
    canonical,  ///< NFD: only the form changes
    compatible, ///< NFKD: also half-width, circled and similar characters become ordinary ones
};

/// The string in this form; unchanged if ICU is missing. Any thread.
std::u16string decomposed(std::u16string_view text, Decomposition form);

/// Whether two strings differ at most in how their letters are composed, as the same name typed on different
/// systems can. Without ICU, whether they are equal.
bool areCanonicallyEquivalent(std::u16string_view text, std::u16string_view other);

} // namespace kestrine
