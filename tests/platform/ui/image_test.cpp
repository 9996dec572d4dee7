#include "platform/ui/image.h"

#include <cstddef>
#include <filesystem>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "platform/system/bundle.h"
#include "tests/platform/ui/pictures.h"
#include "tests/support/oriented_jpeg.h"
#include "tests/support/test_device.h"

namespace {

using namespace uitest;
using plat::Bytes;
using plat::Image;

Bytes pngOf(const plat::ImagePtr& image) {
    return *plat::UIImagePNGRepresentation(image.get());
}

TEST(ImageData, PngDecodesToPremultipliedPixelsAtTheGivenScale) {
    // Opaque red on the left, half-transparent blue on the right.
    auto decoded = Image::imageWithData(
        pngOf(picture(4, 2, 2, {{0, 0, 2, 2, 1, 0, 0}, {2, 0, 2, 2, 0, 0, 1, 128 / 255.0}})), 2);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->size(), (plat::Size{2, 1}));
    EXPECT_EQ(decoded->pixelWidth(), 4);
    EXPECT_EQ(decoded->pixel(0, 1), kRed);
    EXPECT_EQ(decoded->pixel(3, 0), 0x80000080u);  // blue premultiplied by alpha 128
    EXPECT_EQ(decoded->pixel(4, 0), 0u);           // outside
    EXPECT_NE(decoded->description().find("size {2, 1} scale 2"), std::string::npos);
    EXPECT_FALSE(plat::UIImagePNGRepresentation(nullptr));
}

TEST(ImageData, UndecodableBytesGiveNoImage) {
    const Bytes png = pngOf(picture(8, 8, 1, {{0, 0, 4, 4, 1, 0, 0}}));
    const Bytes jpg = testsupport::orientedJpeg(0);
    Bytes pngJunk(png.begin(), png.begin() + 8);
    pngJunk.resize(200, 0x5a);
    Bytes jpgJunk = {0xff, 0xd8, 0xff, 0xe0};
    jpgJunk.resize(300, 0x00);
    for (const Bytes& bad :
         {Bytes{}, Bytes{'h', 'e', 'l', 'l', 'o'}, Bytes(png.begin(), png.begin() + png.size() / 2),
          pngJunk, Bytes(jpg.begin(), jpg.begin() + 20), jpgJunk})
        EXPECT_FALSE(Image::imageWithData(bad)) << "size " << bad.size();
}

// A grey 8 × 8 progressive JPEG whose frame header then claims 9000 × 9000: its scans run
// out at once, and libjpeg fills in the rest, all 240 MB of coefficients of it.
Bytes forgedProgressiveJpeg() {
    Bytes forged = testsupport::encodeJpeg(
        8, 8, [](int, int) { return 0x808080u; }, 0, true);
    for (std::size_t at = 2; at + 9 < forged.size();
         at += 2 + (forged[at + 2] << 8 | forged[at + 3]))
        if (forged[at] == 0xff && forged[at + 1] == 0xc2)
            for (std::size_t side : {at + 5, at + 7}) {
                forged[side] = 9000 >> 8;
                forged[side + 1] = 9000 & 0xff;
            }
    return forged;
}

// Refused from the header, the child that decodes it stays near the parent's size.
TEST(ImageData, ForgedJpegSizeIsRefusedBeforeTheDecoderAllocates) {
    const Bytes forged = forgedProgressiveJpeg();
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) _exit(Image::imageWithData(forged) ? 1 : 0);
    int status = 0;
    rusage decoder{}, self{};
    ASSERT_EQ(wait4(child, &status, 0, &decoder), child);
    getrusage(RUSAGE_SELF, &self);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_LT(decoder.ru_maxrss, self.ru_maxrss + 100 * 1024) << "KB";
}

// A phone's photo stands as its EXIF orientation says, whichever way the camera was held;
// without EXIF it stands as stored. Every case is a JPEG decoded to its size and colours.
TEST(ImageData, ExifOrientationDecodesUpright) {
    for (int orientation : {0, 1, 3, 6, 8}) {
        SCOPED_TRACE(orientation);
        auto photo = Image::imageWithData(testsupport::orientedJpeg(orientation));
        ASSERT_TRUE(photo);
        EXPECT_EQ(photo->size(),
                  (plat::Size{testsupport::kUprightWidth, testsupport::kUprightHeight}));
        for (auto [x, y] : {std::pair{6, 3}, {26, 3}, {6, 13}, {26, 13}})
            EXPECT_TRUE(near(photo->pixel(x, y), 0xff000000 | testsupport::uprightColour(x, y), 35))
                << x << ", " << y << ": " << std::hex << photo->pixel(x, y);
    }
}

// The PNG's colour type (byte 25, in IHDR): 6 with an alpha channel, 2 without.
int pngColourType(const plat::ImagePtr& image) {
    return pngOf(image).at(25);
}

// A context's picture, with or without alpha, painted all over in opaque blue.
plat::ImagePtr fromContext(bool opaque) {
    return render({4, 4}, opaque, 1, picture(2, 2, 1, {{0, 0, 2, 2, 0, 0, 1}}), {{0, 0}, {4, 4}});
}

TEST(ImagePng, AnImageWithAnAlphaChannelKeepsItEvenWhenEveryPixelIsOpaque) {
    EXPECT_EQ(pngColourType(fromContext(false)), 6);
    EXPECT_EQ(pngColourType(fromContext(true)), 2);
    EXPECT_EQ(pngColourType(Image::imageWithData(testsupport::orientedJpeg(0))), 2);
    // What is read back keeps what was written: an RGB file stays RGB, an RGBA one RGBA.
    EXPECT_EQ(pngColourType(Image::imageWithData(pngOf(fromContext(true)))), 2);
    EXPECT_EQ(pngColourType(Image::imageWithData(pngOf(fromContext(false)))), 6);
    EXPECT_EQ(Image::imageWithData(pngOf(fromContext(false)))->pixel(3, 3), kBlue);
}

class ImageFiles : public ::testing::Test {
  protected:
    // A square green picture of `pixels` a side.
    void put(const std::string& devicePath, int pixels) {
        auto bytes = pngOf(picture(pixels, pixels, 1, {{0, 0, pixels, pixels, 0, 1, 0}}));
        device.writeText(devicePath, std::string(bytes.begin(), bytes.end()));
    }
    testsupport::TestDevice device;
};

TEST_F(ImageFiles, ScaleComesFromTheFileName) {
    put("/pics/icon@2x.png", 8);
    put("/pics/icon@3x~ipad.png", 9);
    put("/pics/plain.png", 8);
    device.writeText("/pics/notes.png", "not a picture");
    for (auto [file, scale] :
         {std::pair{"icon@2x.png", 2}, {"icon@3x~ipad.png", 3}, {"plain.png", 1}}) {
        auto image = Image::imageWithContentsOfFile(std::string("/pics/") + file);
        ASSERT_TRUE(image) << file;
        EXPECT_EQ(image->scale(), scale) << file;
        EXPECT_EQ(image->pixel(7, 7), kGreen) << file;
    }
    EXPECT_FALSE(Image::imageWithContentsOfFile("/pics/missing.png"));
    EXPECT_FALSE(Image::imageWithContentsOfFile("/pics/notes.png"));
}

TEST_F(ImageFiles, ImageNamedPrefersTheScreenScaleThenOthersThenThePlainFile) {
    // Each variant is 2 points wide, so its pixel width tells which file was taken.
    const std::string folder = "/System/Library/PreferenceBundles/Pictures.bundle";
    put(folder + "/nav@2x.png", 4);
    put(folder + "/nav@3x.png", 6);
    put(folder + "/nav.png", 2);
    const plat::Bundle bundle(folder);
    // The pixel width and scale of the picture found ({0, 0}: none).
    auto named = [&](const char* name) {
        auto image = Image::imageNamed(name, bundle);
        return image ? std::pair{image->pixelWidth(), image->scale()} : std::pair{0, 0.0};
    };

    device.setProfile("iPad", 2);
    EXPECT_EQ(named("nav"), (std::pair{4, 2.0}));
    device.setProfile("iPhone", 3);
    EXPECT_EQ(named("nav"), (std::pair{6, 3.0}));
    std::filesystem::remove(device.host(folder + "/nav@3x.png"));
    EXPECT_EQ(named("nav"), (std::pair{4, 2.0}));
    std::filesystem::remove(device.host(folder + "/nav@2x.png"));
    EXPECT_EQ(named("nav"), (std::pair{2, 1.0}));
    EXPECT_EQ(named("other"), (std::pair{0, 0.0}));

    // A name with an extension is the file's name as it stands.
    put(folder + "/recent@3x.png", 6);
    EXPECT_EQ(named("recent@3x.png"), (std::pair{6, 3.0}));
    EXPECT_EQ(named("nav.png"), (std::pair{2, 1.0}));
    EXPECT_EQ(named("recent.png"), (std::pair{0, 0.0}));
}

}  // namespace
