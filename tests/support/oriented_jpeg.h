#pragma once

// A photo as a phone stores it: JPEG pixels as the sensor saw them and an EXIF orientation
// that says how to turn them upright. Header-only, made with libjpeg, independently of the
// decoder under test.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

// After the standard headers: jpeglib.h expects size_t and FILE to be declared already.
#include <jpeglib.h>

namespace testsupport {

// The upright picture: 32 × 16, its top left quarter red, top right quarter green, bottom
// half blue. Colours as 0xRRGGBB.
inline std::uint32_t uprightColour(int x, int y) {
    return y >= 8 ? 0x0000ff : x < 16 ? 0xff0000 : 0x00ff00;
}
inline constexpr int kUprightWidth = 32;
inline constexpr int kUprightHeight = 16;

// What the camera stored for each orientation, written out per case rather than derived:
// 3 is the picture turned half round; 6 turned a quarter anticlockwise (to be turned back
// clockwise); 8 a quarter clockwise.
inline std::uint32_t storedColour(int orientation, int x, int y) {
    switch (orientation) {
        case 3:
            return uprightColour(kUprightWidth - 1 - x, kUprightHeight - 1 - y);
        case 6:  // 16 wide, 32 high: left half green over red, right half blue
            return x >= 8 ? 0x0000ff : y < 16 ? 0x00ff00 : 0xff0000;
        case 8:  // 16 wide, 32 high: right half red over green, left half blue
            return x < 8 ? 0x0000ff : y < 16 ? 0xff0000 : 0x00ff00;
        default:
            return uprightColour(x, y);
    }
}

// A JPEG made by libjpeg itself, baseline unless asked for progressive, each pixel 0xRRGGBB
// from colourAt, with an EXIF orientation block unless orientation is 0.
template <class ColourAt>
std::vector<std::uint8_t> encodeJpeg(int width, int height, ColourAt colourAt, int orientation = 0,
                                     bool progressive = false) {
    jpeg_compress_struct info;
    jpeg_error_mgr error;
    info.err = jpeg_std_error(&error);
    jpeg_create_compress(&info);
    unsigned char* buffer = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &buffer, &size);
    info.image_width = width;
    info.image_height = height;
    info.input_components = 3;
    info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 95, TRUE);
    if (progressive) jpeg_simple_progression(&info);
    jpeg_start_compress(&info, TRUE);
    // Written byte by byte rather than by libexif, which the decoder reads it with: "Exif\0\0",
    // a little-endian TIFF header, IFD0 at 8 with one entry, Orientation (0x0112, SHORT, 1),
    // and no next IFD.
    const unsigned char o = static_cast<unsigned char>(orientation);
    const unsigned char exif[] = {'E',  'x', 'i', 'f', 0, 0, 'I', 'I', 42, 0, 8, 0, 0, 0, 1, 0,
                                  0x12, 1,   3,   0,   1, 0, 0,   0,   o,  0, 0, 0, 0, 0, 0, 0};
    if (orientation) jpeg_write_marker(&info, JPEG_APP0 + 1, exif, sizeof exif);
    std::vector<unsigned char> row(static_cast<std::size_t>(width) * 3);
    while (info.next_scanline < info.image_height) {
        const int y = static_cast<int>(info.next_scanline);
        for (int x = 0; x < width; ++x)
            for (int channel = 0; channel < 3; ++channel)
                row[x * 3 + channel] = colourAt(x, y) >> (16 - 8 * channel) & 0xff;
        JSAMPROW rows[] = {row.data()};
        jpeg_write_scanlines(&info, rows, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    std::vector<std::uint8_t> out(buffer, buffer + size);
    std::free(buffer);
    return out;
}

// The stored picture as JPEG bytes, with the EXIF block unless the orientation is 0.
inline std::vector<std::uint8_t> orientedJpeg(int orientation) {
    const bool quarter = orientation >= 5;
    return encodeJpeg(
        quarter ? kUprightHeight : kUprightWidth, quarter ? kUprightWidth : kUprightHeight,
        [orientation](int x, int y) { return storedColour(orientation, x, y); }, orientation);
}

}  // namespace testsupport
