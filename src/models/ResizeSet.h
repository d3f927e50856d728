// ResizeSet: a preset with a name. It names and converts one picture.
#pragma once

#include "_MyClasses/Category/PictureFile.h"
#include "models/ConversionRecipe.h"
#include "platform/appkit/NSImage.h"
#include "platform/appkit/NSOpenPanel.h"
#include "platform/foundation/KeyValueObserving.h"
#include "platform/foundation/archiving/ArchivedFields.h"
#include "platform/imageio/OutputFormats.h"

#include <span>
#include <vector>

namespace kestrine {

/// How a set scales a picture; any other value means no scaling.
enum ResizeType : std::int32_t {
    ResizeTypeSize = 0,    ///< to width x height; a side of 0 follows from the other one
    ResizeTypeRatio = 1,   ///< both sides by ratio percent
    ResizeTypeMaxSize = 2, ///< the longer side to maxSize
};

/// The format of the output, by its number in the table of output formats; any other value means that nothing
/// is written.
enum FormatType : std::int32_t {
    FormatTypeJPEG = static_cast<std::int32_t>(FileType::jpeg),
    FormatTypePNG = static_cast<std::int32_t>(FileType::png),
    FormatTypeTIFF = static_cast<std::int32_t>(FileType::tiff),
    FormatTypeGIF = static_cast<std::int32_t>(FileType::gif),
};

/// Copies share only immutable strings; observers stay with the original. Booleans are signed bytes that keep
/// the value they were stored with; any non-zero value means yes.
class ResizeSet final : public NSObject {
public:
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

    /// `setReplaceFile:`: exactly YES (1) also turns chooseFolder off. The observers of chooseFolder are
    /// called first, so that those of replaceFile never see both on.
    void setReplaceFile(std::int8_t value);

    /// Key-value coding by field name: strings are NSString (or nil), all others NSNumber. Raises
    /// NSUnknownKeyException for another key and NSInvalidArgumentException for a value that does not fit;
    /// the field then keeps its value.
    Object valueForKey(const NSString& key) const;
    void setValueForKey(const Object& value, const NSString& key);
    KeyValueObservers& observers() { return observers_; }

    /// `encodeWithCoder:` and `initWithCoder:`: the archived ones of fields(). Fields that an older archive
    /// lacks keep their defaults: no turning, no chosen folder, high quality.
    void encodeWithCoder(NSArchiver& coder) const;
    static std::shared_ptr<const ResizeSet> initWithCoder(NSUnarchiver& coder);

    /// `chooseFolder:`: asks for a folder and stores its path as chosenFolderPath unless the user cancels.
    /// Blocks until the dialogue is closed.
    void chooseFolder(const Object& sender);
    /// `didEndOpenSheet:returnCode:contextInfo:`: the same for a panel that was run as a sheet.
    void didEndOpenSheet(const NSOpenPanel& panel, int returnCode, const void* contextInfo);

    // Applying the set to one picture (ResizeSetConversion.cpp). These functions change neither the set nor
    // files.

    /// What the set makes of a picture; the functions below apply it.
    ConversionRecipe recipe() const;

    /// `fileNameForPath:`: the output's name: the source's stem with the format's extension, in upper case
    /// when the source's extension is.
    NSString fileNameForPath(const NSString& path) const;

    /// `resizeFolderForPath:rootPath:`: where the output goes, for a source in `folder`. With a root path the
    /// source's place below it is kept below the result. Absent when there is no folder.
    OptionalString resizeFolderForPath(const OptionalString& folder,
                                       const OptionalString& rootPath = {}) const;

    /// `resizedImageDataWithFile:image:`: the output file's bytes; nil when the picture cannot be made.
    /// `image` is the loaded picture of `file`, its resolution already converted if the set requires it;
    /// null to load it here.
    std::shared_ptr<const NSData> resizedImageDataWithFile(const PictureFile& file,
                                                           std::shared_ptr<NSImage> image) const;

    using Field = ArchivedField<ResizeSet>;
    /// The table of all fields: the archived ones in archive order, each with the class version that first
    /// stored it, and `chosenFolderPath`, which is never archived. The largest version is the one written.
    static std::span<const Field> fields();

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

/// The recipes in the order of the sets, of which none is null.
ConversionRecipes recipesOf(const ResizeSets& sets);

/// The table with which archives of sets are read and written.
ArchivedClasses archivedSetClasses();

} // namespace kestrine
