#pragma once

#include <cstdint>
#include <memory>
#include <string>

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

    // A fully transparent image of the given pixel size.
    static std::shared_ptr<Image> blank(int pixelWidth, int pixelHeight, double scale);
    // Takes ownership of an image surface. An RGB24 surface makes an image without alpha.
    static std::shared_ptr<Image> adopt(cairo_surface_t* surface, double scale);
    static std::shared_ptr<Image> adopt(cairo_surface_t* surface, double scale, bool hasAlpha);

    // imageWithData: from PNG or JPEG bytes; nullptr when they do not decode. A JPEG's EXIF
    // orientation is applied to the pixels, so the picture stands as the camera's user held it.
    static std::shared_ptr<Image> imageWithData(const Bytes& bytes, double scale = 1);
    // imageWithContentsOfFile: a device path; the scale comes from an "@2x"/"@3x" name.
    static std::shared_ptr<Image> imageWithContentsOfFile(const std::string& devicePath);
    // imageNamed:inBundle:compatibleWithTraitCollection: — "<name>@<s>x.png" for the screen
    // scale s first, then the other scales, then "<name>.png"; a name with an extension is
    // taken as it stands. nullptr when none exists.
    static std::shared_ptr<Image> imageNamed(const std::string& name, const Bundle& bundle);

    int pixelWidth() const;
    int pixelHeight() const;
    double scale() const { return scale_; }
    bool hasAlpha() const { return hasAlpha_; }
    // The size in points (pixels / scale).
    Size size() const;
    // The premultiplied ARGB word at a pixel; 0 outside the image.
    std::uint32_t pixel(int x, int y) const;
    cairo_surface_t* surface() const { return surface_; }

    std::string className() const override { return "UIImage"; }
    std::vector<std::string> classChain() const override { return {"UIImage", "NSObject"}; }
    std::string description() const override;

  private:
    Image(cairo_surface_t* surface, double scale, bool hasAlpha)
        : surface_(surface), scale_(scale), hasAlpha_(hasAlpha) {}
    cairo_surface_t* surface_;
    double scale_;
    bool hasAlpha_;
};

using ImagePtr = std::shared_ptr<Image>;

// An ARGB32 copy of any image surface; the caller owns it.
cairo_surface_t* argb32Copy(cairo_surface_t* source);

// UIImagePNGRepresentation: RGBA for an image with an alpha channel, RGB otherwise; nullopt
// for a null image.
std::optional<Bytes> UIImagePNGRepresentation(const Image* image);

}  // namespace plat
