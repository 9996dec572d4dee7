#include "screen/fonts.h"

#include <fontconfig/fontconfig.h>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>

#include <stdexcept>
#include <string>

namespace screen {

namespace {

// The files of the family "Inter" (not "Inter Display") that the system's fontconfig knows.
// Only their names are taken from the system; their use is ours alone.
FcConfig* interOnlyConfig() {
    FcConfig* system = FcInitLoadConfigAndFonts();
    FcPattern* pattern = FcPatternCreate();
    FcPatternAddString(pattern, FC_FAMILY, reinterpret_cast<const FcChar8*>("Inter"));
    FcObjectSet* objects = FcObjectSetBuild(FC_FILE, FC_FAMILY, FC_SLANT, nullptr);
    FcFontSet* found = FcFontList(system, pattern, objects);

    FcConfig* config = FcConfigCreate();
    int added = 0;
    for (int i = 0; found && i < found->nfont; ++i) {
        FcChar8* family = nullptr;
        FcChar8* file = nullptr;
        int slant = FC_SLANT_ROMAN;
        FcPatternGetInteger(found->fonts[i], FC_SLANT, 0, &slant);
        if (FcPatternGetString(found->fonts[i], FC_FAMILY, 0, &family) != FcResultMatch ||
            FcPatternGetString(found->fonts[i], FC_FILE, 0, &file) != FcResultMatch)
            continue;
        if (std::string(reinterpret_cast<const char*>(family)) != "Inter" ||
            slant != FC_SLANT_ROMAN)
            continue;
        if (FcConfigAppFontAddFile(config, file)) ++added;
    }
    if (found) FcFontSetDestroy(found);
    FcObjectSetDestroy(objects);
    FcPatternDestroy(pattern);
    FcConfigDestroy(system);
    if (added == 0) {
        FcConfigDestroy(config);
        throw std::runtime_error(
            "screenshots need the Inter font (Debian package fonts-inter); it is not installed");
    }
    return config;
}

}  // namespace

PangoFontMap* interFontMap() {
    static PangoFontMap* map = [] {
        FcConfig* config = interOnlyConfig();
        PangoFontMap* made = pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT);
        pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(made), config);
        FcConfigDestroy(config);
        return made;
    }();
    return map;
}

}  // namespace screen
