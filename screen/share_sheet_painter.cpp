#include "screen/share_sheet_painter.h"

#include <algorithm>
#include <iterator>
#include <numbers>
#include <string>
#include <vector>

#include "screen/shapes.h"

namespace screen {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kHeader = 88;
constexpr double kTargets = 116;
constexpr double kAction = 52;
const Rgba kSheetGround{0.95, 0.95, 0.97, 1};
const Rgba kGlyph{0.1, 0.1, 0.1, 1};

enum class Glyph { Copy, Save, Contact, Print, None };

struct Action {
    const char* title;
    Glyph glyph;
};

std::vector<Action> actionsFor(const plat::ActivityViewController& sheet) {
    std::vector<Action> actions{{"Copy", Glyph::Copy}};
    if (sheet.image()) {
        actions.push_back({"Save Image", Glyph::Save});
        actions.push_back({"Assign to Contact", Glyph::Contact});
    }
    actions.push_back({"Print", Glyph::Print});
    actions.push_back({"Edit Actions…", Glyph::None});
    return actions;
}

void stroke(cairo_t* cr) {
    setColor(cr, kGlyph);
    cairo_set_line_width(cr, 1.6);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    cairo_stroke(cr);
}

// A line glyph in a 22-point square centred on (cx, cy).
void drawGlyph(cairo_t* cr, Glyph glyph, double cx, double cy) {
    cairo_save(cr);
    switch (glyph) {
        case Glyph::Copy:
            roundedPath(cr, plat::Rect{{cx - 8, cy - 5}, {12, 14}}, 2.5);
            stroke(cr);
            cairo_move_to(cr, cx - 4, cy - 8);
            cairo_line_to(cr, cx + 6, cy - 8);
            cairo_line_to(cr, cx + 8, cy - 6);
            cairo_line_to(cr, cx + 8, cy + 5);
            stroke(cr);
            break;
        case Glyph::Save:
            cairo_move_to(cr, cx, cy - 9);
            cairo_line_to(cr, cx, cy + 3);
            cairo_move_to(cr, cx - 5, cy - 2);
            cairo_line_to(cr, cx, cy + 3);
            cairo_line_to(cr, cx + 5, cy - 2);
            cairo_move_to(cr, cx - 9, cy + 2);
            cairo_line_to(cr, cx - 9, cy + 8);
            cairo_line_to(cr, cx + 9, cy + 8);
            cairo_line_to(cr, cx + 9, cy + 2);
            stroke(cr);
            break;
        case Glyph::Contact:
            cairo_new_sub_path(cr);
            cairo_arc(cr, cx, cy - 3.5, 4.5, 0, 2 * kPi);
            stroke(cr);
            cairo_new_sub_path(cr);
            cairo_arc(cr, cx, cy + 11, 9, 1.15 * kPi, 1.85 * kPi);
            stroke(cr);
            break;
        case Glyph::Print:
            roundedPath(cr, plat::Rect{{cx - 10, cy - 4}, {20, 10}}, 2);
            stroke(cr);
            cairo_rectangle(cr, cx - 6, cy - 9, 12, 5);
            cairo_rectangle(cr, cx - 6, cy + 2, 12, 7);
            stroke(cr);
            break;
        case Glyph::None:
            break;
    }
    cairo_restore(cr);
}

// A round target tile with a letter, and the label under it.
void drawTarget(cairo_t* cr, TextPainter& text, const std::string& label, const Rgba& color,
                const std::string& mark, double x, double y) {
    roundedPath(cr, plat::Rect{{x, y}, {60, 60}}, 13.5);
    setColor(cr, color);
    cairo_fill(cr);
    const bool pale = color.r + color.g + color.b > 2.5;
    const Rgba ink = pale ? Rgba{0.35, 0.35, 0.38, 1} : kWhite;
    text.draw(mark, TextStyle{26, Weight::Semibold, ink, PANGO_ALIGN_CENTER, 1}, x, y + 14, 60);
    text.draw(label, TextStyle{11, Weight::Regular, kBlack, PANGO_ALIGN_CENTER, 1}, x - 10, y + 66,
              80);
}

}  // namespace

double shareSheetHeight(const plat::ActivityViewController& sheet) {
    return kHeader + kTargets + kAction * static_cast<double>(actionsFor(sheet).size()) + 16;
}

std::optional<plat::Rect> paintShareSheet(cairo_t* cr, TextPainter& text,
                                          const plat::ActivityViewController& sheet,
                                          const Look& look, plat::Rect box, bool closable) {
    const double x = box.origin.x, width = box.size.width;
    double y = box.origin.y;
    fillRect(cr, box, kSheetGround);

    // The preview: the picture as a thumbnail, the text's first words, and the close button.
    const plat::Rect thumb{{x + 16, y + 16}, {56, 56}};
    cairo_save(cr);
    roundedPath(cr, thumb, 8);
    cairo_clip(cr);
    fillRect(cr, thumb, Rgba{0.85, 0.85, 0.87, 1});
    if (auto image = sheet.image()) drawImage(cr, *image, thumb);
    cairo_restore(cr);
    const double textX = thumb.origin.x + 56 + 12;
    const double textWidth = width - (textX - x) - (closable ? 56 : 16);
    text.draw(sheet.text().value_or(sheet.image() ? "Image" : ""),
              TextStyle{15, Weight::Semibold, kBlack, PANGO_ALIGN_LEFT, 2}, textX, y + 22,
              textWidth);
    std::optional<plat::Rect> close;
    if (closable) {
        const double cx = x + width - 32, cy = y + 30;
        close = plat::Rect{{cx - 15, cy - 15}, {30, 30}};
        cairo_arc(cr, cx, cy, 15, 0, 2 * kPi);
        setColor(cr, Rgba{0.46, 0.46, 0.5, 0.12});
        cairo_fill(cr);
        cairo_move_to(cr, cx - 4.5, cy - 4.5);
        cairo_line_to(cr, cx + 4.5, cy + 4.5);
        cairo_move_to(cr, cx + 4.5, cy - 4.5);
        cairo_line_to(cr, cx - 4.5, cy + 4.5);
        setColor(cr, look.secondaryText);
        cairo_set_line_width(cr, 2);
        cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
        cairo_stroke(cr);
    }
    y += kHeader;
    fillRect(cr, plat::Rect{{x, y - 0.5}, {width, 0.5}}, look.separator);

    // App targets: neutral tiles, the last one for more.
    struct Target {
        const char* label;
        Rgba color;
        const char* mark;
    };
    const Target targets[] = {{"Messages", {0.2, 0.78, 0.35, 1}, "M"},
                              {"Mail", {0.2, 0.55, 0.95, 1}, "M"},
                              {"Notes", {0.98, 0.8, 0.2, 1}, "N"},
                              {"More", {0.9, 0.9, 0.92, 1}, "···"}};
    const double step = std::min(84.0, (width - 32) / 4);
    for (std::size_t i = 0; i < std::size(targets); ++i)
        drawTarget(cr, text, targets[i].label, targets[i].color, targets[i].mark,
                   x + 16 + static_cast<double>(i) * step + (step - 60) / 2, y + 18);
    y += kTargets;

    // The actions, one group of rows with their glyphs on the right.
    const auto actions = actionsFor(sheet);
    const plat::Rect group{{x + 16, y},
                           {width - 32, kAction * static_cast<double>(actions.size())}};
    roundedPath(cr, group, 10);
    setColor(cr, kWhite);
    cairo_fill(cr);
    for (std::size_t i = 0; i < actions.size(); ++i, y += kAction) {
        const bool edit = actions[i].glyph == Glyph::None;
        text.draw(actions[i].title,
                  TextStyle{17, Weight::Regular, edit ? look.tint : kBlack, PANGO_ALIGN_LEFT, 1},
                  x + 32, y + kAction / 2 - 10.5, width - 100);
        drawGlyph(cr, actions[i].glyph, x + width - 44, y + kAction / 2);
        if (i + 1 < actions.size())
            fillRect(cr, plat::Rect{{x + 32, y + kAction - 0.5}, {width - 48, 0.5}},
                     look.separator);
    }
    return close;
}

}  // namespace screen
