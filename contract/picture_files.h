#pragma once

#include <string>

#include "platform/foundation/geometry.h"
#include "platform/ui/image.h"

namespace velto {

// Draws a picture stretched over a transparent canvas of the given size in points, at the
// main screen's scale, and writes it as PNG to a device path, atomically. False when the
// write failed.
bool writePictureFile(const plat::ImagePtr& picture, plat::Size canvas,
                      const std::string& devicePath);

// The canvases of a default picture and of its thumbnail for a contact picture size: twice
// the size, and the thumbnail's 8 points larger each way than the picture's, not smaller.
plat::Size pictureCanvas(plat::Size pictureSize);
plat::Size thumbnailCanvas(plat::Size pictureSize);
// The same for the shared settings' picture size.
plat::Size defaultPictureCanvas();
plat::Size defaultThumbnailCanvas();

}  // namespace velto
