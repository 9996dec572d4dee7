// Draws every picture that ships inside VeltoSettings.bundle and writes them as PNG files.
//
//   make_resource_images <folder>          write all images into <folder>
//   make_resource_images --check <folder>  exit 1 unless <folder> holds exactly what we draw
//
// The checked-in images in resources/ are this program's output, so a change of look is a
// change here followed by a run into resources/. Nothing depends on fonts or on the clock:
// shapes only, drawn the same way on every run, so the same cairo build gives the same bytes.

#include <cairo.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <numbers>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr double kPi = std::numbers::pi;

struct Rgb {
    double r;
    double g;
    double b;
};

constexpr Rgb hex(std::uint32_t value) {
    return {((value >> 16) & 0xff) / 255.0, ((value >> 8) & 0xff) / 255.0, (value & 0xff) / 255.0};
}

// One palette for the whole bundle. Violet is the product colour: the navigation bar, the
// switches (they take their tint from "nav") and the glyph all come from it.
namespace palette {
constexpr Rgb kViolet = hex(0x6B4AE4);
constexpr Rgb kVioletLight = hex(0x8C70F2);
constexpr Rgb kVioletDeep = hex(0x4B30B8);
constexpr Rgb kWhite = hex(0xFFFFFF);
constexpr Rgb kAvatarTop = hex(0xC8C9D0);
constexpr Rgb kAvatarBottom = hex(0xA3A5AE);
constexpr Rgb kAvatarFigure = hex(0xF7F7FA);
constexpr Rgb kAvatarFigureBack = hex(0xE2E3E8);
constexpr Rgb kSlate = hex(0x8E8E98);
constexpr Rgb kIndigo = hex(0x4F5BD5);
constexpr Rgb kCoral = hex(0xF2544B);
constexpr Rgb kAmber = hex(0xF59E22);
constexpr Rgb kSky = hex(0x3B8EEA);
constexpr Rgb kTeal = hex(0x26A69A);
}  // namespace palette

void setColor(cairo_t* cr, Rgb c, double alpha = 1.0) {
    cairo_set_source_rgba(cr, c.r, c.g, c.b, alpha);
}

void roundedRect(cairo_t* cr, double x, double y, double w, double h, double r) {
    cairo_new_sub_path(cr);
    cairo_arc(cr, x + w - r, y + r, r, -kPi / 2, 0);
    cairo_arc(cr, x + w - r, y + h - r, r, 0, kPi / 2);
    cairo_arc(cr, x + r, y + h - r, r, kPi / 2, kPi);
    cairo_arc(cr, x + r, y + r, r, kPi, 3 * kPi / 2);
    cairo_close_path(cr);
}

void circle(cairo_t* cr, double cx, double cy, double r) {
    cairo_new_sub_path(cr);
    cairo_arc(cr, cx, cy, r, 0, 2 * kPi);
    cairo_close_path(cr);
}

// The contact figure used everywhere: a round head over a dome of shoulders, in a box of
// height h whose top middle is (cx, top). The dome's flat base is the bottom of the box.
void personPath(cairo_t* cr, double cx, double top, double h) {
    circle(cr, cx, top + 0.24 * h, 0.20 * h);
    cairo_new_sub_path(cr);
    cairo_save(cr);
    cairo_translate(cr, cx, top + h);
    cairo_scale(cr, 0.38 * h, 0.46 * h);
    cairo_arc(cr, 0, 0, 1, kPi, 2 * kPi);
    cairo_restore(cr);
    cairo_close_path(cr);
}

void verticalGradient(cairo_t* cr, double y0, double y1, Rgb top, Rgb bottom) {
    cairo_pattern_t* pattern = cairo_pattern_create_linear(0, y0, 0, y1);
    cairo_pattern_add_color_stop_rgb(pattern, 0, top.r, top.g, top.b);
    cairo_pattern_add_color_stop_rgb(pattern, 1, bottom.r, bottom.g, bottom.b);
    cairo_set_source(cr, pattern);
    cairo_pattern_destroy(pattern);
}

// Shapes that punch holes (the keyhole, the gear's hub, the glyph's figure) are drawn into a
// group first, so the hole shows whatever lies below rather than a guessed background colour.
template <typename Body>
void inGroup(cairo_t* cr, double alpha, Body body) {
    cairo_push_group(cr);
    body();
    cairo_pop_group_to_source(cr);
    cairo_paint_with_alpha(cr, alpha);
}

void clearMode(cairo_t* cr) {
    cairo_set_operator(cr, CAIRO_OPERATOR_CLEAR);
}
void overMode(cairo_t* cr) {
    cairo_set_operator(cr, CAIRO_OPERATOR_OVER);
}

// ---------------------------------------------------------------------------------------------
// The product glyph: a disc with the contact figure cut out of it and a small satellite dot
// nibbling at its top-right edge ("pictures everywhere"). Drawn in one colour so it also works
// as a template image on a tinted bar.

void veltoGlyph(cairo_t* cr, double cx, double cy, double r, Rgb color, double alpha = 1.0) {
    inGroup(cr, alpha, [&] {
        setColor(cr, color);
        circle(cr, cx, cy, r);
        cairo_fill(cr);
        clearMode(cr);
        personPath(cr, cx, cy - 0.59 * r, 1.364 * r);
        const double nx = cx + 0.691 * r;
        const double ny = cy - 0.691 * r;
        circle(cr, nx, ny, 0.40 * r);
        cairo_fill(cr);
        overMode(cr);
        setColor(cr, color);
        circle(cr, nx, ny, 0.227 * r);
        cairo_fill(cr);
    });
}

// ---------------------------------------------------------------------------------------------
// Images with a size in points; the canvas is already scaled to points when these are called.

void drawNav(cairo_t* cr, double, double) {
    // A flat swatch: whatever way the colour is read back (average, dominant, one pixel), it
    // comes out as the product colour exactly.
    setColor(cr, palette::kViolet);
    cairo_paint(cr);
}

void drawVelto(cairo_t* cr, double w, double h) {
    veltoGlyph(cr, w / 2, h / 2, std::min(w, h) / 2, palette::kViolet);
}

void drawStockAvatar(cairo_t* cr, double w, double h) {
    const double r = std::min(w, h) / 2;
    circle(cr, w / 2, h / 2, r);
    cairo_clip(cr);
    verticalGradient(cr, h / 2 - r, h / 2 + r, palette::kAvatarTop, palette::kAvatarBottom);
    cairo_paint(cr);
    setColor(cr, palette::kAvatarFigure);
    personPath(cr, w / 2, h / 2 - r + 0.433 * r, 1.567 * r);
    cairo_fill(cr);
}

// Sharing cards: the product colour in a soft diagonal, a few faint rings for depth.
void cardBackground(cairo_t* cr, double w, double h) {
    cairo_pattern_t* pattern = cairo_pattern_create_linear(0, 0, w, h);
    cairo_pattern_add_color_stop_rgb(pattern, 0, palette::kVioletLight.r, palette::kVioletLight.g,
                                     palette::kVioletLight.b);
    cairo_pattern_add_color_stop_rgb(pattern, 1, palette::kVioletDeep.r, palette::kVioletDeep.g,
                                     palette::kVioletDeep.b);
    cairo_set_source(cr, pattern);
    cairo_paint(cr);
    cairo_pattern_destroy(pattern);

    setColor(cr, palette::kWhite, 0.06);
    circle(cr, w * 0.92, h * 0.05, h * 0.62);
    cairo_fill(cr);
    circle(cr, w * 0.04, h * 1.02, h * 0.45);
    cairo_fill(cr);
}

// A small contact bubble floating on the card.
void cardBubble(cairo_t* cr, double cx, double cy, double r, double alpha) {
    cairo_save(cr);
    setColor(cr, palette::kWhite, 0.22 * alpha);
    circle(cr, cx, cy, r);
    cairo_fill_preserve(cr);
    cairo_clip(cr);
    setColor(cr, palette::kWhite, 0.75 * alpha);
    personPath(cr, cx, cy - r + 0.433 * r, 1.567 * r);
    cairo_fill(cr);
    cairo_restore(cr);
}

void drawTwitter(cairo_t* cr, double w, double h) {
    cardBackground(cr, w, h);
    struct Bubble {
        double x, y, r, alpha;
    };
    // Scattered around the glyph, smaller as they drift away from it.
    constexpr Bubble kBubbles[] = {
        {0.19, 0.30, 0.105, 1.0}, {0.29, 0.76, 0.075, 0.9},  {0.09, 0.66, 0.055, 0.7},
        {0.78, 0.27, 0.085, 1.0}, {0.84, 0.72, 0.110, 0.95}, {0.68, 0.86, 0.050, 0.7},
        {0.93, 0.44, 0.045, 0.6}, {0.37, 0.13, 0.045, 0.6},
    };
    for (const Bubble& b : kBubbles)
        cardBubble(cr, b.x * w, b.y * h, b.r * h, b.alpha);
    veltoGlyph(cr, w / 2, h / 2, 0.29 * h, palette::kWhite);
}

// The word "Velto" as strokes of one round-capped pen: a geometric wordmark that needs no font.
// Units: x-height 1, baseline y = 0 and up is negative. Returns the drawn width in units.
double wordmarkPath(cairo_t* cr) {
    constexpr double kPen = 0.22;
    constexpr double kHalf = kPen / 2;
    constexpr double kCap = 1.38;
    constexpr double kAscender = 1.45;
    constexpr double kGap = 0.17;
    double x = 0;

    // V
    constexpr double kVWidth = 1.06;
    cairo_move_to(cr, x + kHalf, -kCap + kHalf);
    cairo_line_to(cr, x + kVWidth / 2, -kHalf);
    cairo_line_to(cr, x + kVWidth - kHalf, -kCap + kHalf);
    x += kVWidth + kGap;

    // e: a bar across the middle, then the bowl from the bar's right end over the top and
    // round to an open lower right.
    const double bowl = 0.5 - kHalf;
    const double ecx = x + 0.5;
    const double ecy = -0.5;
    cairo_move_to(cr, ecx - bowl, ecy);
    cairo_line_to(cr, ecx + bowl, ecy);
    cairo_arc_negative(cr, ecx, ecy, bowl, 0, kPi / 4);
    x += 1.0 + kGap;

    // l
    cairo_move_to(cr, x + kHalf, -kAscender + kHalf);
    cairo_line_to(cr, x + kHalf, -kHalf);
    x += kPen + kGap;

    // t: stem with a crossbar at x-height, the bar longer to the right.
    constexpr double kTWidth = 0.64;
    const double stem = x + 0.25;
    cairo_move_to(cr, stem, -1.22 + kHalf);
    cairo_line_to(cr, stem, -kHalf);
    cairo_move_to(cr, x + kHalf, -1.0 + kHalf);
    cairo_line_to(cr, x + kTWidth - kHalf, -1.0 + kHalf);
    x += kTWidth + kGap * 0.7;

    // o
    cairo_new_sub_path(cr);
    cairo_arc(cr, x + 0.5, -0.5, bowl, 0, 2 * kPi);
    cairo_close_path(cr);
    x += 1.0;

    cairo_set_line_width(cr, kPen);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    return x;
}

void drawTwitterVelto(cairo_t* cr, double w, double h) {
    cardBackground(cr, w, h);
    cardBubble(cr, 0.11 * w, 0.22 * h, 0.075 * h, 0.8);
    cardBubble(cr, 0.46 * w, 0.84 * h, 0.060 * h, 0.7);
    cardBubble(cr, 0.92 * w, 0.20 * h, 0.055 * h, 0.6);

    const double glyphR = 0.255 * h;
    const double glyphX = 0.29 * w;
    veltoGlyph(cr, glyphX, h / 2, glyphR, palette::kWhite);

    // The word sits right of the glyph, its x-height centred on the glyph's middle, with the
    // tops of V and l level with the glyph's figure.
    const double unit = 0.175 * h;
    cairo_save(cr);
    cairo_translate(cr, glyphX + glyphR + 0.12 * h, h / 2 + 0.5 * unit + 0.12 * unit);
    cairo_scale(cr, unit, unit);
    wordmarkPath(cr);
    setColor(cr, palette::kWhite);
    cairo_stroke(cr);
    cairo_restore(cr);
}

// ---------------------------------------------------------------------------------------------
// Row icons: 29 pt flat tiles in the system's row-icon shape, a white figure on a colour.

constexpr double kRow = 29.0;

template <typename Glyph>
void rowIcon(cairo_t* cr, Rgb tile, Glyph glyph) {
    setColor(cr, tile);
    roundedRect(cr, 0, 0, kRow, kRow, 6.5);
    cairo_fill(cr);
    inGroup(cr, 1.0, [&] {
        setColor(cr, palette::kWhite);
        glyph();
    });
}

void drawIconGeneral(cairo_t* cr, double, double) {
    rowIcon(cr, palette::kSlate, [&] {
        const double c = kRow / 2;
        constexpr int kTeeth = 8;
        cairo_save(cr);
        cairo_translate(cr, c, c);
        for (int i = 0; i < kTeeth; ++i) {
            cairo_save(cr);
            cairo_rotate(cr, i * 2 * kPi / kTeeth);
            roundedRect(cr, -1.9, -10.2, 3.8, 5.0, 0.9);
            cairo_restore(cr);
        }
        circle(cr, 0, 0, 7.4);
        cairo_fill(cr);
        clearMode(cr);
        circle(cr, 0, 0, 3.0);
        cairo_fill(cr);
        cairo_restore(cr);
    });
}

void drawIconLockScreen(cairo_t* cr, double, double) {
    rowIcon(cr, palette::kIndigo, [&] {
        const double c = kRow / 2;
        cairo_set_line_width(cr, 2.2);
        cairo_move_to(cr, c - 4.4, 14.0);
        cairo_line_to(cr, c - 4.4, 11.2);
        cairo_arc(cr, c, 11.2, 4.4, kPi, 2 * kPi);
        cairo_line_to(cr, c + 4.4, 14.0);
        cairo_stroke(cr);
        roundedRect(cr, c - 6.6, 13.4, 13.2, 9.6, 2.0);
        cairo_fill(cr);
        clearMode(cr);
        circle(cr, c, 17.4, 1.45);
        cairo_fill(cr);
        roundedRect(cr, c - 0.65, 17.6, 1.3, 3.2, 0.6);
        cairo_fill(cr);
    });
}

void drawIconNotificationCenter(cairo_t* cr, double, double) {
    rowIcon(cr, palette::kCoral, [&] {
        const double c = kRow / 2;
        cairo_move_to(cr, c - 7.2, 19.6);
        cairo_curve_to(cr, c - 5.4, 18.4, c - 5.0, 16.8, c - 5.0, 14.4);
        cairo_curve_to(cr, c - 5.0, 10.4, c - 2.8, 7.9, c, 7.9);
        cairo_curve_to(cr, c + 2.8, 7.9, c + 5.0, 10.4, c + 5.0, 14.4);
        cairo_curve_to(cr, c + 5.0, 16.8, c + 5.4, 18.4, c + 7.2, 19.6);
        cairo_close_path(cr);
        cairo_fill(cr);
        circle(cr, c, 7.3, 1.2);
        cairo_fill(cr);
        // The clapper hangs just below the rim.
        cairo_arc(cr, c, 20.6, 2.1, 0, kPi);
        cairo_close_path(cr);
        cairo_fill(cr);
    });
}

void drawIconExcluded(cairo_t* cr, double, double) {
    rowIcon(cr, palette::kAmber, [&] {
        const double c = kRow / 2;
        const double r = 7.6;
        cairo_set_line_width(cr, 2.4);
        circle(cr, c, c, r);
        cairo_stroke(cr);
        const double d = r * std::sqrt(0.5);
        cairo_move_to(cr, c - d, c - d);
        cairo_line_to(cr, c + d, c + d);
        cairo_stroke(cr);
    });
}

void drawIconAbout(cairo_t* cr, double, double) {
    rowIcon(cr, palette::kSky, [&] {
        const double c = kRow / 2;
        cairo_set_line_width(cr, 1.9);
        circle(cr, c, c, 8.2);
        cairo_stroke(cr);
        circle(cr, c, 10.4, 1.35);
        cairo_fill(cr);
        roundedRect(cr, c - 1.1, 13.0, 2.2, 7.0, 1.1);
        cairo_fill(cr);
    });
}

void drawIconContacts(cairo_t* cr, double, double) {
    rowIcon(cr, palette::kTeal, [&] {
        roundedRect(cr, 6.0, 8.0, 17.0, 13.0, 2.2);
        cairo_fill(cr);
        clearMode(cr);
        cairo_save(cr);
        roundedRect(cr, 6.0, 8.0, 17.0, 13.0, 2.2);
        cairo_clip(cr);
        personPath(cr, 11.6, 10.4, 10.6);
        cairo_fill(cr);
        cairo_restore(cr);
        cairo_set_line_width(cr, 1.5);
        cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
        cairo_move_to(cr, 17.0, 12.8);
        cairo_line_to(cr, 20.4, 12.8);
        cairo_move_to(cr, 17.0, 16.2);
        cairo_line_to(cr, 19.4, 16.2);
        cairo_stroke(cr);
    });
}

// Mail picture rows: square, full-bleed contact pictures. The page cuts them round or square
// itself, so anything that matters stays inside the inscribed circle.
void avatarTile(cairo_t* cr) {
    verticalGradient(cr, 0, kRow, palette::kAvatarTop, palette::kAvatarBottom);
    cairo_paint(cr);
}

void drawAvatarDefault(cairo_t* cr, double, double) {
    avatarTile(cr);
    setColor(cr, palette::kAvatarFigure);
    personPath(cr, kRow / 2, 6.4, 23.2);
    cairo_fill(cr);
}

void drawAvatarMe(cairo_t* cr, double, double) {
    avatarTile(cr);
    setColor(cr, palette::kAvatarFigure);
    personPath(cr, 13.2, 6.4, 23.2);
    cairo_fill(cr);
    // "This is you": a violet check badge, ringed so it lifts off the figure.
    const double bx = 20.6;
    const double by = 19.4;
    setColor(cr, palette::kWhite);
    circle(cr, bx, by, 4.9);
    cairo_fill(cr);
    setColor(cr, palette::kViolet);
    circle(cr, bx, by, 3.9);
    cairo_fill(cr);
    setColor(cr, palette::kWhite);
    cairo_set_line_width(cr, 1.25);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    cairo_move_to(cr, bx - 1.8, by + 0.1);
    cairo_line_to(cr, bx - 0.5, by + 1.4);
    cairo_line_to(cr, bx + 1.9, by - 1.3);
    cairo_stroke(cr);
}

void drawAvatarGroup(cairo_t* cr, double, double) {
    avatarTile(cr);
    // The one behind, a step right and a shade darker; the front one is outlined in the
    // tile's colour so the two read as two.
    setColor(cr, palette::kAvatarFigureBack);
    personPath(cr, 18.4, 8.0, 21.0);
    cairo_fill(cr);
    cairo_save(cr);
    personPath(cr, 11.4, 9.0, 20.0);
    setColor(cr, palette::kAvatarBottom);
    cairo_set_line_width(cr, 1.6);
    cairo_stroke_preserve(cr);
    setColor(cr, palette::kAvatarFigure);
    cairo_fill(cr);
    cairo_restore(cr);
}

// ---------------------------------------------------------------------------------------------

using Draw = void (*)(cairo_t*, double, double);

struct Picture {
    std::string_view name;  // without scale suffix or extension
    double width;           // points
    double height;
    std::vector<int> scales;
    Draw draw;
};

struct Rendered {
    std::string file;
    std::vector<unsigned char> png;
};

cairo_status_t appendPng(void* closure, const unsigned char* data, unsigned int length) {
    auto* out = static_cast<std::vector<unsigned char>*>(closure);
    out->insert(out->end(), data, data + length);
    return CAIRO_STATUS_SUCCESS;
}

std::string fileName(std::string_view name, int scale) {
    std::string file(name);
    // Appended piece by piece: GCC 12 at -O3 reports `"@" + std::to_string(...)` as an
    // overlapping copy.
    if (scale != 1) {
        file += '@';
        file += std::to_string(scale);
        file += 'x';
    }
    file += ".png";
    return file;
}

bool render(const Picture& picture, int scale, Rendered& out) {
    const int pw = static_cast<int>(std::lround(picture.width * scale));
    const int ph = static_cast<int>(std::lround(picture.height * scale));
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, pw, ph);
    cairo_t* cr = cairo_create(surface);
    cairo_scale(cr, scale, scale);
    picture.draw(cr, picture.width, picture.height);
    const cairo_status_t drawn = cairo_status(cr);
    cairo_destroy(cr);
    out.file = fileName(picture.name, scale);
    out.png.clear();
    const cairo_status_t written =
        drawn == CAIRO_STATUS_SUCCESS
            ? cairo_surface_write_to_png_stream(surface, appendPng, &out.png)
            : drawn;
    cairo_surface_destroy(surface);
    if (written != CAIRO_STATUS_SUCCESS) {
        std::fprintf(stderr, "make_resource_images: %s: %s\n", out.file.c_str(),
                     cairo_status_to_string(written));
        return false;
    }
    return true;
}

std::vector<Picture> catalogue() {
    const std::vector<int> all = {1, 2, 3};
    return {
        {"nav", 40, 40, all, drawNav},
        {"Velto", 22, 22, all, drawVelto},
        {"twitter", 300, 157, {1, 2}, drawTwitter},
        {"twitter_velto", 300, 157, {1, 2}, drawTwitterVelto},
        // The extension looks for the stock avatar under its @3x name only.
        {"recent", 60, 60, {3}, drawStockAvatar},
        {"icon_general", kRow, kRow, all, drawIconGeneral},
        {"icon_lockscreen", kRow, kRow, all, drawIconLockScreen},
        {"icon_nc", kRow, kRow, all, drawIconNotificationCenter},
        {"icon_excluded", kRow, kRow, all, drawIconExcluded},
        {"icon_about", kRow, kRow, all, drawIconAbout},
        {"icon_contacts", kRow, kRow, all, drawIconContacts},
        {"avatar_default", kRow, kRow, all, drawAvatarDefault},
        {"avatar_me", kRow, kRow, all, drawAvatarMe},
        {"avatar_group", kRow, kRow, all, drawAvatarGroup},
    };
}

bool readFile(const std::filesystem::path& path, std::vector<unsigned char>& bytes) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return true;
}

bool writeFile(const std::filesystem::path& path, const std::vector<unsigned char>& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
    return static_cast<bool>(out);
}

int usage() {
    std::fprintf(stderr,
                 "usage: make_resource_images <folder>\n"
                 "       make_resource_images --check <folder>\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    bool check = false;
    std::filesystem::path folder;
    if (argc == 2 && std::string_view(argv[1]) != "--check") {
        folder = argv[1];
    } else if (argc == 3 && std::string_view(argv[1]) == "--check") {
        check = true;
        folder = argv[2];
    } else {
        return usage();
    }

    if (!check) {
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        if (error) {
            std::fprintf(stderr, "make_resource_images: %s: %s\n", folder.c_str(),
                         error.message().c_str());
            return 1;
        }
    }

    int failures = 0;
    for (const Picture& picture : catalogue()) {
        for (int scale : picture.scales) {
            Rendered rendered;
            if (!render(picture, scale, rendered)) {
                ++failures;
                continue;
            }
            const std::filesystem::path path = folder / rendered.file;
            if (check) {
                std::vector<unsigned char> existing;
                if (!readFile(path, existing) || existing != rendered.png) {
                    std::fprintf(stderr, "make_resource_images: %s is out of date\n", path.c_str());
                    ++failures;
                }
            } else if (!writeFile(path, rendered.png)) {
                std::fprintf(stderr, "make_resource_images: cannot write %s\n", path.c_str());
                ++failures;
            } else {
                std::printf("%s (%zu bytes)\n", path.c_str(), rendered.png.size());
            }
        }
    }
    return failures == 0 ? 0 : 1;
}
