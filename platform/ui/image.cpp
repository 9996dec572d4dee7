#include "platform/ui/image.h"

#include "platform/ui/pixel_budget.h"

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <mutex>
#include <vector>

// After the standard headers: jpeglib.h expects size_t and FILE to be declared already.
#include <cairo.h>
#include <jpeglib.h>

#include "platform/foundation/strings.h"
#include "platform/system/bundle.h"
#include "platform/system/file_version.h"
#include "platform/system/process.h"
#include "platform/ui/archive_codecs.h"
#include "platform/ui/image_orientation.h"
#include "platform/ui/png_encoding.h"

namespace plat {

namespace {

// Whatever holds an image links this file, and can then archive and unarchive it.
[[maybe_unused]] const bool kImagesArchive = (registerArchiveCodec(imageArchiveCodec()), true);

bool withinBudget(long long width, long long height) {
    return width > 0 && height > 0 && width <= kMaxPictureSide && height <= kMaxPictureSide &&
           width * height <= kMaxPicturePixels;
}

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
    const auto size = pngPixelSize(bytes);
    if (!size || !withinBudget(size->first, size->second)) return nullptr;
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
    // The declared size, before the decoder allocates for it: a progressive picture gets its
    // whole coefficient buffer at the start, gigabytes for a forged header of a few bytes.
    if (!withinBudget(info.image_width, info.image_height)) {
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
    if (!withinBudget(width, height)) {
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

Image::~Image() = default;

void Image::SurfaceRelease::operator()(cairo_surface_t* surface) const {
    cairo_surface_destroy(surface);
}

std::shared_ptr<Image> Image::blank(int pixelWidth, int pixelHeight, double scale) {
    cairo_surface_t* surface =
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, std::clamp(pixelWidth, 0, kMaxPictureSide),
                                   std::clamp(pixelHeight, 0, kMaxPictureSide));
    return adopt(surface, scale);
}

namespace {
// Decoders hand back RGB24 for pictures without alpha; everything here reads ARGB32. Takes
// the surface; nullptr when it is not a usable image surface.
cairo_surface_t* asArgb32(cairo_surface_t* surface) {
    if (!surface) return nullptr;
    if (cairo_surface_status(surface) != CAIRO_STATUS_SUCCESS ||
        cairo_surface_get_type(surface) != CAIRO_SURFACE_TYPE_IMAGE) {
        cairo_surface_destroy(surface);
        return nullptr;
    }
    if (cairo_image_surface_get_format(surface) != CAIRO_FORMAT_ARGB32) {
        cairo_surface_t* argb = argb32Copy(surface);
        cairo_surface_destroy(surface);
        if (cairo_surface_status(argb) != CAIRO_STATUS_SUCCESS) {
            cairo_surface_destroy(argb);
            return nullptr;
        }
        surface = argb;
    }
    cairo_surface_flush(surface);
    return surface;
}

double usableScale(double scale) {
    return scale <= 0 || !std::isfinite(scale) ? 1 : scale;
}

// Whether a PNG carries alpha: an alpha colour type, or a transparency chunk before the data.
bool pngHasAlpha(const Bytes& png) {
    if (png.size() < 26) return false;
    const std::uint8_t colourType = png[25];
    if (colourType == 4 || colourType == 6) return true;
    static const std::string kTrns = "tRNS", kIdat = "IDAT";
    const auto idat = std::search(png.begin(), png.end(), kIdat.begin(), kIdat.end());
    return std::search(png.begin(), idat, kTrns.begin(), kTrns.end()) != idat;
}

// Whether a PNG is already what encodePng would write for its picture: 8 bits a sample, not
// interlaced, RGBA for a picture with alpha and RGB for one without. Such a file can stand as
// the picture's PNG representation, so an icon read from disk is never decoded to be encoded.
bool isRepresentationPng(const Bytes& png, bool hasAlpha) {
    if (png.size() < 29) return false;
    const std::uint8_t depth = png[24], colourType = png[25], interlace = png[28];
    return depth == 8 && interlace == 0 && colourType == (hasAlpha ? 6 : 2);
}
}  // namespace

Image::Image(cairo_surface_t* surface, double scale, bool hasAlpha)
    : surface_(surface),
      width_(cairo_image_surface_get_width(surface)),
      height_(cairo_image_surface_get_height(surface)),
      scale_(scale),
      hasAlpha_(hasAlpha) {
    std::call_once(decoded_, [] {});
}

Image::Image(Bytes png, int width, int height, double scale, bool hasAlpha)
    : width_(width), height_(height), scale_(scale), hasAlpha_(hasAlpha) {
    if (!keepAsRepresentation(png)) pendingPng_ = std::move(png);
}

bool Image::keepAsRepresentation(const Bytes& png) {
    if (!isRepresentationPng(png, hasAlpha_)) return false;
    png_ = png;
    std::call_once(encoded_, [] {});
    return true;
}

cairo_surface_t* Image::surface() const {
    std::call_once(decoded_, [this] {
        // A kept representation is the only copy of the file's bytes.
        const Bytes& png = pendingPng_.empty() && png_ ? *png_ : pendingPng_;
        surface_.reset(asArgb32(decodePng(png)));
        const bool sizeAsDeclared = surface_ &&
                                    cairo_image_surface_get_width(surface_.get()) == width_ &&
                                    cairo_image_surface_get_height(surface_.get()) == height_;
        if (!sizeAsDeclared)
            surface_.reset(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width_, height_));
        Bytes().swap(pendingPng_);
    });
    return surface_.get();
}

std::shared_ptr<Image> Image::adopt(cairo_surface_t* surface, double scale) {
    const bool hasAlpha = !surface || cairo_surface_get_type(surface) != CAIRO_SURFACE_TYPE_IMAGE ||
                          cairo_image_surface_get_format(surface) != CAIRO_FORMAT_RGB24;
    return adopt(surface, scale, hasAlpha);
}

std::shared_ptr<Image> Image::adopt(cairo_surface_t* surface, double scale, bool hasAlpha) {
    surface = asArgb32(surface);
    if (!surface) return nullptr;
    return std::shared_ptr<Image>(new Image(surface, usableScale(scale), hasAlpha));
}

std::shared_ptr<Image> Image::imageWithPngDeferred(Bytes png, double scale) {
    const auto size = pngPixelSize(png);
    if (!size || !withinBudget(size->first, size->second)) return nullptr;
    const bool alpha = pngHasAlpha(png);
    return std::shared_ptr<Image>(
        new Image(std::move(png), size->first, size->second, usableScale(scale), alpha));
}

std::optional<std::pair<int, int>> pngPixelSize(const Bytes& bytes) {
    // The signature, then the IHDR chunk: length, type, width and height big-endian.
    if (bytes.size() < 24 || !startsWith(bytes, {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'}) ||
        std::memcmp(bytes.data() + 12, "IHDR", 4) != 0)
        return std::nullopt;
    auto word = [&](std::size_t at) {
        return (std::uint32_t{bytes[at]} << 24) | (std::uint32_t{bytes[at + 1]} << 16) |
               (std::uint32_t{bytes[at + 2]} << 8) | std::uint32_t{bytes[at + 3]};
    };
    const std::uint32_t width = word(16), height = word(20);
    if (width > 0x7fffffffu || height > 0x7fffffffu) return std::nullopt;
    return std::pair<int, int>(static_cast<int>(width), static_cast<int>(height));
}

ImagePtr imageScaledToFit(const ImagePtr& image, int maxPixelSide) {
    if (!image || maxPixelSide <= 0) return image;
    const int width = image->pixelWidth(), height = image->pixelHeight();
    const int longest = std::max(width, height);
    if (longest <= maxPixelSide) return image;
    const double factor = static_cast<double>(maxPixelSide) / longest;
    const int newWidth = std::max(1, static_cast<int>(std::lround(width * factor)));
    const int newHeight = std::max(1, static_cast<int>(std::lround(height * factor)));
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, newWidth, newHeight);
    cairo_t* cr = cairo_create(surface);
    cairo_scale(cr, static_cast<double>(newWidth) / width, static_cast<double>(newHeight) / height);
    cairo_set_source_surface(cr, image->surface(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_GOOD);
    cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
    cairo_paint(cr);
    cairo_destroy(cr);
    return Image::adopt(surface, image->scale(), image->hasAlpha());
}

std::shared_ptr<Image> Image::imageWithData(const Bytes& bytes, double scale) {
    if (startsWith(bytes, {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'})) {
        auto image = adopt(decodePng(bytes), scale);  // RGB24 when the file has no alpha
        if (image) image->keepAsRepresentation(bytes);
        return image;
    }
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

namespace {
// imageNamed keeps what it decoded, as UIKit's named-image cache does: a page of switch cells
// asks for its bar picture once per cell.
FileVersionCache<ImagePtr>& namedImageCache() {
    static FileVersionCache<ImagePtr> cache(256);
    return cache;
}
}  // namespace

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
        const auto status = process->root().status(path);
        if (!status || status->kind != FileKind::File) continue;
        const std::string key = FileVersionCache<ImagePtr>::keyOf(process->root(), path);
        if (auto image = namedImageCache().find(key, status->version)) return *image;
        if (auto image = imageWithContentsOfFile(path)) {
            namedImageCache().keep(key, status->version, image);
            return image;
        }
    }
    return nullptr;
}

Size Image::size() const {
    return {pixelWidth() / scale_, pixelHeight() / scale_};
}

std::uint32_t Image::pixel(int x, int y) const {
    if (x < 0 || y < 0 || x >= pixelWidth() || y >= pixelHeight()) return 0;
    cairo_surface_t* pixels = surface();
    cairo_surface_flush(pixels);
    const unsigned char* row =
        cairo_image_surface_get_data(pixels) + y * cairo_image_surface_get_stride(pixels);
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
    std::call_once(image->encoded_, [image] {
        Bytes out = encodePng(image->surface(), image->hasAlpha());
        if (!out.empty()) image->png_ = std::move(out);
    });
    return image->png_;
}

}  // namespace plat
