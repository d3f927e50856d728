// Movie: the first frame of an image sequence.
#pragma once

#include "platform/imageio/heif/PictureTree.h"

namespace kestrine::heif {

struct Movie {
    PictureNodePointer firstFrame;
    std::uint32_t frames = 0;
};

/// The first track of `moov` that has pictures, with the alpha plane of its track. Fails if there is none.
Result<Movie> readMovie(const LoadedBox& moov, std::uint64_t fileBytes);

} // namespace kestrine::heif
