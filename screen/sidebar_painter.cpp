#include "screen/sidebar_painter.h"

#include <numbers>
#include <vector>

#include "screen/shapes.h"

namespace screen {

namespace {

constexpr double kRow = 44;
constexpr double kGap = 35;

struct SystemRow {
    const char* label;
    Rgba tile;
};

// Settings' own rows above the bundle's, in groups, each on a tile of its colour.
const std::vector<std::vector<SystemRow>>& systemRows() {
    static const std::vector<std::vector<SystemRow>> rows{
        {{"Airplane Mode", {1, 0.58, 0, 1}},
         {"Wi-Fi", {0, 0.48, 1, 1}},
         {"Bluetooth", {0, 0.48, 1, 1}}},
        {{"Notifications", {1, 0.23, 0.19, 1}},
         {"Sounds", {1, 0.18, 0.33, 1}},
         {"Do Not Disturb", {0.35, 0.34, 0.84, 1}},
         {"Screen Time", {0.35, 0.34, 0.84, 1}}},
        {{"General", {0.56, 0.56, 0.58, 1}},
         {"Control Center", {0.56, 0.56, 0.58, 1}},
         {"Display & Brightness", {0, 0.48, 1, 1}},
         {"Accessibility", {0, 0.48, 1, 1}},
         {"Wallpaper", {0.2, 0.68, 0.9, 1}},
         {"Battery", {0.2, 0.78, 0.35, 1}},
         {"Privacy", {0, 0.48, 1, 1}}},
    };
    return rows;
}

// A rounded tile with the label's initial: a neutral stand-in for a row's icon.
void drawTile(cairo_t* cr, TextPainter& text, const std::string& label, const Rgba& color,
              plat::Rect box) {
    roundedPath(cr, box, 6.5);
    setColor(cr, color);
    cairo_fill(cr);
    const TextStyle initial{17, Weight::Semibold, kWhite, PANGO_ALIGN_CENTER, 1};
    const std::string letter = label.empty() ? "" : label.substr(0, 1);
    text.draw(letter, initial, box.origin.x, box.origin.y + box.size.height / 2 - 10.5,
              box.size.width);
}

// The search field's magnifier: a ring and its handle.
void drawMagnifier(cairo_t* cr, double x, double middle, const Rgba& color) {
    cairo_save(cr);
    setColor(cr, color);
    cairo_set_line_width(cr, 1.8);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    cairo_new_sub_path(cr);
    cairo_arc(cr, x + 6, middle - 1.5, 5.5, 0, 2 * std::numbers::pi);
    cairo_move_to(cr, x + 10, middle + 2.5);
    cairo_line_to(cr, x + 14, middle + 6.5);
    cairo_stroke(cr);
    cairo_restore(cr);
}

class SidebarPainter {
  public:
    SidebarPainter(cairo_t* cr, TextPainter& text, const Look& look)
        : cr_(cr), text_(text), look_(look), width_(look.sidebarWidth) {
        left_ = look.margin;
        rowWidth_ = width_ - 2 * look.margin;
    }

    plat::Rect paint(const SettingsEntry& entry) {
        fillRect(cr_, plat::Rect{{0, 0}, {width_, look_.height}}, look_.background);
        double y = heading();
        cairo_save(cr_);
        cairo_rectangle(cr_, 0, 0, width_, look_.contentBottom());
        cairo_clip(cr_);
        for (const auto& group : systemRows()) {
            y += kGap;
            ground(y, static_cast<double>(group.size()));
            for (std::size_t i = 0; i < group.size(); ++i, y += kRow)
                row(group[i].label, y, i + 1 == group.size(), [&](plat::Rect box) {
                    drawTile(cr_, text_, group[i].label, group[i].tile, box);
                });
        }
        y += kGap;
        ground(y, 1);
        const plat::Rect selected{{left_, y}, {rowWidth_, kRow}};
        roundedPath(cr_, selected, look_.cornerRadius);
        setColor(cr_, look_.tint);
        cairo_fill(cr_);
        row(
            entry.label, y, true,
            [&](plat::Rect box) {
                if (entry.icon)
                    drawImage(cr_, *entry.icon, box);
                else
                    drawTile(cr_, text_, entry.label, Rgba{0.56, 0.56, 0.58, 1}, box);
            },
            kWhite);
        cairo_restore(cr_);
        // The hairline between the sidebar and the page's column.
        fillRect(cr_, plat::Rect{{width_ - 0.5, 0}, {0.5, look_.height}}, look_.separator);
        return selected;
    }

  private:
    // The title, large with a search field under it from iOS 13 on, in a plain bar before;
    // answers where the list starts.
    double heading() {
        const double top = look_.statusBar;
        if (!look_.insetGrouped) {
            const double bottom = top + look_.navigationBar;
            fillRect(cr_, plat::Rect{{0, 0}, {width_, bottom}}, look_.barBackground);
            fillRect(cr_, plat::Rect{{0, bottom - 0.5}, {width_, 0.5}}, Rgba{0, 0, 0, 0.3});
            text_.draw("Settings", TextStyle{17, Weight::Semibold, kBlack, PANGO_ALIGN_CENTER, 1},
                       0, top + look_.navigationBar / 2 - 10.5, width_);
            return bottom;
        }
        const double titleTop = top + look_.navigationBar;
        text_.draw("Settings", TextStyle{34, Weight::Bold, kBlack, PANGO_ALIGN_LEFT, 1}, left_,
                   titleTop, rowWidth_);
        const plat::Rect field{{left_ - 4, titleTop + 52}, {rowWidth_ + 8, 36}};
        roundedPath(cr_, field, 10);
        setColor(cr_, Rgba{0.46, 0.46, 0.5, 0.12});
        cairo_fill(cr_);
        const double middle = field.origin.y + field.size.height / 2;
        drawMagnifier(cr_, field.origin.x + 8, middle, look_.secondaryText);
        text_.draw("Search",
                   TextStyle{17, Weight::Regular, look_.secondaryText, PANGO_ALIGN_LEFT, 1},
                   field.origin.x + 30, middle - 10.5, field.size.width - 40);
        return field.origin.y + field.size.height;
    }

    void ground(double y, double rows) {
        roundedPath(cr_, plat::Rect{{left_, y}, {rowWidth_, rows * kRow}}, look_.cornerRadius);
        setColor(cr_, kWhite);
        cairo_fill(cr_);
    }

    template <typename Icon>
    void row(const std::string& label, double y, bool last, Icon icon, Rgba ink = kBlack) {
        const double middle = y + kRow / 2;
        const double iconX = left_ + look_.cellInset;
        icon(plat::Rect{{iconX, middle - 14.5}, {29, 29}});
        const double textX = iconX + 29 + 15;
        text_.draw(label, TextStyle{17, Weight::Regular, ink, PANGO_ALIGN_LEFT, 1}, textX,
                   middle - 10.5, left_ + rowWidth_ - look_.cellInset - textX);
        if (!last)
            fillRect(cr_, plat::Rect{{textX, y + kRow - 0.5}, {left_ + rowWidth_ - textX, 0.5}},
                     look_.separator);
    }

    cairo_t* cr_;
    TextPainter& text_;
    const Look& look_;
    double width_, left_ = 0, rowWidth_ = 0;
};

}  // namespace

plat::Rect paintSidebar(cairo_t* cr, TextPainter& text, const Look& look,
                        const SettingsEntry& entry) {
    return SidebarPainter(cr, text, look).paint(entry);
}

}  // namespace screen
