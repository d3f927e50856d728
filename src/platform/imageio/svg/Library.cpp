#include "platform/imageio/svg/Library.h"

#include "platform/host/process/DynamicLibrary.h"
#include "platform/host/process/SystemLibraries.h"

namespace kestrine::svg {

namespace {

bool findDrawing(const DynamicLibrary& library, Functions& functions) {
    return library.find(functions.read, "rsvg_handle_new_from_data")
           && library.find(functions.setResolution, "rsvg_handle_set_dpi")
           && library.find(functions.dimensions, "rsvg_handle_get_intrinsic_dimensions")
           && library.find(functions.extents, "rsvg_handle_get_geometry_for_layer")
           && library.find(functions.draw, "rsvg_handle_render_document")
           && library.find(functions.release, "g_object_unref")
           && library.find(functions.setLogHandler, "g_log_set_handler")
           && library.find(functions.createSurface, "cairo_image_surface_create_for_data")
           && library.find(functions.destroySurface, "cairo_surface_destroy")
           && library.find(functions.flush, "cairo_surface_flush")
           && library.find(functions.createContext, "cairo_create")
           && library.find(functions.destroyContext, "cairo_destroy")
           && library.find(functions.statusOf, "cairo_status")
           && library.find(functions.translate, "cairo_translate")
           && library.find(functions.scale, "cairo_scale");
}

bool findFonts(const DynamicLibrary& library, Functions& functions) {
    return library.find(functions.createFontMap, "pango_cairo_font_map_new")
           && library.find(functions.setFontConfig, "pango_fc_font_map_set_config")
           && library.find(functions.useFontMap, "pango_cairo_font_map_set_default")
           && library.find(functions.systemFonts, "FcInitLoadConfigAndFonts")
           && library.find(functions.createFontConfig, "FcConfigCreate")
           && library.find(functions.destroyFontConfig, "FcConfigDestroy")
           && library.find(functions.addFontFile, "FcConfigAppFontAddFile")
           && library.find(functions.fontsOf, "FcConfigGetFonts")
           && library.find(functions.addRules, "FcConfigParseAndLoadFromMemory")
           && library.find(functions.parsePattern, "FcNameParse")
           && library.find(functions.destroyPattern, "FcPatternDestroy")
           && library.find(functions.substitute, "FcConfigSubstitute")
           && library.find(functions.substituteDefaults, "FcDefaultSubstitute")
           && library.find(functions.match, "FcFontMatch")
           && library.find(functions.stringOf, "FcPatternGetString")
           && library.find(functions.numberOf, "FcPatternGetInteger")
           && library.find(functions.addFace, "FcPatternAddFTFace")
           && library.find(functions.openFontLibrary, "FT_Init_FreeType")
           && library.find(functions.openFace, "FT_New_Face");
}

/// The libraries print warnings.
void silence(const Functions& library) {
    constexpr int allLevels = ~3; // the first two bits are flags
    for (const char* domain : {"Pango", "GLib", "GLib-GObject", "GLib-GIO", "GdkPixbuf", "librsvg", "Gdk"})
        library.setLogHandler(
            domain, allLevels, [](const char*, int, const char*, void*) {}, nullptr);
}

} // namespace

Result<Functions> loadFunctions(std::initializer_list<const char*> names) {
    return DynamicLibrary::load<Functions>(names, missingMessage("SVG drawings need librsvg", OnDemand::rsvg),
                                           [](const DynamicLibrary& library, Functions& functions) {
                                               return findDrawing(library, functions)
                                                      && findFonts(library, functions);
                                           });
}

const Result<Functions>& installedFunctions() {
    static const Result<Functions> functions = [] {
        Result<Functions> loaded = loadFunctions({systemLibrary(OnDemand::rsvg).file});
        if (loaded)
            silence(*loaded);
        return loaded;
    }();
    return functions;
}

} // namespace kestrine::svg
