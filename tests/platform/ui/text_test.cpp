#include <gtest/gtest.h>

#include "platform/foundation/errors.h"
#include "platform/ui/attributed_string.h"
#include "platform/ui/color.h"
#include "platform/ui/font.h"

namespace {

using plat::AttributedString;
using plat::Value;
using Range = AttributedString::Range;

// The About header's two runs are checked on the page; here, what the page relies on.
TEST(AttributedString, NullAttributesStayAndEffectiveRangesSpanTheRun) {
    const std::string text = "Title 1\nA smaller second line";
    auto small = plat::Font::fontWithName("HelveticaNeue-Light", 14);
    // A null attribute given at creation stays; nil ones are left out.
    AttributedString s(text, {{plat::NSKernAttributeName, Value::null()}});
    s.addAttribute(plat::NSFontAttributeName, plat::Font::systemFontOfSize(26), {0, 7});
    s.addAttribute(plat::NSFontAttributeName, small, {7, s.length() - 7});
    ASSERT_EQ(s.runs().size(), 2u);
    for (const auto& run : s.runs())
        EXPECT_TRUE(run.attributes.at(plat::NSKernAttributeName).isNull());
    // The newline at 7 carries the small font.
    Range effective;
    EXPECT_EQ(s.attributesAtIndex(7, &effective).at(plat::NSFontAttributeName).as<plat::Font>(),
              small);
    EXPECT_EQ(effective, (Range{7, text.size() - 7}));
}

TEST(AttributedString, RangesSplitAndEqualNeighboursMerge) {
    AttributedString s("abcdefghij");
    s.addAttribute(plat::NSKernAttributeName, Value::real(2), {3, 4});
    ASSERT_EQ(s.runs().size(), 3u);
    EXPECT_TRUE(s.runs()[0].attributes.empty());
    EXPECT_EQ(s.runs()[1].range, (Range{3, 4}));
    EXPECT_EQ(s.runs()[2].range, (Range{7, 3}));

    // Equal fonts are equal attributes even as separate objects, so the runs join up.
    s.addAttribute(plat::NSFontAttributeName, plat::Font::systemFontOfSize(12), {0, 10});
    s.addAttribute(plat::NSKernAttributeName, Value::real(2), {0, 3});
    s.addAttribute(plat::NSKernAttributeName, Value::real(2), {7, 3});
    s.addAttribute(plat::NSFontAttributeName, plat::Font::systemFontOfSize(12), {2, 5});
    ASSERT_EQ(s.runs().size(), 1u);
    EXPECT_EQ(s.runs()[0].range, (Range{0, 10}));
}

TEST(AttributedString, CountsUtf16UnitsAndRaisesPastTheEnd) {
    AttributedString s("\xC3\xA9\xF0\x9F\x98\x80z");  // é, an emoji (two units), z
    EXPECT_EQ(s.length(), 4u);
    s.addAttribute(plat::NSKernAttributeName, Value::integer(1), {1, 2});
    Range effective;
    s.attributesAtIndex(2, &effective);
    EXPECT_EQ(effective, (Range{1, 2}));
    EXPECT_EQ(s.description().find("\xF0\x9F\x98\x80{"), s.description().find("}") + 1);

    EXPECT_NO_THROW(s.addAttribute(plat::NSKernAttributeName, Value::integer(1), {4, 0}));
    for (Range bad : {Range{3, 2}, Range{5, 0}, Range{1, SIZE_MAX}})
        EXPECT_THROW(s.addAttribute(plat::NSKernAttributeName, Value::integer(1), bad),
                     plat::RangeError);
    EXPECT_THROW(s.attributesAtIndex(4), plat::RangeError);
    EXPECT_THROW(AttributedString("").attributesAtIndex(0), plat::RangeError);
}

TEST(FontsAndColours, CompareByValue) {
    EXPECT_EQ(*plat::Font::systemFontOfSize(26), *plat::Font::fontWithName(".SFUI-Regular", 26));
    EXPECT_FALSE(*plat::Font::systemFontOfSize(26) == *plat::Font::systemFontOfSize(14));

    EXPECT_EQ(plat::Color::colorWithRGBA(1, 0.5, 0, 1)->hexString(), "#FF8000FF");
    EXPECT_EQ(plat::Color::colorWithRGBA(2, -1, 0, 0.2)->hexString(), "#FF000033");
    EXPECT_EQ(plat::Color::clearColor()->hexString(), "#00000000");
    EXPECT_EQ(*plat::Color::colorWithRGBA(0.2, 0.4, 0.6, 1),
              *plat::Color::colorWithRGBA(0.2, 0.4, 0.6, 1));
    // A grey never equals the RGB colour that looks the same, as in UIKit.
    EXPECT_FALSE(*plat::Color::whiteColor() == *plat::Color::colorWithRGBA(1, 1, 1, 1));
    EXPECT_TRUE(plat::Color::whiteColor()->isGrey());
}

}  // namespace
