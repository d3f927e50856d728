# kestrine_desktop: the C++ interface, for programs that were written against a desktop's frameworks. One static archive
# of all libraries below the tools, and its headers. Without a promise: names and layouts change with every version.

# What such programs include; they get these headers and everything that these include.
set(KESTRINE_DESKTOP_HEADERS
  models/ResizeSet.h
  models/ResizeUnit.h
  models/StoredPresets.h
  _MyClasses/Category/FileManagerUtility.h
  _MyClasses/Category/FileManagerUtilityMetadata.h
  _MyClasses/Category/FileManagerUtilityScripting.h
  _MyClasses/Category/ImageUtility.h
  _MyClasses/Category/IsolatedDecoding.h
  _MyClasses/Category/MoreAppleEvents.h
  _MyClasses/Category/StringUtility.h
  _MyClasses/Class/ExifTag/ExifTagReader.h
  platform/foundation/NSNotificationCenter.h # what a finished ResizeUnit posts to
  platform/foundation/NSUserDefaults.h # where StoredPresets come from
)

# kestrine_with_included(RESULT HEADER...): the headers, relative to src, and all headers of ours that they include.
function(kestrine_with_included result)
  set(found)
  set(pending ${ARGN})
  while(pending)
    list(POP_FRONT pending header)
    if(header IN_LIST found)
      continue()
    endif()
    list(APPEND found ${header})
    set(file ${PROJECT_SOURCE_DIR}/src/${header})
    set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    file(STRINGS ${file} included REGEX "^#include \"")
    list(TRANSFORM included REPLACE "^#include \"([^\"]+)\".*" "\\1")
    list(APPEND pending ${included})
  endwhile()
  set(${result} ${found} PARENT_SCOPE)
endfunction()

get_property(libraries GLOBAL PROPERTY KESTRINE_LIBRARIES)
list(TRANSFORM libraries REPLACE ".+" "$<TARGET_OBJECTS:\\0>")
add_library(kestrine_desktop STATIC ${libraries})
set_target_properties(kestrine_desktop PROPERTIES LINKER_LANGUAGE CXX OUTPUT_NAME kestrine-desktop EXPORT_NAME desktop)
kestrine_with_included(headers ${KESTRINE_DESKTOP_HEADERS})
list(TRANSFORM headers PREPEND ${PROJECT_SOURCE_DIR}/src/)
target_sources(kestrine_desktop PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR}/src FILES ${headers})
target_compile_features(kestrine_desktop INTERFACE cxx_std_20)
target_compile_definitions(kestrine_desktop INTERFACE _FILE_OFFSET_BITS=64)

# The libraries that programs link besides, by the names that pkg-config knows. kestrine-config.cmake.in looks for them.
get_property(KESTRINE_DESKTOP_PACKAGES GLOBAL PROPERTY KESTRINE_PACKAGES)
list(APPEND KESTRINE_DESKTOP_PACKAGES libdeflate)
list(JOIN KESTRINE_DESKTOP_PACKAGES " " KESTRINE_DESKTOP_PACKAGES)
target_link_libraries(kestrine_desktop INTERFACE Threads::Threads $<INSTALL_INTERFACE:PkgConfig::KESTRINE_DESKTOP>)
