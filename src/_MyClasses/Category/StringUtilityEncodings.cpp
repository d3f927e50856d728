#include "_MyClasses/Category/StringUtility.h"
#include "platform/foundation/text/NSStringEncoding.h"
#include "platform/host/files/FileContent.h"

#include <algorithm>

namespace kestrine::StringUtility {

namespace {

constexpr std::uint8_t escapeByte = 27;

/// Not an encoding of the platform: nothing can be decoded with it.
constexpr NSStringEncoding unknownEncoding = 2565;

// Every byte is valid in Mac OS Roman; the encodings after it are only used when the system does not support
// it.
constexpr NSStringEncoding triedEncodings[] = {
    NSUTF8StringEncoding,          NSNonLossyASCIIStringEncoding, NSShiftJISStringEncoding,
    NSJapaneseEUCStringEncoding,   NSMacOSRomanStringEncoding,    NSWindowsCP1251StringEncoding,
    NSWindowsCP1252StringEncoding, NSWindowsCP1253StringEncoding, NSWindowsCP1254StringEncoding,
    NSWindowsCP1250StringEncoding, NSISOLatin1StringEncoding,     unknownEncoding,
    NSUnicodeStringEncoding,
};

OptionalString detectedText(const Bytes& bytes) {
    if (std::find(bytes.begin(), bytes.end(), escapeByte) != bytes.end())
        if (OptionalString text = decodedText(bytes, NSISO2022JPStringEncoding))
            return text;
    for (const NSStringEncoding encoding : triedEncodings)
        if (OptionalString text = decodedText(bytes, encoding))
            return text;
    return std::nullopt;
}

OptionalString decodedFile(const NSString& path, NSStringEncoding encoding) {
    const Result<Bytes> content = readSmallFile(path.utf8(), maxTextFileSize);
    return content ? decodedText(*content, encoding) : std::nullopt;
}

} // namespace

OptionalString stringWithContentsOfDataByAutoDetectingEncoding(const NSData& data) {
    return detectedText(data.bytes());
}

OptionalString stringWithContentsOfFileByAutoDetectingEncoding(const NSString& path) {
    const Result<Bytes> content = readSmallFile(path.utf8(), maxTextFileSize);
    return content ? detectedText(*content) : std::nullopt;
}

OptionalString stringFromUTF8DataFilePath(const NSString& path) {
    return decodedFile(path, NSUTF8StringEncoding);
}

OptionalString stringFromUTF16DataFilePath(const NSString& path) {
    return decodedFile(path, NSUnicodeStringEncoding);
}

} // namespace kestrine::StringUtility
