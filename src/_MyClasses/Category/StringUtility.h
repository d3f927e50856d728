// The extension group `StringUtility` on NSString: substrings, search words, classification, escaping,
// encodings. The receiver is the first argument. All functions are pure, except that they read the strings
// table "StringUtility" and the files that are named.
#pragma once

#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSNumber.h"
#include "platform/foundation/text/NSAttributedString.h"
#include "platform/foundation/text/NSPredicate.h"
#include "platform/foundation/text/NSString.h"

namespace kestrine::StringUtility {

// Removing and replacing, literal and case-sensitive.

/// `removeString:`: the receiver without all occurrences of `text`, as a new string; never nil.
OptionalString removeString(const NSString& receiver, const NSString& text);

/// `removeStringFrom:to:`: takes the first span from `opening` to `closing`, both included, and removes all
/// occurrences of its text. The receiver itself when there is no span.
NSString removeStringFrom(const NSString& receiver, const NSString& opening, const NSString& closing);

/// `removeAllStringStartFrom:endTo:`: repeats removeStringFrom() until there is no span. The receiver itself
/// when there was none.
NSString removeAllStringStartFrom(const NSString& receiver, const NSString& opening, const NSString& closing);

/// `replaceStringFrom:to:`: replaces every occurrence of `text`. The receiver itself when `text` is empty,
/// else a new string; never nil.
OptionalString replaceStringFrom(const NSString& receiver, const NSString& text, const NSString& replacement);

// Spans: the range from an opening to a closing delimiter, both included, literal and case-sensitive. {0, 0}
// when there is none.

/// `rangeOfStringFrom:to:inRange:`. Raises NSRangeException when `range` reaches past the end.
NSRange rangeOfStringFrom(const NSString& receiver, const NSString& opening, const NSString& closing,
                          NSRange range);

/// `rangeOfStringFrom:to:`.
NSRange rangeOfStringFrom(const NSString& receiver, const NSString& opening, const NSString& closing);

// Substrings between delimiters, without the delimiters, case-insensitive. Nil when a delimiter is missing or
// the substring is empty.

/// `substringFrom:to:inRange:`: the opening delimiter must be in `range`; the closing one can be after it.
/// Nil as well when `range` reaches past the end.
OptionalString substringFrom(const NSString& receiver, const NSString& opening, const NSString& closing,
                             NSRange range);

/// `substringFrom:to:`: the text between the delimiters. Nil as well when `opening` is nil.
OptionalString substringFrom(const NSString& receiver, const OptionalString& opening,
                             const NSString& closing);

/// `substringFrom:`: the text after the first occurrence of `opening`.
OptionalString substringFrom(const NSString& receiver, const NSString& opening);

/// `substringTo:`: the text before the first occurrence of `closing`.
OptionalString substringTo(const NSString& receiver, const NSString& closing);

// Search words. Localized strings come from the table "StringUtility" of `bundle`. A key that is missing in
// the table is its own string; an empty localized string replaces nothing.

/// `hasAnyKey:options:`: whether the receiver contains any of the keys, which are strings or numbers.
/// Options: 1 is case-insensitive; 8 searches only at the start; 8 with 4 searches only at the end. Empty
/// keys never match, nor does an empty receiver. Raises NSInvalidArgumentException for a key of another kind,
/// unless an earlier key matches.
bool hasAnyKey(const NSString& receiver, const std::vector<Object>& keys, unsigned options);

/// `hasAnyKey:`: the same, case-insensitive.
bool hasAnyKey(const NSString& receiver, const std::vector<Object>& keys);

/// `stringHasAnyKey:`: whether the receiver contains any key literally; empty keys are ignored.
bool stringHasAnyKey(const NSString& receiver, const std::vector<NSString>& keys);

/// `stringHasAllKeys:`: whether the receiver contains all keys literally; empty keys are ignored.
bool stringHasAllKeys(const NSString& receiver, const std::vector<NSString>& keys);

/// `separateStringKeyToArray`: the words of a search string. Phrases in double quotes come first, then the
/// words between blanks, commas and the localized "Space Character" and "Kuten Character". Two adjacent
/// separators give an empty word.
std::vector<NSString> separateStringKeyToArray(const NSString& receiver,
                                               NSBundle& bundle = NSBundle::mainBundle());

/// `andPredicateForAttribute:`: true when the attribute contains every non-empty word of the search string.
NSPredicate andPredicateForAttribute(const NSString& receiver, const NSString& attribute,
                                     NSBundle& bundle = NSBundle::mainBundle());

/// `separateDateKeyToArray`: the numbers of a list of days, in order; "1-3,7" gives 1, 2, 3 and 7. Ranges end
/// at 31 at the latest; single numbers are not limited; text that is not a number gives 0. The localized
/// "Space Character" and "Kuten Character" separate as well; "Minus Character" and "Tilde Character" stand
/// for "-".
std::vector<NSNumber> separateDateKeyToArray(const NSString& receiver,
                                             NSBundle& bundle = NSBundle::mainBundle());

// Markup and line endings.

/// `removeAllHTMLTag`: removes the tags, then applies arrangeHTMLString(). Stops at the first "<>" and at a
/// "<" without ">". A string without "<" is unchanged, including its entities.
NSString removeAllHTMLTag(const NSString& receiver);

/// `arrangeHTMLString`: replaces &lt; &gt; &amp; &quot; and &nbsp; in this order; &nbsp; becomes a plain
/// blank.
NSString arrangeHTMLString(const NSString& receiver);

/// `replaceReturnCode`: replaces every CR LF and CR by LF.
NSString replaceReturnCode(const NSString& receiver);

// Classification: whether every code point belongs to the set; true for an empty string.

/// `isNumberString`: the digits 0 to 9.
bool isNumberString(const NSString& receiver);

/// `isAlphanumericString`: the localized "alphabetCharacterSet".
bool isAlphanumericString(const NSString& receiver, NSBundle& bundle = NSBundle::mainBundle());

/// `isHiraganaKatanakaString` (this spelling is deliberate): the localized "japaneseCharacterset".
bool isHiraganaKatanakaString(const NSString& receiver, NSBundle& bundle = NSBundle::mainBundle());

/// `isHiraganaKatanakaAlphabetString`: both sets together.
bool isHiraganaKatanakaAlphabetString(const NSString& receiver, NSBundle& bundle = NSBundle::mainBundle());

// Escaping.

/// `escapeForStringsFile`: escapes the receiver for a quoted string of a strings table. Escaped quotes are
/// not escaped again.
NSString escapeForStringsFile(const NSString& receiver);

/// `escapedStringWithPercent`: escapes the UTF-8 bytes of characters that a URL cannot contain, and "%", as
/// %XX. The receiver itself when it needs no escape, or only for "%". Bytes that are not valid UTF-8 are
/// escaped unchanged.
NSString escapedStringWithPercent(const NSString& receiver);

/// `stringByAppendingBackSlashForCharacter:`: puts a backslash before each separator that has none, unless
/// the result so far has fewer than three code units.
NSString stringByAppendingBackSlashForCharacter(const NSString& receiver, const NSString& separator);

// Reading strings. Nil when a file cannot be read or is larger than maxTextFileSize, and when the bytes
// cannot be decoded (see decodedText).

inline constexpr std::uint64_t maxTextFileSize = 1ull << 30; ///< bytes

/// `stringWithContentsOfDataByAutoDetectingEncoding:`: decodes in the first encoding in which all bytes are
/// valid: ISO-2022-JP if there is an escape byte, UTF-8, non-lossy ASCII, Shift JIS, EUC-JP, Mac OS Roman,
/// Windows 1251 to 1254 and 1250, Latin 1, 2565 (an unknown encoding, which never matches), UTF-16.
OptionalString stringWithContentsOfDataByAutoDetectingEncoding(const NSData& data);

/// `stringWithContentsOfFileByAutoDetectingEncoding:`: the same for a file.
OptionalString stringWithContentsOfFileByAutoDetectingEncoding(const NSString& path);

/// `stringFromUTF8DataFilePath:`: decodes only UTF-8.
OptionalString stringFromUTF8DataFilePath(const NSString& path);

/// `stringFromUTF16DataFilePath:`: decodes only UTF-16.
OptionalString stringFromUTF16DataFilePath(const NSString& path);

// Display.

/// `stringWithByteSize:`: a number of bytes for people, such as "20KB"; below 10 with one decimal digit.
NSString stringWithByteSize(const NSNumber& byteCount);

/// `naturalCompare:`: -1, 0 or 1 by naturalOrder().
int naturalCompare(const NSString& receiver, const NSString& other);

/// `lineBreakedString:`: the receiver with a paragraph style of this NSLineBreakMode.
NSAttributedString lineBreakedString(const NSString& receiver, int lineBreakMode);

/// `dividePointUpToLength:`: where to cut the receiver to at most `maximum` code units: after the last line
/// feed, else the last full stop, else the last localized "Touten Character" of the 200 code units before
/// `maximum`, else at `maximum`. The receiver's length when it is not longer.
std::size_t dividePointUpToLength(const NSString& receiver, std::size_t maximum,
                                  NSBundle& bundle = NSBundle::mainBundle());

} // namespace kestrine::StringUtility
