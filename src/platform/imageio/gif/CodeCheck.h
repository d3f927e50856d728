// CodeCheck: checks that all codes of a GIF picture are valid. giflib accepts invalid codes and
// invents pixels for them.
#pragma once

#include <array>
#include <cstdint>

namespace kestrine::gif {

class CodeCheck {
public:
    /// Checks the codes of a picture of `pixels` pixels. `bits` is the code size at the start of its data, at
    /// most 11.
    CodeCheck(unsigned bits, std::uint64_t pixels);

    /// Takes the next code. Returns false when it is invalid at this place.
    bool accepts(int code);

    /// Whether the codes so far cover all pixels. Later codes are not checked.
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
