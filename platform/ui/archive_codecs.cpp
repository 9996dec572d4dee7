#include "platform/ui/archive_codecs.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <vector>

#include "platform/ui/color.h"
#include "platform/ui/image.h"

namespace plat {

namespace {

// Any one side of an archived picture.
constexpr int kMaxImageSide = 16384;

// encodeFloat:forKey: stores a 32-bit real.
Value floatReal(double d) {
    return Value::real(static_cast<float>(d));
}

// AppKit's NSRGB/NSWhite: the components as text, alpha only when not opaque, NUL-terminated.
Value componentText(std::initializer_list<double> components, double alpha) {
    std::string text;
    auto append = [&](double c) {
        char buffer[32];
        std::snprintf(buffer, sizeof buffer, "%.10g", c);
        if (!text.empty()) text += ' ';
        text += buffer;
    };
    for (double c : components)
        append(c);
    if (alpha != 1) append(alpha);
    Bytes bytes(text.begin(), text.end());
    bytes.push_back(0);
    return Value::data(std::move(bytes));
}

// "r g b [a]" text of NSRGB/NSWhite (NUL-terminated or not).
std::optional<std::vector<double>> parseComponents(const Value& v) {
    const Bytes* bytes = v.asData();
    if (!bytes || bytes->size() > 256) return {};
    std::string text(bytes->begin(), bytes->end());
    text = text.substr(0, text.find('\0'));
    std::vector<double> out;
    const char* p = text.c_str();
    while (*p) {
        char* end = nullptr;
        const double d = std::strtod(p, &end);
        if (end == p) break;
        out.push_back(d);
        p = end;
    }
    return out;
}

std::optional<ArchivedFields> encodeImage(const Object& object) {
    const auto* image = dynamic_cast<const Image*>(&object);
    std::optional<Bytes> png = image ? UIImagePNGRepresentation(image) : std::nullopt;
    if (!png) return std::nullopt;
    ArchivedFields fields;
    fields.objects["UIImageData"] = Value::data(std::move(*png));
    fields.scalars["UIScale"] = floatReal(image->scale());
    return fields;
}

// The PNG's header is checked against the archive's pixel budget; its pixels decode when
// first drawn.
Value decodeImage(const Value& fields, ArchiveReading& archive) {
    const Value png = archive.member(fields, "UIImageData");
    if (!png.isData()) return Value();
    double scale = 1;
    const Value storedScale = fields.objectForKey("UIScale");
    if (!storedScale.isNil()) {
        if (!storedScale.isReal() && !storedScale.isInteger()) return Value();
        scale = storedScale.doubleValue();
        if (!std::isfinite(scale) || scale <= 0 || scale > 16) return Value();
    }
    const auto size = pngPixelSize(*png.asData());
    if (!size || size->first <= 0 || size->second <= 0 || size->first > kMaxImageSide ||
        size->second > kMaxImageSide)
        return Value();
    if (!archive.claim(static_cast<std::uint64_t>(size->first) *
                       static_cast<std::uint64_t>(size->second)))
        return Value();
    ImagePtr image = Image::imageWithPngDeferred(*png.asData(), scale);
    return image ? Value(image) : Value();
}

std::optional<ArchivedFields> encodeColor(const Object& object) {
    const auto* found = dynamic_cast<const Color*>(&object);
    if (!found) return std::nullopt;
    const Color& color = *found;
    ArchivedFields fields;
    Dictionary& out = fields.scalars;
    if (color.isGrey()) {
        out["UIColorComponentCount"] = Value::integer(2);
        out["UIWhite"] = floatReal(color.red());
        out["UIAlpha"] = floatReal(color.alpha());
        out["NSWhite"] = componentText({color.red()}, color.alpha());
        out["NSColorSpace"] = Value::integer(4);
    } else {
        out["UIColorComponentCount"] = Value::integer(4);
        out["UIRed"] = floatReal(color.red());
        out["UIGreen"] = floatReal(color.green());
        out["UIBlue"] = floatReal(color.blue());
        out["UIAlpha"] = floatReal(color.alpha());
        out["NSRGB"] = componentText({color.red(), color.green(), color.blue()}, color.alpha());
        out["NSColorSpace"] = Value::integer(2);
    }
    return fields;
}

Value decodeColor(const Value& fields, ArchiveReading&) {
    auto component = [&](const char* key, double fallback) -> std::optional<double> {
        const Value v = fields.objectForKey(key);
        if (v.isNil()) return fallback;
        if (!v.isReal() && !v.isInteger()) return std::nullopt;
        if (!std::isfinite(v.doubleValue())) return std::nullopt;
        return v.doubleValue();
    };
    const bool hasRGB = !fields.objectForKey("UIRed").isNil();
    const bool hasWhite = !fields.objectForKey("UIWhite").isNil();
    const std::int64_t count = fields.objectForKey("UIColorComponentCount").integerValue();
    const auto alpha = component("UIAlpha", 1);
    if (!alpha) return Value();
    if (hasWhite && (count == 2 || !hasRGB)) {
        const auto white = component("UIWhite", 0);
        if (!white) return Value();
        return Value(Color::colorWithWhite(*white, *alpha));
    }
    if (hasRGB) {
        const auto r = component("UIRed", 0), g = component("UIGreen", 0),
                   b = component("UIBlue", 0);
        if (!r || !g || !b) return Value();
        return Value(Color::colorWithRGBA(*r, *g, *b, *alpha));
    }
    // Only the AppKit-compatible text.
    if (auto rgb = parseComponents(fields.objectForKey("NSRGB")); rgb && rgb->size() >= 3)
        return Value(
            Color::colorWithRGBA((*rgb)[0], (*rgb)[1], (*rgb)[2], rgb->size() > 3 ? (*rgb)[3] : 1));
    if (auto white = parseComponents(fields.objectForKey("NSWhite")); white && !white->empty())
        return Value(Color::colorWithWhite((*white)[0], white->size() > 1 ? (*white)[1] : 1));
    return Value();
}

}  // namespace

ArchiveCodec imageArchiveCodec() {
    return {{"UIImage", "NSObject"}, encodeImage, decodeImage};
}

ArchiveCodec colorArchiveCodec() {
    return {{"UIColor", "NSObject"}, encodeColor, decodeColor};
}

}  // namespace plat
