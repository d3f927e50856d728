// PictureEngine: opens files as pictures, to be decoded in this process or elsewhere.
#pragma once

#include "platform/imageio/Picture.h"

namespace kestrine {

/// Any thread.
class PictureEngine {
public:
    virtual ~PictureEngine() = default;

    /// Reads the header of `file`. `question`, unless it is null, will be asked of the source.
    virtual Result<std::shared_ptr<Source>> open(std::shared_ptr<const ByteReader> file,
                                                 FileQuestion question) = 0;

    /// The answer to a question about a file that need not be a picture.
    virtual Result<Bytes> answer(std::shared_ptr<const ByteReader> file, FileQuestion question) = 0;

    /// The engine that opens all files of this process: until setCurrent() is called, one that decodes in
    /// this process.
    static PictureEngine& current();
    /// `engine` must outlive its use; null selects the engine that decodes in this process. Must not be
    /// called while files are being opened.
    static void setCurrent(PictureEngine* engine);
};

/// The failure of a process that crashed while it decoded, or that answered nonsense afterwards.
Failure decoderCrash();

/// Opens the file at `path` with the current engine.
Result<std::shared_ptr<Source>> openPicture(const std::string& path, FileQuestion question = nullptr);

} // namespace kestrine
