#include "platform/ui/image.h"

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <vector>

// After the standard headers: jpeglib.h expects size_t and FILE to be declared already.
#include <cairo.h>
#include <jpeglib.h>

#include "platform/foundation/strings.h"
#include "platform/system/bundle.h"
#include "platform/system/process.h"
#include "platform/ui/image_orientation.h"
#include "platform/ui/png_encoding.h"

namespace plat {

namespace {

// cairo refuses image surfaces larger than this each way; checking first keeps a hostile
// header from asking for gigabytes.
constexpr int kMaxSide = 32767;
// libjpeg fills in missing data rather than failing, so a forged header alone could make us
// allocate and decode gigabytes; no picture the device takes comes near this many pixels.
constexpr long long kMaxJpegPixels = 1LL << 26;

bool startsWith(const Bytes& bytes, std::initializer_list<std::uint8_t> magic) {
    if (bytes.size() < magic.size()) return false;
    return std::equal(magic.begin(), magic.end(), bytes.begin());
}

struct ReadCursor {
    const Bytes* bytes;
    std::size_t offset;
};

cairo_status_t readFromCursor(void* closure, unsigned char* data, unsigned int length) {
    auto* cursor = static_cast<ReadCursor*>(closure);
    if (cursor->bytes->size() - cursor->offset < length) return CAIRO_STATUS_READ_ERROR;
    std::memcpy(data, cursor->bytes->data() + cursor->offset, length);
    cursor->offset += length;
    return CAIRO_STATUS_SUCCESS;
}

cairo_surface_t* decodePng(const Bytes& bytes) {
    ReadCursor cursor{&bytes, 0};
    cairo_surface_t* surface = cairo_image_surface_create_from_png_stream(readFromCursor, &cursor);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
        cairo_surface_destroy(surface);
        return nullptr;
    }
    return surface;
}

// libjpeg reports fatal errors through error_exit, which must not return: we jump back to
// the decoder, which cleans up and answers "no image".
struct JpegError {
    jpeg_error_mgr manager;
    std::jmp_buf jump;
};

void jpegErrorExit(j_common_ptr info) {
    auto* error = reinterpret_cast<JpegError*>(info->err);
    std::longjmp(error->jump, 1);
}

// Corrupt-data warnings would otherwise go to standard error; a bad picture is not news.
void jpegSilence(j_common_ptr, int) {}
void jpegNoOutput(j_common_ptr) {}

inline std::uint32_t opaqueArgb(unsigned r, unsigned g, unsigned b) {
    return 0xff000000u | (r << 16) | (g << 8) | b;
}

// The orientation in the first EXIF block among the markers libjpeg kept.
int orientationOf(const jpeg_decompress_struct& info) {
    static const unsigned char kExif[] = {'E', 'x', 'i', 'f', 0, 0};
    for (jpeg_saved_marker_ptr marker = info.marker_list; marker; marker = marker->next) {
        if (marker->marker != JPEG_APP0 + 1 || marker->data_length < sizeof kExif ||
            std::memcmp(marker->data, kExif, sizeof kExif) != 0)
            continue;
        return exifOrientation(marker->data, marker->data_length);
    }
    return 1;
}

// Only plain data lives between setjmp and the possible longjmp: the row buffer belongs to
// libjpeg's pool and the surface pointer is volatile so that it survives the jump.
cairo_surface_t* decodeJpegPixels(const Bytes& bytes, int* orientation) {
    jpeg_decompress_struct info;
    JpegError error;
    info.err = jpeg_std_error(&error.manager);
    error.manager.error_exit = jpegErrorExit;
    error.manager.emit_message = jpegSilence;
    error.manager.output_message = jpegNoOutput;
    cairo_surface_t* volatile surface = nullptr;

    if (setjmp(error.jump)) {
        jpeg_destroy_decompress(&info);
        if (surface) cairo_surface_destroy(surface);
        return nullptr;
    }

    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, bytes.data(), static_cast<unsigned long>(bytes.size()));
    jpeg_save_markers(&info, JPEG_APP0 + 1, 0xffff);
    if (jpeg_read_header(&info, TRUE) != JPEG_HEADER_OK) {
        jpeg_destroy_decompress(&info);
        return nullptr;
    }
    *orientation = orientationOf(info);
    // CMYK pictures (as image editors write them) cannot be turned into RGB by the library;
    // everything else can.
    const bool cmyk = info.jpeg_color_space == JCS_CMYK || info.jpeg_color_space == JCS_YCCK;
    info.out_color_space = cmyk ? JCS_CMYK : JCS_RGB;
    jpeg_start_decompress(&info);

    const int width = static_cast<int>(info.output_width);
    const int height = static_cast<int>(info.output_height);
    if (width <= 0 || height <= 0 || width > kMaxSide || height > kMaxSide ||
        static_cast<long long>(width) * height > kMaxJpegPixels) {
        jpeg_destroy_decompress(&info);
        return nullptr;
    }
    surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS) {
        cairo_surface_destroy(surface);
        jpeg_destroy_decompress(&info);
        return nullptr;
    }
    unsigned char* pixels = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    const int components = info.output_components;
    JSAMPARRAY row = (*info.mem->alloc_sarray)(reinterpret_cast<j_common_ptr>(&info), JPOOL_IMAGE,
                                               info.output_width * components, 1);

    while (info.output_scanline < info.output_height) {
        const int y = static_cast<int>(info.output_scanline);
        jpeg_read_scanlines(&info, row, 1);
        auto* out = reinterpret_cast<std::uint32_t*>(pixels + y * stride);
        const JSAMPLE* in = row[0];
        for (int x = 0; x < width; ++x, in += components) {
            if (cmyk) {
                // Adobe writes CMYK inverted: each sample is already 255 - ink.
                const unsigned k = in[3];
                out[x] = opaqueArgb(in[0] * k / 255, in[1] * k / 255, in[2] * k / 255);
            } else {
                out[x] = opaqueArgb(in[0], in[1], in[2]);
            }
        }
    }
    cairo_surface_mark_dirty(surface);
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
    return surface;
}

// Phones store a photo as the sensor saw it and say in EXIF how it was held; UIImage draws
// it upright, and so must everything made from it here.
cairo_surface_t* decodeJpeg(const Bytes& bytes) {
    int orientation = 1;
    cairo_surface_t* stored = decodeJpegPixels(bytes, &orientation);
    if (!stored || orientation == 1) return stored;
    cairo_surface_t* upright = uprightCopy(stored, orientation);
    cairo_surface_destroy(stored);
    return upright;
}

// "name@2x.png" -> 2; names without a scale mark are 1x.
double scaleFromFileName(const std::string& path) {
    std::string name = path.substr(path.find_last_of('/') + 1);
    const auto dot = name.find_last_of('.');
    if (dot != std::string::npos) name.erase(dot);
    // Device modifiers come after the scale mark ("icon@2x~ipad.png").
    const auto tilde = name.find('~');
    if (tilde != std::string::npos) name.erase(tilde);
    if (name.size() >= 3 && name[name.size() - 3] == '@' && name.back() == 'x') {
        const char digit = name[name.size() - 2];
        if (digit >= '1' && digit <= '9') return digit - '0';
    }
    return 1;
}

std::string formatNumber(double d) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%g", d);
    return buffer;
}

}  // namespace

Image::~Image() {
    cairo_surface_destroy(surface_);
}

std::shared_ptr<Image> Image::blank(int pixelWidth, int pixelHeight, double scale) {
    cairo_surface_t* surface =
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, std::clamp(pixelWidth, 0, kMaxSide),
                                   std::clamp(pixelHeight, 0, kMaxSide));
    return adopt(surface, scale);
}

std::shared_ptr<Image> Image::adopt(cairo_surface_t* surface, double scale) {
    const bool hasAlpha = !surface || cairo_surface_get_type(surface) != CAIRO_SURFACE_TYPE_IMAGE ||
                          cairo_image_surface_get_format(surface) != CAIRO_FORMAT_RGB24;
    return adopt(surface, scale, hasAlpha);
}

std::shared_ptr<Image> Image::adopt(cairo_surface_t* surface, double scale, bool hasAlpha) {
    if (!surface) return nullptr;
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS ||
        cairo_surface_get_type(surface) != CAIRO_SURFACE_TYPE_IMAGE) {
        cairo_surface_destroy(surface);
        return nullptr;
    }
    if (scale <= 0 || !std::isfinite(scale)) scale = 1;
    if (cairo_image_surface_get_format(surface) != CAIRO_FORMAT_ARGB32) {
        // Decoders hand back RGB24 for pictures without alpha; everything here reads ARGB32.
        cairo_surface_t* argb = argb32Copy(surface);
        cairo_surface_destroy(surface);
        if (cairo_surface_status(argb) != CAIRO_STATUS_SUCCESS) {
            cairo_surface_destroy(argb);
            return nullptr;
        }
        surface = argb;
    }
    cairo_surface_flush(surface);
    return std::shared_ptr<Image>(new Image(surface, scale, hasAlpha));
}

std::shared_ptr<Image> Image::imageWithData(const Bytes& bytes, double scale) {
    if (startsWith(bytes, {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'}))
        return adopt(decodePng(bytes), scale);  // RGB24 when the file has no alpha
    if (startsWith(bytes, {0xff, 0xd8, 0xff})) return adopt(decodeJpeg(bytes), scale, false);
    return nullptr;
}

std::shared_ptr<Image> Image::imageWithContentsOfFile(const std::string& devicePath) {
    Process* process = Process::tryCurrent();
    if (!process) return nullptr;
    const auto bytes = process->root().readFile(devicePath);
    if (!bytes) return nullptr;
    return imageWithData(*bytes, scaleFromFileName(devicePath));
}

std::shared_ptr<Image> Image::imageNamed(const std::string& name, const Bundle& bundle) {
    Process* process = Process::tryCurrent();
    if (!process || name.empty()) return nullptr;

    std::vector<std::string> candidates;
    const std::string lastComponent = name.substr(name.find_last_of('/') + 1);
    if (lastComponent.find('.') != std::string::npos) {
        candidates.push_back(name);
    } else {
        const int screen = static_cast<int>(std::lround(process->screenScale()));
        auto scaled = [&](int s) { return name + "@" + std::to_string(s) + "x.png"; };
        if (screen >= 2) {
            candidates.push_back(scaled(screen));
            for (int s : {3, 2})
                if (s != screen) candidates.push_back(scaled(s));
            candidates.push_back(name + ".png");
        } else {
            // On a 1x screen the unmarked file is the exact match; larger ones scale down.
            candidates.push_back(name + ".png");
            candidates.push_back(scaled(2));
            candidates.push_back(scaled(3));
        }
    }
    for (const std::string& candidate : candidates) {
        const std::string path = stringByAppendingPathComponent(bundle.bundlePath(), candidate);
        if (!process->root().fileExists(path)) continue;
        if (auto image = imageWithContentsOfFile(path)) return image;
    }
    return nullptr;
}

int Image::pixelWidth() const {
    return cairo_image_surface_get_width(surface_);
}
int Image::pixelHeight() const {
    return cairo_image_surface_get_height(surface_);
}

Size Image::size() const {
    return {pixelWidth() / scale_, pixelHeight() / scale_};
}

std::uint32_t Image::pixel(int x, int y) const {
    if (x < 0 || y < 0 || x >= pixelWidth() || y >= pixelHeight()) return 0;
    cairo_surface_flush(surface_);
    const unsigned char* row =
        cairo_image_surface_get_data(surface_) + y * cairo_image_surface_get_stride(surface_);
    std::uint32_t word;
    std::memcpy(&word, row + x * 4, sizeof word);
    return word;
}

std::string Image::description() const {
    const Size points = size();
    return Object::description() + " size {" + formatNumber(points.width) + ", " +
           formatNumber(points.height) + "} scale " + formatNumber(scale_);
}

cairo_surface_t* argb32Copy(cairo_surface_t* source) {
    const int width = cairo_image_surface_get_width(source);
    const int height = cairo_image_surface_get_height(source);
    cairo_surface_t* copy = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
    cairo_t* cr = cairo_create(copy);
    cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
    cairo_set_source_surface(cr, source, 0, 0);
    cairo_paint(cr);
    cairo_destroy(cr);
    return copy;
}

std::optional<Bytes> UIImagePNGRepresentation(const Image* image) {
    if (!image) return std::nullopt;
    Bytes out = encodePng(image->surface(), image->hasAlpha());
    if (out.empty()) return std::nullopt;
    return out;
}

}  // namespace plat
