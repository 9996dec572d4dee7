#include "app/render/content_hash.h"

#include <glib.h>

#include <memory>

#include "platform/ui/image.h"

namespace velto::app {

std::string pictureHash(const plat::Image& image) {
    const std::unique_ptr<GChecksum, decltype(&g_checksum_free)> sum(
        g_checksum_new(G_CHECKSUM_SHA256), &g_checksum_free);
    // A picture the encoder cannot write hashes as no bytes at all.
    if (const auto png = plat::UIImagePNGRepresentation(&image))
        g_checksum_update(sum.get(), png->data(), static_cast<gssize>(png->size()));
    return std::string(g_checksum_get_string(sum.get())).substr(0, 12);
}

}  // namespace velto::app
