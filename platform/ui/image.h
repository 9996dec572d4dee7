#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "platform/foundation/geometry.h"
#include "platform/foundation/object.h"
#include "platform/foundation/value.h"

typedef struct _cairo_surface cairo_surface_t;

namespace plat {

class Bundle;

// UIImage: pixels (a cairo ARGB32 surface: premultiplied alpha, native-endian 32-bit words)
// and a scale that maps points to pixels. Immutable once made. Like a CGImage it knows whether
// it has an alpha channel at all, which is not the same as having a transparent pixel: an
// image from a non-opaque context has one even when every pixel is opaque, a JPEG never does.
class Image : public Object {
  public:
    ~Image() override;
    // One owner of the pixels: images are shared by pointer, as UIImage objects are.
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    // A fully transparent image of the given pixel size.
    static std::shared_ptr<Image> blank(int pixelWidth, int pixelHeight, double scale);
    // Takes ownership of an image surface. An RGB24 surface makes an image without alpha.
    static std::shared_ptr<Image> adopt(cairo_surface_t* surface, double scale);
    static std::shared_ptr<Image> adopt(cairo_surface_t* surface, double scale, bool hasAlpha);

    // imageWithData: from PNG or JPEG bytes; nullptr when they do not decode. A JPEG's EXIF
    // orientation is applied to the pixels, so the picture stands as the camera's user held it.
    static std::shared_ptr<Image> imageWithData(const Bytes& bytes, double scale = 1);
    // A PNG whose header has been checked against the pixel budget but whose pixels are decoded
    // only when first drawn or read, as UIImage does: a reply carrying hundreds of icons costs
    // its parse, not hundreds of decodes. nullptr when the header is not a PNG's or is over the
    // budget; a body that later fails to decode draws as a transparent image of the declared size.
    static std::shared_ptr<Image> imageWithPngDeferred(Bytes png, double scale);
    // imageWithContentsOfFile: a device path; the scale comes from an "@2x"/"@3x" name.
    static std::shared_ptr<Image> imageWithContentsOfFile(const std::string& devicePath);
    // imageNamed:inBundle:compatibleWithTraitCollection: — "<name>@<s>x.png" for the screen
    // scale s first, then the other scales, then "<name>.png"; a name with an extension is
    // taken as it stands. nullptr when none exists.
    static std::shared_ptr<Image> imageNamed(const std::string& name, const Bundle& bundle);

    int pixelWidth() const { return width_; }
    int pixelHeight() const { return height_; }
    double scale() const { return scale_; }
    bool hasAlpha() const { return hasAlpha_; }
    // The size in points (pixels / scale).
    Size size() const;
    // The premultiplied ARGB word at a pixel; 0 outside the image.
    std::uint32_t pixel(int x, int y) const;
    // The pixels; a deferred PNG is decoded here, once, on first use (from any thread).
    cairo_surface_t* surface() const;

    std::string className() const override { return "UIImage"; }
    std::vector<std::string> classChain() const override { return {"UIImage", "NSObject"}; }
    std::string description() const override;

  private:
    Image(cairo_surface_t* surface, double scale, bool hasAlpha);
    Image(Bytes png, int width, int height, double scale, bool hasAlpha);

    friend std::optional<Bytes> UIImagePNGRepresentation(const Image* image);

    // Keeps the PNG the picture was read from as its representation when the encoder would
    // write the same kind of file; before the image is shared only.
    bool keepAsRepresentation(const Bytes& png);

    mutable std::once_flag decoded_;
    // The PNG representation, made once: an image never changes, and the same icon is
    // archived into reply after reply. A picture read from a plain 8-bit RGB(A) PNG keeps that
    // file instead (see keepAsRepresentation).
    mutable std::once_flag encoded_;
    mutable std::optional<Bytes> png_;
    struct SurfaceRelease {
        void operator()(cairo_surface_t* surface) const;
    };
    mutable std::unique_ptr<cairo_surface_t, SurfaceRelease> surface_;
    mutable Bytes pendingPng_;  // until decoded
    int width_ = 0;
    int height_ = 0;
    double scale_;
    bool hasAlpha_;
};

using ImagePtr = std::shared_ptr<Image>;

// An ARGB32 copy of any image surface; the caller owns it.
cairo_surface_t* argb32Copy(cairo_surface_t* source);

// The pixel size a PNG's header declares, read without decoding; nullopt for anything else.
std::optional<std::pair<int, int>> pngPixelSize(const Bytes& bytes);

// The image drawn down so that neither side exceeds maxPixelSide pixels, keeping its scale and
// aspect; the image itself when it already fits.
ImagePtr imageScaledToFit(const ImagePtr& image, int maxPixelSide);

// UIImagePNGRepresentation: RGBA for an image with an alpha channel, RGB otherwise; nullopt
// for a null image. A picture read from a PNG of that kind answers the file's own bytes.
std::optional<Bytes> UIImagePNGRepresentation(const Image* image);

}  // namespace plat
