// Object specifiers: records that say which object of an application is meant.
#pragma once

#include "platform/carbon/AEDataModel.h"

namespace kestrine {

// The fields of an object specifier.
inline constexpr AEKeyword keyAEDesiredClass = fourCharacterCode("want");
inline constexpr AEKeyword keyAEContainer = fourCharacterCode("from");
inline constexpr AEKeyword keyAEKeyForm = fourCharacterCode("form");
inline constexpr AEKeyword keyAEKeyData = fourCharacterCode("seld");

// What the key data is.
inline constexpr DescType formName = fourCharacterCode("name");
inline constexpr DescType formAbsolutePosition = fourCharacterCode("indx");
inline constexpr DescType formPropertyID = fourCharacterCode("prop");

// Classes of the Finder's objects.
inline constexpr DescType cProperty = fourCharacterCode("prop");
inline constexpr DescType cFile = fourCharacterCode("file");
inline constexpr DescType cObject = fourCharacterCode("cobj"); ///< an item of any kind, folders too

/// The object of class `desiredClass` that `keyData` names inside `container`, where a null descriptor stands
/// for the application itself. With `disposeInputs` both become null descriptors. -50 when an argument is
/// missing.
OSErr CreateObjSpecifier(DescType desiredClass, AEDesc* container, DescType keyForm, AEDesc* keyData,
                         bool disposeInputs, AEDesc* result);

} // namespace kestrine
