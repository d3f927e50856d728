// The functions of librsvg and of the libraries below it, which are opened when the first SVG file is read.
// They are declared by hand, because only these few are needed; the program does not link to the libraries.
#pragma once

#include "platform/host/Result.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>

namespace kestrine::svg {

// Objects of the libraries.
struct Document;    ///< RsvgHandle
struct Surface;     ///< cairo_surface_t
struct Context;     ///< cairo_t
struct FontMap;     ///< PangoFontMap
struct FontConfig;  ///< FcConfig
struct FontPattern; ///< FcPattern
struct FontLibrary; ///< FT_Library
struct FontFace;    ///< FT_Face

/// RsvgRectangle
struct Rectangle {
    double x, y, width, height;
};
/// RsvgLength, whose unit is an enumeration
struct Length {
    double length;
    int unit;
};
/// FcFontSet
struct FontSet {
    int count, capacity;
    FontPattern** fonts;
};

/// The functions that are used. Booleans of the libraries are int.
struct Functions {
    // librsvg; errors are not asked for
    Document* (*read)(const std::uint8_t* bytes, std::size_t length, void* error);
    void (*setResolution)(Document*, double dotsPerInch);
    void (*dimensions)(Document*, int* hasWidth, Length* width, int* hasHeight, Length* height,
                       int* hasViewBox, Rectangle* viewBox);
    int (*extents)(Document*, const char* id, const Rectangle* viewport, Rectangle* ink, Rectangle* logical,
                   void* error);
    int (*draw)(Document*, Context*, const Rectangle* viewport, void* error);
    void (*release)(void* object); ///< g_object_unref
    void (*setLogHandler)(const char* domain, int levels,
                          void (*handler)(const char*, int, const char*, void*), void* data);
    // cairo
    Surface* (*createSurface)(std::uint8_t* pixels, int format, int width, int height, int stride);
    void (*destroySurface)(Surface*);
    void (*flush)(Surface*);
    Context* (*createContext)(Surface*);
    void (*destroyContext)(Context*);
    int (*statusOf)(Context*);
    void (*translate)(Context*, double x, double y);
    void (*scale)(Context*, double x, double y);
    // Pango
    FontMap* (*createFontMap)();
    void (*setFontConfig)(FontMap*, FontConfig*);
    void (*useFontMap)(FontMap*); ///< pango_cairo_font_map_set_default, of the calling thread
    // fontconfig
    FontConfig* (*systemFonts)();
    FontConfig* (*createFontConfig)();
    void (*destroyFontConfig)(FontConfig*);
    int (*addFontFile)(FontConfig*, const std::uint8_t* path);
    FontSet* (*fontsOf)(FontConfig*, int set);
    int (*addRules)(FontConfig*, const std::uint8_t* xml, int complains);
    FontPattern* (*parsePattern)(const std::uint8_t* text);
    void (*destroyPattern)(FontPattern*);
    int (*substitute)(FontConfig*, FontPattern*, int kind);
    void (*substituteDefaults)(FontPattern*);
    FontPattern* (*match)(FontConfig*, FontPattern*, int* result);
    int (*stringOf)(FontPattern*, const char* name, int index, std::uint8_t** value);
    int (*numberOf)(FontPattern*, const char* name, int index, int* value);
    int (*addFace)(FontPattern*, const char* name, FontFace*);
    // FreeType
    int (*openFontLibrary)(FontLibrary**);
    int (*openFace)(FontLibrary*, const char* path, long index, FontFace**);
};

/// The functions of the first of these libraries that exists, and of those that it needs. Fails with reason
/// "unsupported" and names the package if one is missing.
Result<Functions> loadFunctions(std::initializer_list<const char*> names);

/// The functions of the installed libraries; opened once. Any thread.
const Result<Functions>& installedFunctions();

} // namespace kestrine::svg
