// Header: everything before the samples of a PSD or PSB file that defines its merged picture.
#pragma once

#include "platform/coregraphics/RowFormat.h"
#include "platform/host/files/ByteReader.h"
#include "platform/imageio/psd/Layers.h"
#include "platform/imageio/psd/Resources.h"

namespace kestrine::psd {

enum class Model : std::uint8_t { bits, gray, indexed, rgb, cmyk, lab };

struct Header {
    RowFormat format{}; ///< as delivered
    Model model = Model::rgb;
    unsigned bits = 8;        ///< per sample: 1, 8, 16, or 32 for floats
    std::uint32_t planes = 0; ///< stored one after the other; those that are not used come last
    bool isLarge = false;     ///< PSB: lengths are longer
    bool isRunLength = false;
    std::uint64_t pixelOffset = 0; ///< of the samples, or of the lengths of their codes
    Bytes palette{};               ///< red, green, blue per colour of an indexed picture
    Resources resources{};
    LayerSummary layers{};

    std::size_t colorPlanes() const;
    std::size_t usedPlanes() const;
    std::size_t bytesPerStoredRow() const { return (std::size_t{format.width} * bits + 7) / 8; }
};

/// Whether a file that begins with `head` has the signature and a known version.
bool isPSD(ByteView head);

/// Reads all sections. The sides are not checked.
Result<Header> readHeader(const std::shared_ptr<const ByteReader>& reader);

} // namespace kestrine::psd
