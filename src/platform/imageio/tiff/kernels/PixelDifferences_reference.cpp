#include "platform/imageio/tiff/kernels/PixelDifferences_reference.h"

#include <cstring>

namespace kestrine::kernels::reference {

void undoPixelDifferences(std::uint8_t* row, std::size_t count, std::size_t bytesPerSample,
                          std::size_t samplesPerPixel) {
    for (std::size_t at = samplesPerPixel * bytesPerSample; at < count; at += bytesPerSample) {
        const std::uint8_t* const before = row + at - samplesPerPixel * bytesPerSample;
        if (bytesPerSample == 1) {
            row[at] = static_cast<std::uint8_t>(row[at] + *before);
            continue;
        }
        std::uint16_t sample = 0, sampleBefore = 0;
        std::memcpy(&sample, row + at, sizeof sample);
        std::memcpy(&sampleBefore, before, sizeof sampleBefore);
        sample = static_cast<std::uint16_t>(sample + sampleBefore);
        std::memcpy(row + at, &sample, sizeof sample);
    }
}

} // namespace kestrine::kernels::reference
