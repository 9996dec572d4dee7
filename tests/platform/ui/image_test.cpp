#include "platform/ui/image.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

// After the standard headers: jpeglib.h expects size_t and FILE to be declared already.
#include <gtest/gtest.h>
#include <jpeglib.h>

#include "platform/system/bundle.h"
#include "tests/platform/ui/pictures.h"
#include "tests/support/test_device.h"

namespace {

using namespace uitest;
using plat::Bytes;
using plat::Image;

// A baseline JPEG made by libjpeg itself: the left half red, the right half green, or all
// mid grey when `grey` is asked for (one component).
Bytes jpeg(int width, int height, bool grey = false) {
    jpeg_compress_struct info;
    jpeg_error_mgr error;
    info.err = jpeg_std_error(&error);
    jpeg_create_compress(&info);
    unsigned char* buffer = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &buffer, &size);
    info.image_width = width;
    info.image_height = height;
    info.input_components = grey ? 1 : 3;
    info.in_color_space = grey ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 95, TRUE);
    jpeg_start_compress(&info, TRUE);
    std::vector<unsigned char> row(width * info.input_components);
    for (int x = 0; x < width; ++x) {
        if (grey) {
            row[x] = 128;
        } else {
            row[x * 3 + 0] = x < width / 2 ? 255 : 0;
            row[x * 3 + 1] = x < width / 2 ? 0 : 255;
            row[x * 3 + 2] = 0;
        }
    }
    while (info.next_scanline < info.image_height) {
        JSAMPROW rows[] = {row.data()};
        jpeg_write_scanlines(&info, rows, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    Bytes out(buffer, buffer + size);
    std::free(buffer);
    return out;
}

Bytes pngOf(const plat::ImagePtr& image) {
    return *plat::UIImagePNGRepresentation(image.get());
}

TEST(ImageData, PngRoundTripKeepsPremultipliedPixelsAndScale) {
    // Opaque red on the left, half-transparent blue on the right.
    auto original = picture(4, 2, 2, {{0, 0, 2, 2, 1, 0, 0}, {2, 0, 2, 2, 0, 0, 1, 128 / 255.0}});
    const Bytes png = pngOf(original);
    ASSERT_GE(png.size(), 8u);
    EXPECT_EQ(png[1], 'P');

    auto decoded = Image::imageWithData(png, 2);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->pixelWidth(), 4);
    EXPECT_EQ(decoded->pixelHeight(), 2);
    EXPECT_EQ(decoded->size(), (plat::Size{2, 1}));
    EXPECT_EQ(decoded->pixel(0, 1), kRed);
    EXPECT_EQ(decoded->pixel(3, 0), 0x80000080u);  // blue premultiplied by alpha 128
    EXPECT_EQ(decoded->pixel(4, 0), 0u);           // outside
    EXPECT_NE(decoded->description().find("size {2, 1} scale 2"), std::string::npos);

    EXPECT_FALSE(plat::UIImagePNGRepresentation(nullptr));
}

TEST(ImageData, OpaquePngReadsBackWithFullAlpha) {
    // cairo stores an all-opaque picture as an RGB PNG, which decodes without an alpha channel.
    auto decoded = Image::imageWithData(pngOf(picture(3, 3, 1, {{0, 0, 3, 3, 0, 0, 1}})));
    ASSERT_TRUE(decoded);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x)
            EXPECT_EQ(decoded->pixel(x, y), kBlue);
}

TEST(ImageData, JpegDecodesToOpaquePixels) {
    auto colour = Image::imageWithData(jpeg(16, 8));
    ASSERT_TRUE(colour);
    EXPECT_EQ(colour->pixelWidth(), 16);
    EXPECT_EQ(colour->pixelHeight(), 8);
    const auto left = colour->pixel(2, 4), right = colour->pixel(13, 4);
    EXPECT_EQ(alpha(left), 255u);
    EXPECT_GT(red(left), 220u);
    EXPECT_LT(green(left), 40u);
    EXPECT_EQ(alpha(right), 255u);
    EXPECT_GT(green(right), 220u);
    EXPECT_LT(red(right), 40u);

    auto grey = Image::imageWithData(jpeg(8, 8, true));
    ASSERT_TRUE(grey);
    const auto p = grey->pixel(4, 4);
    EXPECT_EQ(alpha(p), 255u);
    EXPECT_NEAR(red(p), 128, 2);
    EXPECT_EQ(red(p), green(p));
    EXPECT_EQ(green(p), blue(p));
}

TEST(ImageData, UndecodableBytesGiveNoImage) {
    const Bytes png = pngOf(picture(8, 8, 1, {{0, 0, 4, 4, 1, 0, 0}}));
    const Bytes jpg = jpeg(8, 8);
    Bytes pngJunk(png.begin(), png.begin() + 8);
    pngJunk.resize(200, 0x5a);
    Bytes jpgHeaderOnly(jpg.begin(), jpg.begin() + 20);
    Bytes jpgJunk = {0xff, 0xd8, 0xff, 0xe0};
    jpgJunk.resize(300, 0x00);

    for (const Bytes& bad :
         {Bytes{}, Bytes{'h', 'e', 'l', 'l', 'o'}, Bytes(png.begin(), png.begin() + png.size() / 2),
          pngJunk, jpgHeaderOnly, jpgJunk}) {
        EXPECT_FALSE(Image::imageWithData(bad)) << "size " << bad.size();
    }
}

class ImageFiles : public ::testing::Test {
  protected:
    void put(const std::string& devicePath, int pixels) {
        auto bytes = pngOf(picture(pixels, pixels, 1, {{0, 0, pixels, pixels, 0, 1, 0}}));
        device.writeText(devicePath, std::string(bytes.begin(), bytes.end()));
    }
    testsupport::TestDevice device;
    const std::string folder = "/System/Library/PreferenceBundles/Pictures.bundle";
};

TEST_F(ImageFiles, ScaleComesFromTheFileName) {
    put("/pics/icon@2x.png", 8);
    put("/pics/icon@3x~ipad.png", 9);
    put("/pics/plain.png", 8);
    device.writeText("/pics/notes.png", "not a picture");

    auto two = Image::imageWithContentsOfFile("/pics/icon@2x.png");
    ASSERT_TRUE(two);
    EXPECT_EQ(two->scale(), 2);
    EXPECT_EQ(two->size(), (plat::Size{4, 4}));
    auto three = Image::imageWithContentsOfFile("/pics/icon@3x~ipad.png");
    ASSERT_TRUE(three);
    EXPECT_EQ(three->scale(), 3);
    auto plain = Image::imageWithContentsOfFile("/pics/plain.png");
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->scale(), 1);
    EXPECT_EQ(plain->pixel(7, 7), 0xff00ff00u);

    EXPECT_FALSE(Image::imageWithContentsOfFile("/pics/missing.png"));
    EXPECT_FALSE(Image::imageWithContentsOfFile("/pics/notes.png"));
}

TEST_F(ImageFiles, ImageNamedPrefersTheScreenScaleThenOthersThenThePlainFile) {
    // Each variant is 2 points wide, so its pixel width tells which file was taken.
    put(folder + "/nav@2x.png", 4);
    put(folder + "/nav@3x.png", 6);
    put(folder + "/nav.png", 2);
    const plat::Bundle bundle(folder);

    device.setProfile("iPad", 2);
    EXPECT_EQ(Image::imageNamed("nav", bundle)->pixelWidth(), 4);
    device.setProfile("iPhone", 3);
    EXPECT_EQ(Image::imageNamed("nav", bundle)->pixelWidth(), 6);

    std::filesystem::remove(device.host(folder + "/nav@3x.png"));
    auto fallback = Image::imageNamed("nav", bundle);
    EXPECT_EQ(fallback->pixelWidth(), 4);
    EXPECT_EQ(fallback->scale(), 2);

    std::filesystem::remove(device.host(folder + "/nav@2x.png"));
    auto plain = Image::imageNamed("nav", bundle);
    EXPECT_EQ(plain->pixelWidth(), 2);
    EXPECT_EQ(plain->scale(), 1);

    EXPECT_FALSE(Image::imageNamed("other", bundle));

    // A name with an extension is the file's name as it stands.
    put(folder + "/recent@3x.png", 6);
    EXPECT_EQ(Image::imageNamed("recent@3x.png", bundle)->scale(), 3);
    EXPECT_EQ(Image::imageNamed("nav.png", bundle)->pixelWidth(), 2);
    EXPECT_FALSE(Image::imageNamed("recent.png", bundle));
}

}  // namespace
