// CodeCheck: whether the codes of a GIF picture are those of a sound file. The library takes codes that stand
// for nothing, and makes up pixels for them.
#pragma once

#include <array>
#include <cstdint>

namespace kestrine::gif {

class CodeCheck {
public:
    /// Of a picture of that many pixels. `bits` is the code size that its data begins with, at most 11.
    CodeCheck(unsigned bits, std::uint64_t pixels);

    /// Takes the next code. False when it stands for nothing at this place.
    bool accepts(int code);

    /// Whether there are codes for all pixels. What follows them does not matter.
    bool isComplete() const { return pixelsLeft_ == 0; }

private:
    static constexpr unsigned maximumCodes = 4096;

    void startAgain();

    const unsigned clear_;
    std::uint64_t pixelsLeft_;
    unsigned next_ = 0;                ///< the code that the next string gets
    unsigned previous_ = maximumCodes; ///< the last code; maximumCodes right after a clear code
    std::array<std::uint16_t, maximumCodes> length_{}; ///< of the string of each known code, in pixels
};

} // namespace kestrine::gif
