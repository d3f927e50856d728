// ResizeSet: one named preset, and how it names and converts one picture.
#pragma once

#include "platform/appkit/NSImage.h"
#include "platform/appkit/NSOpenPanel.h"
#include "platform/foundation/KeyValueObserving.h"
#include "platform/foundation/archiving/ArchivedFields.h"

#include <span>
#include <vector>

namespace kestrine {

/// How a set sizes a picture; any other value means: not at all.
enum ResizeType : std::int32_t {
    ResizeTypeSize = 0,    ///< to width x height; a zero leaves that side to the aspect
    ResizeTypeRatio = 1,   ///< both sides by ratio percent
    ResizeTypeMaxSize = 2, ///< the longer side to maxSize
};

/// What a set writes; any other value means: nothing.
enum FormatType : std::int32_t {
    FormatTypeJPEG = 0,
    FormatTypePNG = 1,
    FormatTypeTIFF = 2,
    FormatTypeGIF = 3,
};

/// Copies share nothing but text; observers stay with the original. Booleans are signed bytes that keep the
/// value they were stored with; any non-zero is yes.
class ResizeSet final : public NSObject {
public:
    /// The class version written into archives.
    static constexpr std::int32_t version = 4;

    /// `init`: the defaults, named "Untitled".
    ResizeSet();
    ResizeSet(const ResizeSet& other);
    ResizeSet& operator=(const ResizeSet&) = delete;

    const OptionalString& name() const { return name_; }
    std::int8_t replaceFile() const { return replaceFile_; }
    std::int8_t chooseFolder() const { return chooseFolder_; }
    std::int32_t resizeType() const { return resizeType_; }
    float height() const { return height_; }
    float width() const { return width_; }
    float ratio() const { return ratio_; }
    float maxSize() const { return maxSize_; }
    std::int32_t formatType() const { return formatType_; }
    float compression() const { return compression_; }
    std::int8_t attachExifData() const { return attachExifData_; }
    std::int8_t convertResolution() const { return convertResolution_; }
    std::int8_t autoRotate() const { return autoRotate_; }
    std::int8_t highQuality() const { return highQuality_; }
    const OptionalString& chosenFolderPath() const { return chosenFolderPath_; }

    /// `setReplaceFile:`: exactly YES (1) also turns chooseFolder off, seen by its observers.
    void setReplaceFile(std::int8_t value);

    /// Key-value coding by field name: texts are NSString (or nil), all others NSNumber. Raises
    /// NSUnknownKeyException for another key and NSInvalidArgumentException for a value that does not fit.
    Object valueForKey(const NSString& key) const;
    void setValueForKey(const Object& value, const NSString& key);
    KeyValueObservers& observers() { return observers_; }

    /// `encodeWithCoder:` and `initWithCoder:`: archivedFields(). What an older archive lacks keeps
    /// its default: no turning, no chosen folder, high quality.
    void encodeWithCoder(NSArchiver& coder) const;
    static std::shared_ptr<const ResizeSet> initWithCoder(NSUnarchiver& coder);

    /// `chooseFolder:`: asks for a folder and stores it under chosenFolderPath unless the person cancels.
    void chooseFolder(const Object& sender);
    /// `didEndOpenSheet:returnCode:contextInfo:`: the same ending for a panel run as a sheet.
    void didEndOpenSheet(const NSOpenPanel& panel, int returnCode, const void* contextInfo);

    // Applying the set to one picture (ResizeSetConversion.cpp). None changes the set or any file.

    /// `fileNameForPath:`: the output's name: the source's stem with the format's extension, in upper case
    /// when the source's extension is.
    NSString fileNameForPath(const NSString& path) const;

    /// `resizeFolderForPath:rootPath:`: where the output goes, for a source in `folder`. With a root path the
    /// source's place below it is kept below the result. Nothing for no folder.
    OptionalString resizeFolderForPath(const OptionalString& folder,
                                       const OptionalString& rootPath = {}) const;

    /// `resizedImageDataWithFile:image:`: the output file's bytes; nil when the picture cannot be made.
    /// `image` is a picture of `path`, its resolution converted already where the set asks for it; null to
    /// load it here.
    std::shared_ptr<const NSData> resizedImageDataWithFile(const NSString& path,
                                                           std::shared_ptr<NSImage> image) const;

    using Field = ArchivedField<ResizeSet>;
    /// All fields: the archived ones in archive order, then `chosenFolderPath`, which never is.
    static std::span<const Field> fields();
    static std::span<const Field> archivedFields() { return fields().first(14); }

private:
    static const Field& fieldNamed(const NSString& key);

    OptionalString name_;
    std::int8_t replaceFile_ = 0;
    std::int8_t chooseFolder_ = 0;
    std::int32_t resizeType_ = ResizeTypeSize;
    float height_ = 1200;
    float width_ = 1200;
    float ratio_ = 100;
    float maxSize_ = 1200;
    std::int32_t formatType_ = FormatTypePNG;
    float compression_ = 70;
    std::int8_t attachExifData_ = 0;
    std::int8_t convertResolution_ = 1;
    std::int8_t autoRotate_ = 0;
    std::int8_t highQuality_ = 1;
    OptionalString chosenFolderPath_;
    KeyValueObservers observers_;
};

using ResizeSets = std::vector<std::shared_ptr<const ResizeSet>>;

/// The table with which archives of sets are read and written.
ArchivedClasses archivedSetClasses();

} // namespace kestrine
