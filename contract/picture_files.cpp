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

plat::Size pictureCanvas(plat::Size pictureSize) {
    return {2 * pictureSize.width, 2 * pictureSize.height};
}

plat::Size thumbnailCanvas(plat::Size pictureSize) {
    const plat::Size picture = pictureCanvas(pictureSize);
    return {picture.width + 8, picture.height + 8};
}

namespace {

plat::Size sharedPictureSize() {
    auto settings = VeltoSettings::sharedSettings();
    return {settings->defaultWidth(), settings->defaultHeight()};
}

}  // namespace

plat::Size defaultPictureCanvas() {
    return pictureCanvas(sharedPictureSize());
}

plat::Size defaultThumbnailCanvas() {
    return thumbnailCanvas(sharedPictureSize());
}

}  // namespace velto
