#include "contract/picture_files.h"

#include "contract/velto_settings.h"
#include "platform/system/process.h"
#include "platform/ui/image_context.h"

namespace velto {

bool writePictureFile(const plat::ImagePtr& picture, plat::Size canvas,
                      const std::string& devicePath) {
    plat::UIGraphicsBeginImageContextWithOptions(canvas, false, 0);
    plat::drawInRect(picture.get(), plat::Rect{{0, 0}, canvas});
    plat::ImagePtr rendered = plat::UIGraphicsGetImageFromCurrentImageContext();
    plat::UIGraphicsEndImageContext();
    auto png = plat::UIImagePNGRepresentation(rendered.get());
    return png && plat::Process::current().root().writeFile(devicePath, *png, true);
}

plat::Size defaultPictureCanvas() {
    auto settings = VeltoSettings::sharedSettings();
    return {2 * settings->defaultWidth(), 2 * settings->defaultHeight()};
}

plat::Size defaultThumbnailCanvas() {
    const plat::Size picture = defaultPictureCanvas();
    return {picture.width + 8, picture.height + 8};
}

}  // namespace velto
