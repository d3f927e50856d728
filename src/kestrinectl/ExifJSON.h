// What the EXIF reader makes of a file, as JSON.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <nlohmann/json.hpp>

namespace kestrine {

/// {"path", "reader": whether the name gets a reader, "tags": null or directories of values by key, "values":
/// what each value accessor answers, "display": the text of each display accessor, "description"}. Bytes are
/// {"bytes": "hex"}, as is a path that is no UTF-8; what raises is {"raises": the exception's name}. Numbers
/// that JSON cannot hold are "inf", "-inf" and "nan". Without a reader the values are null and the texts
/// "N/A".
nlohmann::ordered_json exifJSON(const NSString& path);

} // namespace kestrine
