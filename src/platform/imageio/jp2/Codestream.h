// Codestream: a JPEG 2000 codestream that OpenJPEG has opened, and whose header it has read.
#pragma once

#include "platform/host/files/ByteReader.h"
#include "platform/imageio/jp2/Library.h"

#include <memory>

namespace kestrine::jp2 {

/// Whether a file begins like a bare codestream.
bool isBareCodestream(ByteView head);

/// A part of the reference grid: from (x0, y0) up to, not including, (x1, y1).
struct Area {
    std::uint32_t x0, y0, x1, y1;
};

/// How the reference grid is divided into tiles.
struct TileGrid {
    Area picture;
    std::uint32_t x0, y0, width, height, columns, rows;
    int halvings; ///< how often all tiles can be halved, unless a tile says otherwise

    /// The part of the picture that a tile covers.
    Area tile(std::uint32_t column, std::uint32_t row) const;
};

class Codestream {
public:
    /// Opens a bare codestream to be decoded with both sides divided by 2^`halvings`, on up to `threads`
    /// threads.
    static Result<std::unique_ptr<Codestream>> open(const Functions& library,
                                                    std::shared_ptr<const ByteReader> reader, int halvings,
                                                    std::size_t threads);
    ~Codestream();
    Codestream(const Codestream&) = delete;
    Codestream& operator=(const Codestream&) = delete;

    /// The components, with the samples of the last decoded tile.
    const opj_image_t& image() const { return *image_; }
    const TileGrid& tiles() const { return tiles_; }

    /// Decodes one tile; cheapest in stored order.
    Result<void> decodeTile(std::uint32_t column, std::uint32_t row);

private:
    Codestream(const Functions& library, std::shared_ptr<const ByteReader> reader)
        : library_(library), reader_(std::move(reader)) {}

    Result<void> start(int halvings, std::size_t threads);
    Result<void> readTiles();
    static OPJ_SIZE_T read(void* into, OPJ_SIZE_T count, void* codestream);
    static OPJ_OFF_T skip(OPJ_OFF_T count, void* codestream);
    static OPJ_BOOL seek(OPJ_OFF_T position, void* codestream);

    const Functions& library_;
    const std::shared_ptr<const ByteReader> reader_;
    std::uint64_t position_ = 0;
    opj_stream_t* stream_ = nullptr;
    opj_codec_t* decoder_ = nullptr;
    opj_image_t* image_ = nullptr;
    TileGrid tiles_{};
};

} // namespace kestrine::jp2
