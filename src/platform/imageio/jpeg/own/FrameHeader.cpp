#include "platform/imageio/jpeg/own/FrameHeader.h"

#include "platform/imageio/ForwardReader.h"

#include <algorithm>
#include <string_view>

namespace kestrine::jpeg {

namespace {

enum Marker : int {
    baselineFrame = 0xC0,
    extendedFrame = 0xC1,
    huffmanCodes = 0xC4,
    startOfImage = 0xD8,
    startOfScan = 0xDA,
    quantisationTables = 0xDB,
    restartIntervals = 0xDD,
    application0 = 0xE0,
    application14 = 0xEE,
    application15 = 0xEF,
    comment = 0xFE,
};

bool isSkipped(int marker) {
    return (marker >= application0 && marker <= application15) || marker == comment;
}

Failure refused(const char* why) { return {Reason::refused, std::string("own JPEG decoder: ") + why}; }

bool isSamplingFactor(int factor) { return factor == 1 || factor == 2 || factor == 4; }

/// The content of one marker segment, read from its start. Reading past the end gives -1.
class Segment {
public:
    explicit Segment(Bytes content) : content_(std::move(content)) {}

    std::size_t size() const { return content_.size(); }
    bool isAtEnd() const { return position_ == content_.size(); }
    int byte() { return isAtEnd() ? -1 : content_[position_++]; }
    int word() {
        const int high = byte(), low = byte();
        return low < 0 ? -1 : high << 8 | low;
    }
    bool startsWith(std::string_view text) const {
        return content_.size() >= text.size() && std::equal(text.begin(), text.end(), content_.begin());
    }
    int at(std::size_t index) const { return content_[index]; }

private:
    const Bytes content_;
    std::size_t position_ = 0;
};

/// Each read...() function reads one segment and returns whether its content is supported.
class HeaderReader {
public:
    explicit HeaderReader(std::shared_ptr<const ByteReader> reader) : reader_(std::move(reader)) {}

    Result<FrameHeader> read();

private:
    int nextMarker();
    std::optional<Segment> segment(bool isWanted);
    bool readSegment(int marker, Segment& segment);
    bool readQuantisation(Segment& segment);
    bool readCodes(Segment& segment);
    bool readFrame(Segment& segment);
    bool readComponent(Segment& segment, Component& component);
    bool readRestartInterval(Segment& segment);
    void readApplication(int marker, const Segment& segment);
    bool readScan(Segment& segment);
    bool isGreyOrYCbCr() const;

    ForwardReader reader_;
    FrameHeader header_;
    bool sawJFIF_ = false;
    std::optional<int> adobeTransform_;
};

Result<FrameHeader> HeaderReader::read() {
    if (reader_.next() != 0xFF || reader_.next() != startOfImage)
        return refused("the file does not start with an SOI marker");
    for (;;) {
        const int marker = nextMarker();
        const bool isKept = !isSkipped(marker) || marker == application0 || marker == application14;
        std::optional<Segment> content = marker < baselineFrame ? std::nullopt : segment(isKept);
        if (!content || !readSegment(marker, *content))
            return refused("the header is unusual");
        if (marker == startOfScan)
            break;
    }
    if (!isGreyOrYCbCr())
        return refused("the components are neither grey nor YCbCr");
    header_.scanOffset = reader_.offset();
    return std::move(header_);
}

/// Reads the next marker, which any number of FF bytes may precede, and returns its code; -1 if there is
/// none.
int HeaderReader::nextMarker() {
    if (reader_.next() != 0xFF)
        return -1;
    int code = 0xFF;
    while (code == 0xFF)
        code = reader_.next();
    return code;
}

/// Reads the segment that begins here; skips its content and returns it empty unless it `isWanted`. None when
/// the file ends.
std::optional<Segment> HeaderReader::segment(bool isWanted) {
    const int high = reader_.next(), low = reader_.next();
    const int length = (high << 8 | low) - 2;
    if (low < 0 || length < 0)
        return std::nullopt;
    if (!isWanted) {
        reader_.moveTo(reader_.offset() + static_cast<unsigned>(length));
        return Segment({});
    }
    Bytes content(static_cast<std::size_t>(length));
    if (reader_.read(content) != content.size())
        return std::nullopt;
    return Segment(std::move(content));
}

bool HeaderReader::readSegment(int marker, Segment& content) {
    switch (marker) {
    case quantisationTables:
        return readQuantisation(content);
    case huffmanCodes:
        return readCodes(content);
    case baselineFrame:
    case extendedFrame:
        return readFrame(content);
    case restartIntervals:
        return readRestartInterval(content);
    case startOfScan:
        return readScan(content);
    default:
        if (!isSkipped(marker))
            return false;
        readApplication(marker, content);
        return true;
    }
}

bool HeaderReader::readQuantisation(Segment& segment) {
    while (!segment.isAtEnd()) {
        const int kind = segment.byte(), precision = kind >> 4, number = kind & 15;
        if (precision > 1 || number >= static_cast<int>(FrameHeader::tables))
            return false;
        QuantisationTable& table = header_.quantisation[static_cast<std::size_t>(number)].emplace();
        for (const std::uint8_t position : naturalOrder) {
            const int value = precision == 0 ? segment.byte() : segment.word();
            if (value <= 0)
                return false;
            table[position] = static_cast<std::uint16_t>(value);
        }
    }
    return true;
}

bool HeaderReader::readCodes(Segment& segment) {
    while (!segment.isAtEnd()) {
        const int kind = segment.byte(), number = kind & 15;
        if (kind > 0x1F || number >= static_cast<int>(FrameHeader::tables))
            return false;
        HuffmanCode code;
        std::size_t symbols = 0;
        for (std::size_t length = 1; length <= 16; ++length) {
            const int count = segment.byte();
            if (count < 0)
                return false;
            code.counts[length] = static_cast<std::uint8_t>(count);
            symbols += static_cast<std::size_t>(count);
        }
        if (symbols > code.symbols.size())
            return false;
        for (std::size_t i = 0; i < symbols; ++i) {
            const int symbol = segment.byte();
            if (symbol < 0)
                return false;
            code.symbols[i] = static_cast<std::uint8_t>(symbol);
        }
        auto& codes = kind < 0x10 ? header_.dcCodes : header_.acCodes;
        codes[static_cast<std::size_t>(number)] = code;
    }
    return true;
}

bool HeaderReader::readFrame(Segment& segment) {
    const int precision = segment.byte(), height = segment.word(), width = segment.word(),
              count = segment.byte();
    if (header_.componentCount != 0 || precision != 8 || width <= 0 || height <= 0
        || (count != 1 && count != 3))
        return false;
    header_.width = static_cast<std::uint32_t>(width);
    header_.height = static_cast<std::uint32_t>(height);
    header_.componentCount = static_cast<std::size_t>(count);
    for (std::size_t i = 0; i < header_.componentCount; ++i) {
        if (!readComponent(segment, header_.components[i]))
            return false;
    }
    // The scan of a single component is not interleaved: its MCU is one block, whatever its factors are.
    if (header_.componentCount == 1)
        header_.components[0].horizontal = header_.components[0].vertical = 1;
    return segment.isAtEnd() && header_.blocksPerMCU() <= FrameHeader::maximumBlocks;
}

bool HeaderReader::readComponent(Segment& segment, Component& component) {
    const int identifier = segment.byte(), factors = segment.byte(), table = segment.byte();
    if (table < 0 || table >= static_cast<int>(FrameHeader::tables) || !isSamplingFactor(factors >> 4)
        || !isSamplingFactor(factors & 15))
        return false;
    component.identifier = static_cast<std::uint8_t>(identifier);
    component.horizontal = static_cast<std::uint8_t>(factors >> 4);
    component.vertical = static_cast<std::uint8_t>(factors & 15);
    component.quantisation = static_cast<std::uint8_t>(table);
    return true;
}

bool HeaderReader::readRestartInterval(Segment& segment) {
    const int interval = segment.word();
    header_.restartInterval = static_cast<std::uint32_t>(std::max(interval, 0));
    return interval >= 0 && segment.isAtEnd();
}

/// Remembers the JFIF and Adobe segments, which define the meaning of the components.
void HeaderReader::readApplication(int marker, const Segment& segment) {
    constexpr std::size_t shortestJFIF = 14, shortestAdobe = 12, transformOfAdobe = 11;
    if (marker == application0 && segment.size() >= shortestJFIF
        && segment.startsWith(std::string_view("JFIF\0", 5)))
        sawJFIF_ = true;
    if (marker == application14 && segment.size() >= shortestAdobe && segment.startsWith("Adobe"))
        adobeTransform_ = segment.at(transformOfAdobe);
}

/// Accepts only a scan with all components in the order of the frame and with all coefficients.
bool HeaderReader::readScan(Segment& segment) {
    if (header_.componentCount == 0 || segment.byte() != static_cast<int>(header_.componentCount))
        return false;
    for (std::size_t i = 0; i < header_.componentCount; ++i) {
        Component& component = header_.components[i];
        const int identifier = segment.byte(), codes = segment.byte();
        const auto dcCode = static_cast<std::size_t>(codes >> 4),
                   acCode = static_cast<std::size_t>(codes & 15);
        if (codes < 0 || identifier != component.identifier || dcCode >= FrameHeader::tables
            || acCode >= FrameHeader::tables || !header_.dcCodes[dcCode] || !header_.acCodes[acCode]
            || !header_.quantisation[component.quantisation])
            return false;
        component.dcCode = static_cast<std::uint8_t>(dcCode);
        component.acCode = static_cast<std::uint8_t>(acCode);
    }
    const int first = segment.byte(), last = segment.byte(), approximation = segment.byte();
    return first == 0 && last == 63 && approximation == 0 && segment.isAtEnd();
}

/// Three components are Y, Cb and Cr, with two exceptions: the Adobe segment names another transform, or
/// there is neither an Adobe nor a JFIF segment and the identifiers are R, G and B.
bool HeaderReader::isGreyOrYCbCr() const {
    constexpr int transformToYCbCr = 1;
    const auto& [a, b, c] = header_.components;
    if (header_.componentCount == 1)
        return true;
    if (a.identifier == b.identifier || b.identifier == c.identifier || a.identifier == c.identifier)
        return false;
    if (adobeTransform_)
        return *adobeTransform_ == transformToYCbCr;
    return sawJFIF_ || !(a.identifier == 'R' && b.identifier == 'G' && c.identifier == 'B');
}

} // namespace

int FrameHeader::horizontalFactor() const {
    int largest = 1;
    for (const Component& component : usedComponents())
        largest = std::max<int>(largest, component.horizontal);
    return largest;
}

int FrameHeader::verticalFactor() const {
    int largest = 1;
    for (const Component& component : usedComponents())
        largest = std::max<int>(largest, component.vertical);
    return largest;
}

int FrameHeader::blocksPerMCU() const {
    int blocks = 0;
    for (const Component& component : usedComponents())
        blocks += component.blocks();
    return blocks;
}

Result<FrameHeader> readFrameHeader(std::shared_ptr<const ByteReader> reader) {
    return HeaderReader(std::move(reader)).read();
}

} // namespace kestrine::jpeg
