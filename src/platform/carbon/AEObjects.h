// Object specifiers: records that identify an object of an application.
#pragma once

#include "platform/carbon/AEDataModel.h"

namespace kestrine {

// The fields of an object specifier.
inline constexpr AEKeyword keyAEDesiredClass = fourCharacterCode("want");
inline constexpr AEKeyword keyAEContainer = fourCharacterCode("from");
inline constexpr AEKeyword keyAEKeyForm = fourCharacterCode("form");
inline constexpr AEKeyword keyAEKeyData = fourCharacterCode("seld");

// The kinds of key data.
inline constexpr DescType formName = fourCharacterCode("name");
inline constexpr DescType formAbsolutePosition = fourCharacterCode("indx");
inline constexpr DescType formPropertyID = fourCharacterCode("prop");

// Classes of the Finder's objects.
inline constexpr DescType cProperty = fourCharacterCode("prop");
inline constexpr DescType cFile = fourCharacterCode("file");
inline constexpr DescType cObject = fourCharacterCode("cobj"); ///< an item of any kind, folders too

/// Makes a specifier for the object of class `desiredClass` that `keyData` identifies in `container`; a null
/// descriptor as container is the application. With `disposeInputs`, both become null descriptors. -50 for a
/// null pointer.
OSErr CreateObjSpecifier(DescType desiredClass, AEDesc* container, DescType keyForm, AEDesc* keyData,
                         bool disposeInputs, AEDesc* result);

} // namespace kestrine
