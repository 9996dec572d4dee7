#include "platform/ui/png_encoding.h"

#include <png.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace plat {

namespace {

void appendBytes(png_structp png, png_bytep data, png_size_t length) {
    auto* out = static_cast<Bytes*>(png_get_io_ptr(png));
    out->insert(out->end(), data, data + length);
}

void noFlush(png_structp) {}

// Premultiplied to straight, rounded as cairo's own writer does.
png_byte unpremultiply(std::uint32_t channel, std::uint32_t alpha) {
    return static_cast<png_byte>((channel * 255 + alpha / 2) / alpha);
}

void fillRow(const unsigned char* source, int width, bool alpha, std::vector<png_byte>& row) {
    const int channels = alpha ? 4 : 3;
    for (int x = 0; x < width; ++x) {
        std::uint32_t argb;
        std::memcpy(&argb, source + 4 * x, 4);
        const std::uint32_t a = alpha ? argb >> 24 : 255;
        png_byte* out = &row[static_cast<std::size_t>(x) * channels];
        if (a == 0) {
            out[0] = out[1] = out[2] = 0;
        } else if (a == 255) {
            out[0] = static_cast<png_byte>(argb >> 16);
            out[1] = static_cast<png_byte>(argb >> 8);
            out[2] = static_cast<png_byte>(argb);
        } else {
            out[0] = unpremultiply(argb >> 16 & 0xff, a);
            out[1] = unpremultiply(argb >> 8 & 0xff, a);
            out[2] = unpremultiply(argb & 0xff, a);
        }
        if (alpha) out[3] = static_cast<png_byte>(a);
    }
}

Bytes encode(cairo_surface_t* surface, bool alpha, bool quickly) {
    if (!surface || cairo_surface_get_type(surface) != CAIRO_SURFACE_TYPE_IMAGE) return {};
    cairo_surface_flush(surface);
    const int width = cairo_image_surface_get_width(surface);
    const int height = cairo_image_surface_get_height(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    const unsigned char* pixels = cairo_image_surface_get_data(surface);
    if (!pixels || width <= 0 || height <= 0) return {};

    Bytes out;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) {
        png_destroy_write_struct(&png, nullptr);
        return {};
    }
    std::vector<png_byte> row(static_cast<std::size_t>(width) * (alpha ? 4 : 3));
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        return {};
    }
    png_set_write_fn(png, &out, appendBytes, noFlush);
    if (quickly) {
        png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_UP);
        png_set_compression_level(png, 1);
    }
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
                 alpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
    png_write_info(png, info);
    for (int y = 0; y < height; ++y) {
        fillRow(pixels + static_cast<std::ptrdiff_t>(y) * stride, width, alpha, row);
        png_write_row(png, row.data());
    }
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return out;
}

}  // namespace

Bytes encodePng(cairo_surface_t* surface, bool alpha) {
    return encode(surface, alpha, false);
}

Bytes encodePngQuickly(cairo_surface_t* surface, bool alpha) {
    return encode(surface, alpha, true);
}

}  // namespace plat
