// Generated home-screen icons: shape, colour and letter, drawn without any font.

#include "device/app_icon.h"

#include <gtest/gtest.h>

#include "device/glyphs.h"

namespace velto::device {
namespace {

struct Rgba {
    int red, green, blue, alpha;
};

Rgba at(const plat::Image& image, int x, int y) {
    const std::uint32_t word = image.pixel(x, y);
    return {static_cast<int>((word >> 16) & 0xff), static_cast<int>((word >> 8) & 0xff),
            static_cast<int>(word & 0xff), static_cast<int>(word >> 24)};
}

bool isWhite(const Rgba& pixel) {
    return pixel.red == 255 && pixel.green == 255 && pixel.blue == 255 && pixel.alpha == 255;
}

TEST(AppIcon, ARoundedSquareInTheAppsColour) {
    const auto icon = drawAppIcon("com.example.Chat", "Chat", 180, 3);
    ASSERT_TRUE(icon);
    EXPECT_EQ(icon->pixelWidth(), 180);
    EXPECT_EQ(icon->pixelHeight(), 180);
    EXPECT_EQ(icon->scale(), 3);
    // Rounded: the corners are transparent, the edges' middles are not.
    EXPECT_EQ(at(*icon, 0, 0).alpha, 0);
    EXPECT_EQ(at(*icon, 179, 179).alpha, 0);
    EXPECT_EQ(at(*icon, 90, 1).alpha, 255);

    const IconColor color = iconColorFor("com.example.Chat");
    const Rgba fill = at(*icon, 20, 90);
    EXPECT_NEAR(fill.red, color.red * 255, 1.5);
    EXPECT_NEAR(fill.green, color.green * 255, 1.5);
    EXPECT_NEAR(fill.blue, color.blue * 255, 1.5);
}

TEST(AppIcon, TheColourIsStablePerIdentifierAndDiffersBetweenThem) {
    const IconColor a = iconColorFor("net.whatsapp.WhatsApp");
    const IconColor again = iconColorFor("net.whatsapp.WhatsApp");
    const IconColor b = iconColorFor("com.bitesms");
    EXPECT_EQ(a.red, again.red);
    EXPECT_EQ(a.green, again.green);
    EXPECT_EQ(a.blue, again.blue);
    EXPECT_TRUE(a.red != b.red || a.green != b.green || a.blue != b.blue);
    for (const IconColor& c : {a, b})
        for (double component : {c.red, c.green, c.blue}) {
            EXPECT_GE(component, 0);
            EXPECT_LE(component, 1);
        }
}

TEST(AppIcon, TheInitialIsDrawnInWhiteFromItsGlyph) {
    // 100 px: 9-pixel dots, the 5 x 7 letter starting at (27.5, 18.5).
    const auto icon = drawAppIcon("com.example.Tea", "tea", 100, 1);
    const Glyph& t = glyphFor('T');
    for (int row = 0; row < kGlyphRows; ++row)
        for (int column = 0; column < kGlyphColumns; ++column) {
            const int x = static_cast<int>(27.5 + 9 * column + 4.5);
            const int y = static_cast<int>(18.5 + 9 * row + 4.5);
            EXPECT_EQ(isWhite(at(*icon, x, y)), t[row][column] == '#')
                << "row " << row << " column " << column;
        }
}

}  // namespace
}  // namespace velto::device
