#include "app/render/content_hash.h"

#include <glib.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/ui/image.h"

namespace velto::app {

namespace {

void putWord(std::vector<guchar>& out, std::uint32_t word) {
    out.push_back(static_cast<guchar>(word >> 24));
    out.push_back(static_cast<guchar>(word >> 16));
    out.push_back(static_cast<guchar>(word >> 8));
    out.push_back(static_cast<guchar>(word));
}

}  // namespace

std::string pixelHash(const plat::Image& image) {
    const std::unique_ptr<GChecksum, decltype(&g_checksum_free)> sum(
        g_checksum_new(G_CHECKSUM_SHA256), &g_checksum_free);
    std::vector<guchar> row;
    putWord(row, static_cast<std::uint32_t>(image.pixelWidth()));
    putWord(row, static_cast<std::uint32_t>(image.pixelHeight()));
    g_checksum_update(sum.get(), row.data(), static_cast<gssize>(row.size()));
    const std::uint32_t opaque = image.hasAlpha() ? 0 : 0xff000000u;
    for (int y = 0; y < image.pixelHeight(); ++y) {
        row.clear();
        for (int x = 0; x < image.pixelWidth(); ++x)
            putWord(row, image.pixel(x, y) | opaque);
        g_checksum_update(sum.get(), row.data(), static_cast<gssize>(row.size()));
    }
    return std::string(g_checksum_get_string(sum.get())).substr(0, 12);
}

}  // namespace velto::app
