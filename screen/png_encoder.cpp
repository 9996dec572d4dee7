#include "screen/png_encoder.h"

#include <png.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace screen {

namespace {

void appendBytes(png_structp png, png_bytep data, png_size_t length) {
    auto* out = static_cast<plat::Bytes*>(png_get_io_ptr(png));
    out->insert(out->end(), data, data + length);
}

void noFlush(png_structp) {}

}  // namespace

plat::Bytes encodeOpaquePng(cairo_surface_t* surface) {
    cairo_surface_flush(surface);
    const int width = cairo_image_surface_get_width(surface);
    const int height = cairo_image_surface_get_height(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    const unsigned char* pixels = cairo_image_surface_get_data(surface);
    plat::Bytes out;
    if (!pixels || width <= 0 || height <= 0) return out;

    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) {
        png_destroy_write_struct(&png, nullptr);
        return out;
    }
    std::vector<png_byte> row(static_cast<std::size_t>(width) * 3);
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        return {};
    }
    png_set_write_fn(png, &out, appendBytes, noFlush);
    png_set_compression_level(png, 3);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
                 PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE,
                 PNG_FILTER_TYPE_BASE);
    png_write_info(png, info);
    for (int y = 0; y < height; ++y) {
        const unsigned char* source = pixels + static_cast<std::ptrdiff_t>(y) * stride;
        for (int x = 0; x < width; ++x) {
            std::uint32_t argb;
            std::memcpy(&argb, source + 4 * x, 4);
            row[3 * x] = static_cast<png_byte>(argb >> 16);
            row[3 * x + 1] = static_cast<png_byte>(argb >> 8);
            row[3 * x + 2] = static_cast<png_byte>(argb);
        }
        png_write_row(png, row.data());
    }
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return out;
}

}  // namespace screen
