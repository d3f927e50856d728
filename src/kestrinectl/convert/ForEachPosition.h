// forEachPosition: the same work for many positions, on several threads.
#pragma once

#include <cstddef>
#include <functional>

namespace kestrine {

/// Calls `work` once for each position from 0 to count - 1, in this order on one thread, and else begun in
/// this order. This thread is one of `threads`; if the system permits fewer, they do the work of all. An
/// exception ends the work of its thread and reaches the caller at the end.
void forEachPosition(std::size_t count, std::size_t threads, const std::function<void(std::size_t)>& work);

} // namespace kestrine
