#include "platform/ui/image_orientation.h"

#include <cairo.h>
#include <libexif/exif-data.h>

#include <cstdint>
#include <cstring>

namespace plat {

int exifOrientation(const unsigned char* app1, std::size_t length) {
    if (!app1 || length < 6 || length > 0xffff) return 1;
    ExifData* data = exif_data_new_from_data(app1, static_cast<unsigned int>(length));
    if (!data) return 1;
    int orientation = 1;
    // The orientation belongs to the main picture, IFD0; a thumbnail's own (IFD1) is not ours.
    ExifEntry* entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    if (entry && entry->format == EXIF_FORMAT_SHORT && entry->components >= 1 && entry->data &&
        entry->size >= 2) {
        const int value = exif_get_short(entry->data, exif_data_get_byte_order(data));
        if (value >= 1 && value <= 8) orientation = value;
    }
    exif_data_unref(data);
    return orientation;
}

cairo_surface_t* uprightCopy(cairo_surface_t* source, int orientation) {
    cairo_surface_flush(source);
    const int width = cairo_image_surface_get_width(source);
    const int height = cairo_image_surface_get_height(source);
    if (orientation < 1 || orientation > 8) orientation = 1;
    const bool quarterTurn = orientation >= 5;
    const int outWidth = quarterTurn ? height : width;
    const int outHeight = quarterTurn ? width : height;
    cairo_surface_t* out = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, outWidth, outHeight);
    if (cairo_surface_status(out) != CAIRO_STATUS_SUCCESS || width == 0 || height == 0) return out;

    const unsigned char* in = cairo_image_surface_get_data(source);
    const int inStride = cairo_image_surface_get_stride(source);
    unsigned char* pixels = cairo_image_surface_get_data(out);
    const int outStride = cairo_image_surface_get_stride(out);
    for (int y = 0; y < outHeight; ++y) {
        auto* row =
            reinterpret_cast<std::uint32_t*>(pixels + static_cast<std::ptrdiff_t>(y) * outStride);
        for (int x = 0; x < outWidth; ++x) {
            // The stored pixel that shows at (x, y) once the picture stands upright.
            int sx = x, sy = y;
            switch (orientation) {
                case 2:
                    sx = width - 1 - x;
                    break;
                case 3:
                    sx = width - 1 - x;
                    sy = height - 1 - y;
                    break;
                case 4:
                    sy = height - 1 - y;
                    break;
                case 5:
                    sx = y;
                    sy = x;
                    break;
                case 6:
                    sx = y;
                    sy = height - 1 - x;
                    break;
                case 7:
                    sx = width - 1 - y;
                    sy = height - 1 - x;
                    break;
                case 8:
                    sx = width - 1 - y;
                    sy = x;
                    break;
                default:
                    break;
            }
            std::memcpy(&row[x], in + static_cast<std::ptrdiff_t>(sy) * inStride + 4 * sx, 4);
        }
    }
    cairo_surface_mark_dirty(out);
    return out;
}

}  // namespace plat
