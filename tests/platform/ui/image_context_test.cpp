#include "platform/ui/image_context.h"

#include <gtest/gtest.h>

#include "tests/platform/ui/pictures.h"
#include "tests/support/test_device.h"

namespace {

using namespace uitest;
using plat::ImagePtr;

// One red pixel beside one blue pixel.
const ImagePtr redBlue = picture(2, 1, 1, {{0, 0, 1, 1, 1, 0, 0}, {1, 0, 1, 1, 0, 0, 1}});

TEST(ImageContext, StretchesThePictureOverTheRectangleOnATransparentOrBlackCanvas) {
    auto out = render({10, 10}, false, 2, redBlue, {{0, 0}, {10, 10}});
    ASSERT_TRUE(out);
    EXPECT_EQ(out->pixelWidth(), 20);
    EXPECT_EQ(out->size(), (plat::Size{10, 10}));
    // The aspect ratio is not kept: every row, top to bottom, shows red then blue, solid to
    // the edges.
    for (int y = 0; y < 20; ++y) {
        for (auto [x, colour] : {std::pair{0, kRed}, {4, kRed}, {15, kBlue}, {19, kBlue}})
            EXPECT_EQ(out->pixel(x, y), colour) << x << "," << y;
        EXPECT_EQ(alpha(out->pixel(10, y)), 255u) << y;
    }

    // Only the rectangle is painted; the rest stays transparent, or black when opaque.
    auto clear = render({10, 10}, false, 1, redBlue, {{2, 2}, {4, 4}});
    ASSERT_TRUE(clear);
    for (auto [x, y, colour] :
         {std::tuple{0, 0, 0u}, {9, 9, 0u}, {6, 3, 0u}, {3, 1, 0u}, {2, 3, kRed}, {5, 5, kBlue}})
        EXPECT_EQ(clear->pixel(x, y), colour) << x << "," << y;
    EXPECT_EQ(render({3, 2}, true, 1, nullptr, {})->pixel(2, 1), 0xff000000u);
}

TEST(ImageContext, ScaleZeroMeansTheMainScreenScaleOrOneWithoutAProcess) {
    {
        testsupport::TestDevice device;
        device.setProfile("iPhone", 3);
        auto out = render({2.5, 4}, false, 0, nullptr, {});
        ASSERT_TRUE(out);
        // 7.5 pixels wide rounds up.
        EXPECT_EQ(std::pair(out->pixelWidth(), out->pixelHeight()), std::pair(8, 12));
        EXPECT_EQ(out->scale(), 3);
    }
    EXPECT_EQ(render({2, 2}, false, 0, nullptr, {})->pixelWidth(), 2);
}

TEST(ImageContext, ContextsStackAndSnapshotsDoNotChangeAfterwards) {
    EXPECT_FALSE(plat::UIGraphicsGetImageFromCurrentImageContext());
    plat::UIGraphicsEndImageContext();  // nothing to end: harmless

    plat::UIGraphicsBeginImageContextWithOptions({1, 1}, false, 1);
    plat::UIGraphicsBeginImageContextWithOptions({4, 2}, false, 1);
    auto before = plat::UIGraphicsGetImageFromCurrentImageContext();
    plat::drawInRect(redBlue.get(), {{0, 0}, {4, 2}});
    EXPECT_EQ(before->pixel(0, 0), 0u);
    EXPECT_EQ(plat::UIGraphicsGetImageFromCurrentImageContext()->pixel(0, 0), kRed);
    plat::UIGraphicsEndImageContext();
    EXPECT_EQ(plat::UIGraphicsGetImageFromCurrentImageContext()->pixelWidth(), 1);

    // A context without pixels still pairs with its End, leaving the outer one current.
    plat::UIGraphicsBeginImageContextWithOptions({0, 5}, false, 1);
    EXPECT_FALSE(plat::UIGraphicsGetImageFromCurrentImageContext());
    plat::UIGraphicsEndImageContext();
    EXPECT_TRUE(plat::UIGraphicsGetImageFromCurrentImageContext());
    plat::UIGraphicsEndImageContext();
    EXPECT_FALSE(plat::UIGraphicsGetImageFromCurrentImageContext());
}

TEST(ImageCuts, CircleAndSquareKeepTheCentreAndTheScale) {
    // Blue margins left and right of a green centre square.
    auto wide = picture(30, 20, 3,
                        {{0, 0, 5, 20, 0, 0, 1}, {5, 0, 20, 20, 0, 1, 0}, {25, 0, 5, 20, 0, 0, 1}});
    auto round = plat::imageClippedToCircle(*wide);
    ASSERT_TRUE(round);
    EXPECT_EQ(round->size(), (plat::Size{10, 20 / 3.0}));
    for (auto [x, y] : {std::pair{0, 0}, {29, 0}, {0, 19}, {29, 19}, {3, 10}, {26, 10}})
        EXPECT_EQ(alpha(round->pixel(x, y)), 0u) << x << "," << y;
    // Inside the circle of diameter 20: the middle and the ends of its diameters.
    for (auto [x, y] : {std::pair{15, 10}, {7, 10}, {22, 10}, {15, 1}})
        EXPECT_EQ(round->pixel(x, y), kGreen) << x << "," << y;

    auto square = plat::imageCroppedToSquare(*wide);
    ASSERT_TRUE(square);
    EXPECT_EQ(square->size(), (plat::Size{20 / 3.0, 20 / 3.0}));
    for (auto [x, y] : {std::pair{0, 0}, {19, 0}, {0, 19}, {19, 19}, {10, 10}})
        EXPECT_EQ(square->pixel(x, y), kGreen) << x << "," << y;
    auto tall = plat::imageCroppedToSquare(*picture(4, 8, 1, {{0, 2, 4, 4, 1, 0, 0}}));
    EXPECT_EQ(tall->pixelHeight(), 4);
    EXPECT_EQ(tall->pixel(0, 0), kRed);
    EXPECT_EQ(tall->pixel(3, 3), kRed);
}

}  // namespace
