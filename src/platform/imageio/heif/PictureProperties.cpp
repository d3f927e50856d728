#include "platform/imageio/heif/PictureProperties.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kestrine::heif {

namespace {

/// Properties that may be marked as essential and can be ignored nevertheless.
constexpr std::array ignoredTypes = {
    fourCC("pasp"), fourCC("pixi"), fourCC("rloc"), fourCC("a1lx"), fourCC("mdcv"), fourCC("cclv"),
    fourCC("amve"), fourCC("udes"), fourCC("altt"), fourCC("iscl"), fourCC("ndwt"),
};

bool isAuxiliaryType(const Box& box) { return box.type == fourCC("auxC") || box.type == fourCC("auxi"); }

/// Whether the box, which says what an auxiliary picture is, says that it is an alpha plane.
bool namesAlpha(const Box& box) {
    using namespace std::string_view_literals;
    constexpr std::array names = {"urn:mpeg:mpegB:cicp:systems:auxiliary:alpha"sv,
                                  "urn:mpeg:hevc:2015:auxid:1"sv, "urn:mpeg:avc:2015:auxid:1"sv};
    Cursor cursor(box.content);
    (void)readFullBoxHeader(cursor);
    const std::string_view text(reinterpret_cast<const char*>(cursor.rest().data()), cursor.rest().size());
    return std::ranges::find(names, text.substr(0, text.find('\0'))) != names.end();
}

class Reader {
public:
    Result<PictureProperties> read(const std::vector<ItemProperty>& properties) {
        for (const ItemProperty& property : properties) {
            const bool isKnown = TRY(add(property.box));
            if (!isKnown && property.isEssential
                && std::ranges::find(ignoredTypes, property.box.type) == ignoredTypes.end())
                return Failure{Reason::unsupported, "HEIF and AVIF pictures with the property \""
                                                        + nameOf(property.box.type) + "\" are not supported"};
        }
        return std::move(result_);
    }

private:
    /// Returns whether the property is known.
    Result<bool> add(const Box& box) {
        Cursor cursor(box.content);
        switch (box.type) {
        case fourCC("ispe"):
            readSize(cursor);
            break;
        case fourCC("clap"):
        case fourCC("irot"):
        case fourCC("imir"):
            result_.transformations.push_back(box);
            break;
        case fourCC("colr"):
            readColor(cursor);
            break;
        case fourCC("clli"):
            result_.brightestLight = cursor.u16();
            break;
        case fourCC("auxC"):
        case fourCC("auxi"):
            result_.isAlpha = namesAlpha(box);
            break;
        case fourCC("hvcC"):
            readHEVC(cursor);
            break;
        case fourCC("av1C"):
            readAV1(cursor);
            break;
        case fourCC("a1op"):
            result_.coding.operatingPoint = cursor.u8();
            break;
        case fourCC("lsel"):
            readLayer(cursor.u16());
            break;
        default:
            return false;
        }
        if (!cursor.isSound())
            return damagedFile("the property \"" + nameOf(box.type) + "\" is too short");
        return true;
    }

    void readSize(Cursor& cursor) {
        (void)readFullBoxHeader(cursor);
        const std::uint32_t width = cursor.u32();
        result_.size = Size{width, cursor.u32()};
    }

    void readColor(Cursor& cursor) {
        const FourCC kind = cursor.u32();
        if (kind == fourCC("nclx")) {
            CodingPoints points;
            points.primaries = cursor.u16();
            points.transfer = cursor.u16();
            points.matrix = cursor.u16();
            points.isFullRange = (cursor.u8() & 0x80) != 0;
            result_.points = points;
        } else if (kind == fourCC("prof") || kind == fourCC("rICC")) {
            result_.icc = cursor.rest();
        }
    }

    void readHEVC(Cursor& cursor) {
        result_.coding.configuration = cursor.rest();
        cursor.skip(16);
        CodingSetup& coding = result_.coding;
        coding.isMonochrome = (cursor.u8() & 3) == 0;
        coding.bits = 8u + (cursor.u8() & 7);
        coding.kind = CodingSetup::Kind::hevc;
    }

    void readAV1(Cursor& cursor) {
        result_.coding.configuration = cursor.rest();
        cursor.skip(2);
        const std::uint8_t bits = cursor.u8();
        CodingSetup& coding = result_.coding;
        coding.bits = (bits & 0x40) == 0 ? 8 : (bits & 0x20) == 0 ? 10 : 12;
        coding.isMonochrome = (bits & 0x10) != 0;
        coding.kind = CodingSetup::Kind::av1;
    }

    void readLayer(std::uint16_t layer) {
        constexpr std::uint16_t allLayers = 0xFFFF;
        if (layer != allLayers)
            result_.coding.spatialLayer = layer;
    }

    PictureProperties result_;
};

} // namespace

Result<PictureProperties> readProperties(const std::vector<ItemProperty>& properties) {
    return Reader().read(properties);
}

bool isAlpha(const std::vector<ItemProperty>& properties) {
    return std::ranges::any_of(properties, [](const ItemProperty& property) {
        return isAuxiliaryType(property.box) && namesAlpha(property.box);
    });
}

} // namespace kestrine::heif
