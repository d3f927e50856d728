// PlainNumber: numbers as people write them.
#pragma once

#include <string>

namespace kestrine {

/// 1200, 62.5, 1000000: the fewest digits that give the same number again; with an exponent only below a
/// thousandth and from a thousand million on.
std::string plainNumber(float value);

} // namespace kestrine
