// The EXIF data of a file as JSON.
#pragma once

#include "_MyClasses/Class/ExifTag/ExifTagReader.h"

#include <nlohmann/json.hpp>

namespace kestrine {

/// {"path"; "reader": whether there is one; "tags": directories of values by key, or null;
/// "values": the result of each value accessor; "display": the string of each display accessor;
/// "description"}. Bytes, and a path that is not valid UTF-8, are {"bytes": "hex"}; an accessor that raises
/// gives {"raises": the exception's name}. Numbers that JSON cannot hold are "inf", "-inf" and "nan". Without
/// a reader the values are null and the display strings "N/A".
nlohmann::ordered_json exifJSON(const NSString& path, ExifTagReader* reader);

} // namespace kestrine
