// ConvertChains: which conversions may run at the same time without an effect on the results.
#pragma once

#include "kestrinectl/ConvertInputs.h"

#include <vector>

namespace kestrine {

/// Positions of inputs that must be converted one after another, in this order.
using ConvertChain = std::vector<std::size_t>;

/// Splits the inputs into chains, ordered by their first inputs. Two inputs whose outputs may compete for a
/// name ("a.jpg", "a_1.jpg", ...) are in one chain, so that each output gets the name it would get if all
/// inputs were converted in order.
std::vector<ConvertChain> independentChains(const std::vector<ConvertInput>& inputs, const ResizeSets& sets);

} // namespace kestrine
