#include "screen/text.h"

#include <pango/pangocairo.h>

#include <algorithm>

#include "platform/ui/font.h"
#include "platform/ui/paragraph_style.h"
#include "screen/fonts.h"

namespace screen {

namespace {

PangoWeight pangoWeight(Weight weight) {
    switch (weight) {
        case Weight::Medium:
            return PANGO_WEIGHT_MEDIUM;
        case Weight::Semibold:
            return PANGO_WEIGHT_SEMIBOLD;
        case Weight::Bold:
            return PANGO_WEIGHT_BOLD;
        default:
            return PANGO_WEIGHT_NORMAL;
    }
}

// A UIFont's weight read from its PostScript name ("Helvetica-Bold", ".SFUI-Semibold").
Weight weightOfFontName(const std::string& name) {
    std::string lower = name;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (lower.find("semibold") != std::string::npos) return Weight::Semibold;
    if (lower.find("bold") != std::string::npos || lower.find("heavy") != std::string::npos ||
        lower.find("black") != std::string::npos)
        return Weight::Bold;
    if (lower.find("medium") != std::string::npos) return Weight::Medium;
    return Weight::Regular;
}

PangoFontDescription* description(double size, Weight weight) {
    PangoFontDescription* font = pango_font_description_new();
    pango_font_description_set_family_static(font, "Inter");
    pango_font_description_set_weight(font, pangoWeight(weight));
    pango_font_description_set_absolute_size(font, size * PANGO_SCALE);
    return font;
}

// Byte offset in UTF-8 text of a position counted in UTF-16 units, as NSString counts.
std::size_t byteOffset(const std::string& text, std::size_t units) {
    std::size_t bytes = 0, counted = 0;
    while (bytes < text.size() && counted < units) {
        const unsigned char lead = static_cast<unsigned char>(text[bytes]);
        const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        counted += length == 4 ? 2 : 1;
        bytes = std::min(text.size(), bytes + length);
    }
    return bytes;
}

PangoAlignment pangoAlignment(int alignment, PangoAlignment fallback) {
    switch (alignment) {
        case plat::NSTextAlignmentCenter:
            return PANGO_ALIGN_CENTER;
        case plat::NSTextAlignmentRight:
            return PANGO_ALIGN_RIGHT;
        case plat::NSTextAlignmentLeft:
            return PANGO_ALIGN_LEFT;
        default:
            return fallback;
    }
}

}  // namespace

TextPainter::TextPainter(cairo_t* cr) : cr_(cr) {
    context_ = pango_font_map_create_context(interFontMap());
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_font_options_set_subpixel_order(options, CAIRO_SUBPIXEL_ORDER_DEFAULT);
    pango_cairo_context_set_font_options(context_, options);
    cairo_font_options_destroy(options);
    pango_cairo_context_set_resolution(context_, 72);
    pango_context_set_round_glyph_positions(context_, FALSE);
    pango_cairo_update_context(cr_, context_);
}

TextPainter::~TextPainter() {
    g_object_unref(context_);
}

TextPainter::LayoutPtr TextPainter::layout(const std::string& text, const TextStyle& style,
                                           double width) {
    LayoutPtr made(pango_layout_new(context_), g_object_unref);
    PangoFontDescription* font = description(style.size, style.weight);
    pango_layout_set_font_description(made.get(), font);
    pango_font_description_free(font);
    pango_layout_set_text(made.get(), text.c_str(), static_cast<int>(text.size()));
    pango_layout_set_alignment(made.get(), style.align);
    if (width > 0) {
        pango_layout_set_width(made.get(), static_cast<int>(width * PANGO_SCALE));
        pango_layout_set_wrap(made.get(), PANGO_WRAP_WORD_CHAR);
    }
    if (style.maxLines > 0) {
        pango_layout_set_ellipsize(made.get(), PANGO_ELLIPSIZE_END);
        pango_layout_set_height(made.get(), -style.maxLines);
    }
    return made;
}

TextPainter::LayoutPtr TextPainter::layout(const plat::AttributedString& text,
                                           const TextStyle& base, double width) {
    LayoutPtr made = layout(text.string(), base, width);
    PangoAttrList* list = pango_attr_list_new();
    const std::string& utf8 = text.string();
    bool paragraphSeen = false;
    for (const auto& run : text.runs()) {
        const auto start = static_cast<guint>(byteOffset(utf8, run.range.location));
        const auto end =
            static_cast<guint>(byteOffset(utf8, run.range.location + run.range.length));
        auto add = [&](PangoAttribute* attribute) {
            attribute->start_index = start;
            attribute->end_index = end;
            pango_attr_list_insert(list, attribute);
        };
        for (const auto& [name, value] : run.attributes) {
            if (name == plat::NSFontAttributeName) {
                if (auto font = value.as<plat::Font>()) {
                    add(pango_attr_size_new_absolute(
                        static_cast<int>(font->pointSize() * PANGO_SCALE)));
                    add(pango_attr_weight_new(pangoWeight(weightOfFontName(font->fontName()))));
                }
            } else if (name == plat::NSKernAttributeName && value.isNumber()) {
                add(pango_attr_letter_spacing_new(
                    static_cast<int>(value.doubleValue() * PANGO_SCALE)));
            } else if (name == plat::NSParagraphStyleAttributeName && !paragraphSeen) {
                // A layout has one paragraph style; the first run's stands for the text.
                if (auto style = value.as<plat::ParagraphStyle>()) {
                    paragraphSeen = true;
                    pango_layout_set_spacing(made.get(),
                                             static_cast<int>(style->lineSpacing() * PANGO_SCALE));
                    pango_layout_set_alignment(made.get(),
                                               pangoAlignment(style->alignment(), base.align));
                }
            }
        }
    }
    pango_layout_set_attributes(made.get(), list);
    pango_attr_list_unref(list);
    return made;
}

double TextPainter::show(PangoLayout* layout, const Rgba& color, double x, double y) {
    int width = 0, height = 0;
    pango_layout_get_size(layout, &width, &height);
    cairo_save(cr_);
    cairo_set_source_rgba(cr_, color.r, color.g, color.b, color.a);
    cairo_move_to(cr_, x, y);
    pango_cairo_show_layout(cr_, layout);
    cairo_restore(cr_);
    return static_cast<double>(height) / PANGO_SCALE;
}

double TextPainter::measure(const std::string& text, const TextStyle& style, double width) {
    int w = 0, h = 0;
    pango_layout_get_size(layout(text, style, width).get(), &w, &h);
    return static_cast<double>(h) / PANGO_SCALE;
}

double TextPainter::lineWidth(const std::string& text, const TextStyle& style) {
    int w = 0, h = 0;
    pango_layout_get_size(layout(text, style, 0).get(), &w, &h);
    return static_cast<double>(w) / PANGO_SCALE;
}

double TextPainter::draw(const std::string& text, const TextStyle& style, double x, double y,
                         double width) {
    return show(layout(text, style, width).get(), style.color, x, y);
}

double TextPainter::measure(const plat::AttributedString& text, const TextStyle& base,
                            double width) {
    int w = 0, h = 0;
    pango_layout_get_size(layout(text, base, width).get(), &w, &h);
    return static_cast<double>(h) / PANGO_SCALE;
}

double TextPainter::draw(const plat::AttributedString& text, const TextStyle& base, double x,
                         double y, double width) {
    return show(layout(text, base, width).get(), base.color, x, y);
}

}  // namespace screen
