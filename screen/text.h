#pragma once

#include <cairo.h>
#include <pango/pango.h>

#include <memory>
#include <string>

#include "platform/ui/attributed_string.h"

namespace screen {

struct Rgba {
    double r = 0, g = 0, b = 0, a = 1;
};

enum class Weight { Regular, Medium, Semibold, Bold };

struct TextStyle {
    double size = 17;
    Weight weight = Weight::Regular;
    Rgba color;
    PangoAlignment align = PANGO_ALIGN_LEFT;
    int maxLines = 0;  // 0: as many as the text needs
};

// Lays out text in Inter on one cairo context. Sizes are points: the context's resolution is
// 72 per inch, and hinting is off, so a layout measures the same at every scale.
class TextPainter {
  public:
    explicit TextPainter(cairo_t* cr);
    ~TextPainter();
    TextPainter(const TextPainter&) = delete;
    TextPainter& operator=(const TextPainter&) = delete;

    // The height the text takes when wrapped to `width`.
    double measure(const std::string& text, const TextStyle& style, double width);
    // The width of one line of text.
    double lineWidth(const std::string& text, const TextStyle& style);
    // Draws the text with its top-left corner at (x, y), wrapped to `width`; answers its height.
    double draw(const std::string& text, const TextStyle& style, double x, double y, double width);

    // Attributed text with its own fonts, kerning and paragraph styles.
    double measure(const plat::AttributedString& text, const TextStyle& base, double width);
    double draw(const plat::AttributedString& text, const TextStyle& base, double x, double y,
                double width);

  private:
    using LayoutPtr = std::unique_ptr<PangoLayout, void (*)(gpointer)>;
    LayoutPtr layout(const std::string& text, const TextStyle& style, double width);
    LayoutPtr layout(const plat::AttributedString& text, const TextStyle& base, double width);
    double show(PangoLayout* layout, const Rgba& color, double x, double y);

    cairo_t* cr_;
    PangoContext* context_;
};

}  // namespace screen
