#include "platform/ui/image_context.h"

#include <gtest/gtest.h>

#include "tests/platform/ui/pictures.h"
#include "tests/support/test_device.h"

namespace {

using namespace uitest;
using plat::ImagePtr;

// One red pixel beside one blue pixel.
ImagePtr redBlue() {
    return picture(2, 1, 1, {{0, 0, 1, 1, 1, 0, 0}, {1, 0, 1, 1, 0, 0, 1}});
}

// Draws `image` into `rect` of a fresh context and returns what came out.
ImagePtr render(plat::Size canvas, bool opaque, double scale, const plat::Image* image,
                plat::Rect rect) {
    plat::UIGraphicsBeginImageContextWithOptions(canvas, opaque, scale);
    plat::drawInRect(image, rect);
    ImagePtr out = plat::UIGraphicsGetImageFromCurrentImageContext();
    plat::UIGraphicsEndImageContext();
    return out;
}

TEST(ImageContext, StretchesThePictureOverTheWholeRectangle) {
    auto source = redBlue();
    auto out = render({10, 10}, false, 2, source.get(), {{0, 0}, {10, 10}});
    ASSERT_TRUE(out);
    EXPECT_EQ(out->pixelWidth(), 20);
    EXPECT_EQ(out->pixelHeight(), 20);
    EXPECT_EQ(out->scale(), 2);
    EXPECT_EQ(out->size(), (plat::Size{10, 10}));
    // The aspect ratio is not kept: every row, top to bottom, shows red then blue.
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 5; ++x)
            EXPECT_EQ(out->pixel(x, y), kRed) << x << "," << y;
        for (int x = 15; x < 20; ++x)
            EXPECT_EQ(out->pixel(x, y), kBlue) << x << "," << y;
        for (int x = 5; x < 15; ++x)
            EXPECT_EQ(alpha(out->pixel(x, y)), 255u);
    }
}

TEST(ImageContext, BackgroundIsTransparentOrBlackAndOnlyTheRectangleIsPainted) {
    auto source = redBlue();
    auto clear = render({10, 10}, false, 1, source.get(), {{2, 2}, {4, 4}});
    ASSERT_TRUE(clear);
    EXPECT_EQ(clear->pixel(0, 0), 0u);
    EXPECT_EQ(clear->pixel(9, 9), 0u);
    EXPECT_EQ(clear->pixel(6, 3), 0u);
    EXPECT_EQ(clear->pixel(2, 3), kRed);
    EXPECT_EQ(clear->pixel(5, 5), kBlue);

    auto opaque = render({3, 2}, true, 1, nullptr, {{0, 0}, {3, 2}});
    ASSERT_TRUE(opaque);
    EXPECT_EQ(opaque->pixel(2, 1), 0xff000000u);
    auto empty = render({3, 2}, false, 1, nullptr, {{0, 0}, {3, 2}});
    EXPECT_EQ(empty->pixel(2, 1), 0u);
}

TEST(ImageContext, ScaleZeroMeansTheMainScreenScale) {
    {
        testsupport::TestDevice device;
        device.setProfile("iPhone", 3);
        auto out = render({2.5, 4}, false, 0, nullptr, {});
        ASSERT_TRUE(out);
        EXPECT_EQ(out->pixelWidth(), 8);  // 7.5 rounds up
        EXPECT_EQ(out->pixelHeight(), 12);
        EXPECT_EQ(out->scale(), 3);
    }
    auto outside = render({2, 2}, false, 0, nullptr, {});
    EXPECT_EQ(outside->pixelWidth(), 2);
}

TEST(ImageContext, ContextsStackAndSnapshotsDoNotChangeAfterwards) {
    EXPECT_FALSE(plat::UIGraphicsGetImageFromCurrentImageContext());
    plat::UIGraphicsEndImageContext();  // nothing to end: harmless

    auto source = redBlue();
    plat::UIGraphicsBeginImageContextWithOptions({1, 1}, false, 1);
    plat::UIGraphicsBeginImageContextWithOptions({4, 2}, false, 1);
    auto before = plat::UIGraphicsGetImageFromCurrentImageContext();
    plat::drawInRect(source.get(), {{0, 0}, {4, 2}});
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

TEST(ImageCuts, CircleClearsTheCornersAndKeepsTheMiddle) {
    auto wide = picture(30, 20, 2, {{0, 0, 30, 20, 1, 0, 0}});
    auto round = plat::imageClippedToCircle(*wide);
    ASSERT_TRUE(round);
    EXPECT_EQ(round->pixelWidth(), 30);
    EXPECT_EQ(round->scale(), 2);
    for (auto [x, y] : {std::pair{0, 0}, {29, 0}, {0, 19}, {29, 19}, {3, 10}, {26, 10}})
        EXPECT_EQ(alpha(round->pixel(x, y)), 0u) << x << "," << y;
    EXPECT_EQ(round->pixel(15, 10), kRed);
    EXPECT_EQ(round->pixel(7, 10), kRed);  // inside the circle of diameter 20
    EXPECT_EQ(round->pixel(15, 1), kRed);
}

TEST(ImageCuts, SquareKeepsTheCentreAndItsCorners) {
    // Blue margins left and right of a green centre square.
    auto wide = picture(30, 20, 3,
                        {{0, 0, 5, 20, 0, 0, 1}, {5, 0, 20, 20, 0, 1, 0}, {25, 0, 5, 20, 0, 0, 1}});
    auto square = plat::imageCroppedToSquare(*wide);
    ASSERT_TRUE(square);
    EXPECT_EQ(square->pixelWidth(), 20);
    EXPECT_EQ(square->pixelHeight(), 20);
    EXPECT_EQ(square->scale(), 3);
    for (auto [x, y] : {std::pair{0, 0}, {19, 0}, {0, 19}, {19, 19}, {10, 10}})
        EXPECT_EQ(square->pixel(x, y), 0xff00ff00u) << x << "," << y;

    auto tall = plat::imageCroppedToSquare(*picture(4, 8, 1, {{0, 2, 4, 4, 1, 0, 0}}));
    EXPECT_EQ(tall->pixelHeight(), 4);
    EXPECT_EQ(tall->pixel(0, 0), kRed);
    EXPECT_EQ(tall->pixel(3, 3), kRed);
}

}  // namespace
