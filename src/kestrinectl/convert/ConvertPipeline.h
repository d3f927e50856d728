// ConvertPipeline: converts pictures while others are still being searched for, with memory that does not
// depend on their number.
#pragma once

#include "kestrinectl/convert/InputQueue.h"
#include "kestrinectl/convert/NameClaims.h"
#include "models/ResizeJob.h"

#include <functional>

namespace kestrine {

/// What is done with each picture. Any thread calls the functions.
struct PictureWork {
    /// The job for a picture, which is the number-th of all (from 1).
    std::function<ResizeJob(const ConvertInput&, std::size_t number)> job;
    /// Whether the picture was finished without being converted. `position` is its place among all items.
    std::function<bool(std::size_t position, const ConvertInput&, const ResizeJob&)> isFinished;
    std::function<void(std::size_t position, const ConvertInput&, ResizeJob)> convert;
    std::function<void(std::size_t position, ConvertResult)> finding;
};

/// Takes all items from the queue on `threads` threads, of which this is one. Results get the names that they
/// would get if all pictures were converted one after another. Returns when all items are finished; after a
/// stop signal, when those already begun are finished.
void convertAll(InputQueue& queue, unsigned threads, const PictureWork& work);

} // namespace kestrine
