#include "platform/imageio/jpeg/LibraryRows.h"

namespace kestrine::jpeg {

namespace {

class LibraryRows final : public RowSource {
public:
    LibraryRows(std::unique_ptr<LibraryReader> reader, const RowFormat& format,
                std::shared_ptr<DamageRecord> damage, std::unique_ptr<ForeignConverter> converter)
        : RowSource(format), reader_(std::move(reader)), damage_(std::move(damage)),
          converter_(std::move(converter)), inks_(converter_ == nullptr ? 0 : std::size_t{4} * format.width) {
        noteDamage();
    }

    Result<void> readRow(std::span<std::uint8_t> row) override {
        JSAMPROW target = converter_ == nullptr ? row.data() : inks_.data();
        LibraryReader& d = *reader_;
        if (!succeedsInLibrary(d.errors, [&d, &target] { jpeg_read_scanlines(&d.info, &target, 1); }))
            return d.errors.failure();
        if (d.errors.damage[0] != '\0')
            noteDamage();
        if (converter_ != nullptr)
            converter_->convert(inks_.data(), row.data(), format().width);
        return {};
    }

private:
    void noteDamage() {
        if (std::optional<Failure> damage = reader_->damage())
            damage_->note(std::move(*damage));
    }

    const std::unique_ptr<LibraryReader> reader_;
    const std::shared_ptr<DamageRecord> damage_;
    const std::unique_ptr<ForeignConverter> converter_;
    Bytes inks_;
};

} // namespace

Result<RowSourcePointer> openLibraryRows(std::unique_ptr<LibraryReader> file, const RowFormat& fullFormat,
                                         int eighths, std::shared_ptr<DamageRecord> damage,
                                         std::unique_ptr<ForeignConverter> inks) {
    jpeg_decompress_struct& info = file->info;
    info.scale_num = static_cast<unsigned>(eighths);
    info.scale_denom = 8;
    info.out_color_space = inks != nullptr                        ? JCS_CMYK
                           : fullFormat.model == ColorModel::gray ? JCS_GRAYSCALE
                                                                  : JCS_RGB;
    if (!succeedsInLibrary(file->errors, [&info] { jpeg_start_decompress(&info); }))
        return file->errors.failure();
    RowFormat format = fullFormat;
    format.width = info.output_width;
    format.height = info.output_height;
    return RowSourcePointer(
        std::make_unique<LibraryRows>(std::move(file), format, std::move(damage), std::move(inks)));
}

Result<RowSourcePointer> openLibraryRows(std::shared_ptr<const ByteReader> reader,
                                         const RowFormat& fullFormat, int eighths,
                                         std::shared_ptr<DamageRecord> damage,
                                         std::unique_ptr<ForeignConverter> inks) {
    auto file = std::make_unique<LibraryReader>(std::move(reader));
    TRY(file->readHeader());
    return openLibraryRows(std::move(file), fullFormat, eighths, std::move(damage), std::move(inks));
}

} // namespace kestrine::jpeg
