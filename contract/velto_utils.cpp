#include "contract/velto_utils.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <mutex>

#include <cairo.h>

#include "contract/catalogue.h"
#include "contract/installed_apps.h"
#include "contract/velto_settings.h"
#include "platform/foundation/strings.h"
#include "platform/prefs/runtime.h"
#include "platform/system/bundle.h"
#include "platform/system/process.h"
#include "platform/ui/image_context.h"

namespace velto {

namespace {

const plat::Process& process() {
    return plat::Process::current();
}

// The product colour, used when the bundle's "nav" image cannot be read. It is the colour the
// "nav" swatch is drawn with (#6B4AE4), so a page looks the same whichever way it got it.
plat::ColorPtr productColor() {
    return plat::Color::colorWithRGBA(0x6B / 255.0, 0x4A / 255.0, 0xE4 / 255.0, 1.0);
}

std::string timestamp() {
    const auto now = std::chrono::system_clock::now();
    const std::time_t t = std::chrono::system_clock::to_time_t(now);
    const auto ms =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()) % 1000;
    std::tm tm{};
    localtime_r(&t, &tm);
    char buffer[40];
    std::strftime(buffer, sizeof buffer, "%Y-%m-%d %H:%M:%S", &tm);
    char out[48];
    std::snprintf(out, sizeof out, "%s.%03d", buffer, static_cast<int>(ms.count()));
    return out;
}

}  // namespace

bool VeltoUtils::isIPadOrIPod() {
    return process().deviceFamily() != plat::DeviceFamily::iPhone;
}
bool VeltoUtils::isIPad() {
    return process().deviceFamily() == plat::DeviceFamily::iPad;
}
bool VeltoUtils::isFaceTimeAvailable() {
    return process().hasFaceTime();
}
bool VeltoUtils::isIOS11() {
    return process().systemVersionAtLeast(11);
}
bool VeltoUtils::isIOS13() {
    return process().systemVersionAtLeast(13);
}

bool VeltoUtils::isRingLedgerInstalled() {
    return findAppFolder(kRingLedgerIdentifier).has_value();
}
bool VeltoUtils::isRecentsInstalled() {
    return findAppFolder(kRecentsIdentifier).has_value();
}

plat::ColorPtr VeltoUtils::navigationBarColor(const std::string& className,
                                              const std::string& imageName) {
    const plat::Bundle bundle(plat::Runtime::shared().bundlePathForClass(className));
    plat::ImagePtr image = plat::Image::imageNamed(imageName, bundle);
    if (!image) return productColor();

    // Every switch cell asks for the colour; the named image stays the same object while its
    // file does, so its average is worked out once per picture.
    static std::mutex mutex;
    static std::weak_ptr<plat::Image> averaged;
    static plat::ColorPtr average;
    {
        std::lock_guard lock(mutex);
        if (!averaged.owner_before(image) && !image.owner_before(averaged) && average)
            return average;
    }

    // Straight from the surface, flushed once: a call per pixel would flush it every time.
    cairo_surface_t* pixels = image->surface();
    cairo_surface_flush(pixels);
    const unsigned char* data = cairo_image_surface_get_data(pixels);
    const int stride = cairo_image_surface_get_stride(pixels);
    double red = 0, green = 0, blue = 0, weight = 0;
    for (int y = 0; data && y < image->pixelHeight(); ++y) {
        const unsigned char* row = data + static_cast<std::ptrdiff_t>(y) * stride;
        for (int x = 0; x < image->pixelWidth(); ++x) {
            std::uint32_t argb;
            std::memcpy(&argb, row + x * 4, sizeof argb);
            const double alpha = (argb >> 24) / 255.0;
            if (alpha <= 0) continue;
            // Premultiplied components: summing them weights each pixel by its coverage.
            red += ((argb >> 16) & 0xff) / 255.0;
            green += ((argb >> 8) & 0xff) / 255.0;
            blue += (argb & 0xff) / 255.0;
            weight += alpha;
        }
    }
    plat::ColorPtr color =
        weight <= 0 ? productColor()
                    : plat::Color::colorWithRGBA(red / weight, green / weight, blue / weight, 1.0);
    std::lock_guard lock(mutex);
    averaged = image;
    average = color;
    return color;
}

plat::ImagePtr VeltoUtils::roundedImage(const plat::ImagePtr& image) {
    return image ? plat::imageClippedToCircle(*image) : nullptr;
}

plat::ImagePtr VeltoUtils::squareImage(const plat::ImagePtr& image) {
    return image ? plat::imageCroppedToSquare(*image) : nullptr;
}

void VeltoUtils::logMessage(const std::string& message) {
    plat::Process& process = plat::Process::current();
    process.journal().log(message);
    if (!VeltoSettings::sharedSettings()->isLoggingEnabled()) return;

    auto& root = process.root();
    const std::string folder = folders::kLogs;
    if (!root.fileExists(folder) && !root.createDirectory(folder, true)) return;
    const std::string line = timestamp() + " [" + process.name() + "] " + message + "\n";
    root.appendFile(kLogFilePath, plat::Bytes(line.begin(), line.end()));
}

}  // namespace velto
