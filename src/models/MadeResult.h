// MadeResult: what a job made of its file, before it has a name.
#pragma once

#include "platform/foundation/NSData.h"
#include "platform/host/files/NewContent.h"
#include "platform/imageio/PictureEngine.h"

#include <memory>
#include <optional>

namespace kestrine {

/// The bytes of a result: in memory, or in a file that only needs a name. Move-only.
struct MadeResult {
    std::shared_ptr<const NSData> data; ///< nil for a file
    std::optional<NewContent> content;  ///< nullopt if there is no result
    ContentDigest digest;               ///< of the content, if the job has a recorder

    static MadeResult of(std::shared_ptr<const NSData> data) {
        return {data, data == nullptr ? std::nullopt : std::optional<NewContent>(data->bytes()), {}};
    }
    /// Fails for an empty file: the process that should have written it wrongly reported success.
    static Result<MadeResult> of(NamelessFile file) {
        NewContent content = TRY(NewContent::of(std::move(file)));
        if (content.size() == 0)
            return decoderCrash();
        return MadeResult{nullptr, std::move(content), {}};
    }
};

} // namespace kestrine
