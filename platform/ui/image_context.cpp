#include "platform/ui/image_context.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "platform/system/process.h"

namespace plat {

namespace {

struct BitmapContext {
    cairo_surface_t* surface = nullptr;  // null for a context without pixels
    cairo_t* cr = nullptr;
    double scale = 1;
    // An opaque context's bitmap has no alpha channel, and neither have the images it gives.
    bool opaque = false;
};

// Each thread draws into its own contexts, as UIKit's context stack is per thread.
struct ContextStack {
    std::vector<BitmapContext> contexts;
    ~ContextStack() {
        for (BitmapContext& context : contexts)
            release(context);
    }
    static void release(BitmapContext& context) {
        if (context.cr) cairo_destroy(context.cr);
        if (context.surface) cairo_surface_destroy(context.surface);
    }
};

thread_local ContextStack stack;

BitmapContext* currentContext() {
    return stack.contexts.empty() ? nullptr : &stack.contexts.back();
}

double mainScreenScale() {
    Process* process = Process::tryCurrent();
    return process ? process->screenScale() : 1.0;
}

// A new transparent picture of the given pixel size, with `paint` drawing into it in pixels.
template <class Paint>
ImagePtr render(int width, int height, double scale, Paint paint) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
    cairo_t* cr = cairo_create(surface);
    paint(cr);
    cairo_destroy(cr);
    return Image::adopt(surface, scale);
}

}  // namespace

void UIGraphicsBeginImageContextWithOptions(Size size, bool opaque, double scale) {
    if (scale <= 0 || !std::isfinite(scale)) scale = mainScreenScale();
    BitmapContext context;
    context.scale = scale;
    context.opaque = opaque;
    const double width = std::round(size.width * scale);
    const double height = std::round(size.height * scale);
    if (width >= 1 && height >= 1 && width <= 32767 && height <= 32767) {
        context.surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(width),
                                                     static_cast<int>(height));
        context.cr = cairo_create(context.surface);
        if (opaque) {
            cairo_set_source_rgb(context.cr, 0, 0, 0);
            cairo_paint(context.cr);
        }
        cairo_scale(context.cr, scale, scale);
    }
    stack.contexts.push_back(context);
}

void UIGraphicsBeginImageContext(Size size) {
    UIGraphicsBeginImageContextWithOptions(size, false, 1);
}

ImagePtr UIGraphicsGetImageFromCurrentImageContext() {
    BitmapContext* context = currentContext();
    if (!context || !context->surface) return nullptr;
    cairo_surface_flush(context->surface);
    return Image::adopt(argb32Copy(context->surface), context->scale, !context->opaque);
}

void UIGraphicsEndImageContext() {
    if (stack.contexts.empty()) return;
    ContextStack::release(stack.contexts.back());
    stack.contexts.pop_back();
}

cairo_t* UIGraphicsGetCurrentContext() {
    BitmapContext* context = currentContext();
    return context ? context->cr : nullptr;
}

void drawInRect(const Image* image, Rect rect) {
    cairo_t* cr = UIGraphicsGetCurrentContext();
    if (!cr || !image || image->pixelWidth() == 0 || image->pixelHeight() == 0) return;
    // Core Graphics standardises rectangles with a negative width or height.
    if (rect.size.width < 0) {
        rect.origin.x += rect.size.width;
        rect.size.width = -rect.size.width;
    }
    if (rect.size.height < 0) {
        rect.origin.y += rect.size.height;
        rect.size.height = -rect.size.height;
    }
    if (rect.size.width == 0 || rect.size.height == 0) return;

    cairo_save(cr);
    cairo_translate(cr, rect.origin.x, rect.origin.y);
    cairo_scale(cr, rect.size.width / image->pixelWidth(), rect.size.height / image->pixelHeight());
    cairo_set_source_surface(cr, image->surface(), 0, 0);
    // Padding keeps the edges of a stretched picture solid instead of fading them into the
    // transparent outside.
    cairo_pattern_set_extend(cairo_get_source(cr), CAIRO_EXTEND_PAD);
    cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_GOOD);
    cairo_rectangle(cr, 0, 0, image->pixelWidth(), image->pixelHeight());
    cairo_fill(cr);
    cairo_restore(cr);
}

ImagePtr imageClippedToCircle(const Image& image) {
    const int width = image.pixelWidth();
    const int height = image.pixelHeight();
    return render(width, height, image.scale(), [&](cairo_t* cr) {
        const double radius = std::min(width, height) / 2.0;
        cairo_arc(cr, width / 2.0, height / 2.0, radius, 0, 2 * std::numbers::pi);
        cairo_clip(cr);
        cairo_set_source_surface(cr, image.surface(), 0, 0);
        cairo_paint(cr);
    });
}

ImagePtr imageCroppedToSquare(const Image& image) {
    const int side = std::min(image.pixelWidth(), image.pixelHeight());
    const int left = (image.pixelWidth() - side) / 2;
    const int top = (image.pixelHeight() - side) / 2;
    return render(side, side, image.scale(), [&](cairo_t* cr) {
        cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
        cairo_set_source_surface(cr, image.surface(), -left, -top);
        cairo_paint(cr);
    });
}

}  // namespace plat
