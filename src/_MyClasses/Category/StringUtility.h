// The extension group `StringUtility` on NSString: cutting and mending text, search words, kinds of text,
// escaping and encodings. The receiver comes first. Everything here is a pure function of its arguments, but
// for the texts of the table "StringUtility" and for the files that are read.
#pragma once

#include "platform/foundation/text/NSAttributedString.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSNumber.h"
#include "platform/foundation/text/NSPredicate.h"
#include "platform/foundation/text/NSString.h"

namespace kestrine::StringUtility {

// Removing and replacing: literal and case-sensitive.

/// `removeString:`: the receiver without any occurrence of `text`; always a new text, never nil.
OptionalString removeString(const NSString& receiver, const NSString& text);

/// `removeStringFrom:to:`: takes the first span from `opening` to `closing`, both included, and removes
/// that very text wherever it occurs. The receiver itself when there is no span.
NSString removeStringFrom(const NSString& receiver, const NSString& opening, const NSString& closing);

/// `removeAllStringStartFrom:endTo:`: removeStringFrom() as long as there is a span. The receiver itself
/// when there is none at all.
NSString removeAllStringStartFrom(const NSString& receiver, const NSString& opening, const NSString& closing);

/// `replaceStringFrom:to:`: every occurrence of `text` becomes `replacement`. The receiver itself when
/// `text` is empty, else a new text; never nil.
OptionalString replaceStringFrom(const NSString& receiver, const NSString& text, const NSString& replacement);

// Spans: from an opening to a closing delimiter, both included; literal and case-sensitive. {0, 0} when
// there is none: test the length, not the location.

/// `rangeOfStringFrom:to:inRange:`. Raises NSRangeException when `range` reaches past the end.
NSRange rangeOfStringFrom(const NSString& receiver, const NSString& opening, const NSString& closing,
                          NSRange range);

/// `rangeOfStringFrom:to:`.
NSRange rangeOfStringFrom(const NSString& receiver, const NSString& opening, const NSString& closing);

// Substrings: without the delimiters and without regard to case. Nil when a delimiter is missing and also
// when the substring would be empty.

/// `substringFrom:to:inRange:`: the opening delimiter lies in `range`, the closing one may lie behind it.
/// Nil also when `range` reaches past the end.
OptionalString substringFrom(const NSString& receiver, const NSString& opening, const NSString& closing,
                             NSRange range);

/// `substringFrom:to:`: what lies between the delimiters. Nil also when `opening` is.
OptionalString substringFrom(const NSString& receiver, const OptionalString& opening,
                             const NSString& closing);

/// `substringFrom:`: what follows the first occurrence of `opening`.
OptionalString substringFrom(const NSString& receiver, const NSString& opening);

/// `substringTo:`: what precedes the first occurrence of `closing`.
OptionalString substringTo(const NSString& receiver, const NSString& closing);

// Search words. Localized texts come from the table "StringUtility" of `bundle`; a key that the table does
// not have is its own text, and an empty text replaces nothing.

/// `hasAnyKey:options:`: whether any of the keys, which are texts or numbers, occurs in the receiver by the
/// search options: 1 without regard to case, 8 at the start only, with 4 at the end instead. Empty keys are
/// passed over; an empty receiver holds none. Raises NSInvalidArgumentException for a key of another kind
/// that is looked at.
bool hasAnyKey(const NSString& receiver, const std::vector<Object>& keys, unsigned options);

/// `hasAnyKey:`: the same without regard to case.
bool hasAnyKey(const NSString& receiver, const std::vector<Object>& keys);

/// `stringHasAnyKey:`: whether any key that is not empty occurs literally.
bool stringHasAnyKey(const NSString& receiver, const std::vector<NSString>& keys);

/// `stringHasAllKeys:`: whether all of them do; empty ones always do.
bool stringHasAllKeys(const NSString& receiver, const std::vector<NSString>& keys);

/// `separateStringKeyToArray`: a search text's words; phrases in double quotes first, then what stands
/// between blanks, commas and the localized "Space Character" and "Kuten Character". Doubled separators
/// give empty words.
std::vector<NSString> separateStringKeyToArray(const NSString& receiver,
                                               NSBundle& bundle = NSBundle::mainBundle());

/// `andPredicateForAttribute:`: that the attribute contains every word of the search text that is not empty.
NSPredicate andPredicateForAttribute(const NSString& receiver, const NSString& attribute,
                                     NSBundle& bundle = NSBundle::mainBundle());

/// `separateDateKeyToArray`: the numbers of a day list, "1-3,7" giving 1, 2, 3 and 7, in its order. Ranges
/// end at 31, single numbers may be any; what is no number is 0. Also separates at the localized "Space
/// Character" and "Kuten Character"; "Minus Character" and "Tilde Character" make ranges too.
std::vector<NSNumber> separateDateKeyToArray(const NSString& receiver,
                                             NSBundle& bundle = NSBundle::mainBundle());

// Markup and line ends.

/// `removeAllHTMLTag`: without its tags, and with arrangeHTMLString() of the rest. Ends at the first "<>" or
/// "<" without ">". A text without "<" stays as it is, entities included.
NSString removeAllHTMLTag(const NSString& receiver);

/// `arrangeHTMLString`: &lt; &gt; &amp; &quot; and &nbsp; become their characters, in this order, &nbsp;
/// a plain blank.
NSString arrangeHTMLString(const NSString& receiver);

/// `replaceReturnCode`: every line end, CR LF or CR, becomes LF.
NSString replaceReturnCode(const NSString& receiver);

// Kinds of text: whether every character, a surrogate pair being one, belongs to the set; an empty text
// does.

/// `isNumberString`: of the digits 0 to 9.
bool isNumberString(const NSString& receiver);

/// `isAlphanumericString`: of the localized "alphabetCharacterSet".
bool isAlphanumericString(const NSString& receiver, NSBundle& bundle = NSBundle::mainBundle());

/// `isHiraganaKatanakaString`, spelled so on purpose: of the localized "japaneseCharacterset".
bool isHiraganaKatanakaString(const NSString& receiver, NSBundle& bundle = NSBundle::mainBundle());

/// `isHiraganaKatanakaAlphabetString`: of both.
bool isHiraganaKatanakaAlphabetString(const NSString& receiver, NSBundle& bundle = NSBundle::mainBundle());

// Escaping.

/// `escapeForStringsFile`: as it may stand in quotes in a strings table; what is escaped already stays so.
NSString escapeForStringsFile(const NSString& receiver);

/// `escapedStringWithPercent`: the UTF-8 bytes of all that may not stand in a URL as %XX, "%" included; the
/// receiver itself when "%" is all there is to escape. Bytes that were no UTF-8 are escaped as they were.
NSString escapedStringWithPercent(const NSString& receiver);

/// `stringByAppendingBackSlashForCharacter:`: a backslash before each separator that has none, unless fewer
/// than three characters stand before it.
NSString stringByAppendingBackSlashForCharacter(const NSString& receiver, const NSString& separator);

// Reading text. Nil when a file cannot be read or is larger than largestTextFile, and when the bytes do not
// decode (see decodedText).

inline constexpr std::uint64_t largestTextFile = 1ull << 30; ///< bytes

/// `stringWithContentsOfDataByAutoDetectingEncoding:`: in the first encoding that takes all the bytes. In
/// order: ISO-2022-JP if there is an escape byte, UTF-8, non-lossy ASCII, Shift JIS, EUC-JP, Mac OS Roman,
/// Windows 1251 to 1254 and 1250, Latin 1, the number 2565, which takes nothing, and UTF-16.
OptionalString stringWithContentsOfDataByAutoDetectingEncoding(const NSData& data);

/// `stringWithContentsOfFileByAutoDetectingEncoding:`: the same of a file.
OptionalString stringWithContentsOfFileByAutoDetectingEncoding(const NSString& path);

/// `stringFromUTF8DataFilePath:`: as UTF-8 only.
OptionalString stringFromUTF8DataFilePath(const NSString& path);

/// `stringFromUTF16DataFilePath:`: as UTF-16 only.
OptionalString stringFromUTF16DataFilePath(const NSString& path);

// Showing text.

/// `stringWithByteSize:`: a number of bytes for people, as "20KB"; below 10 units with one digit behind the
/// point.
NSString stringWithByteSize(const NSNumber& byteCount);

/// `naturalCompare:`: -1, 0 or 1 by naturalOrder().
int naturalCompare(const NSString& receiver, const NSString& other);

/// `lineBreakedString:`: the whole text with a paragraph style of that NSLineBreakMode.
NSAttributedString lineBreakedString(const NSString& receiver, int lineBreakMode);

/// `dividePointUpToLength:`: where to cut a text that may have `maximum` code units: behind the last line
/// feed, else full stop, else localized "Touten Character" among the 200 before the maximum, else there.
/// The text's length when it is not longer.
std::size_t dividePointUpToLength(const NSString& receiver, std::size_t maximum,
                                  NSBundle& bundle = NSBundle::mainBundle());

} // namespace kestrine::StringUtility
