#pragma once

#include "platform/foundation/keyed_archive.h"

namespace plat {

// How UIImage and UIColor objects are keyed-archived, as UIKit's encodeWithCoder: writes
// them. Registered by the image and colour code itself, so that any program holding one can
// archive it.
ArchiveCodec imageArchiveCodec();
ArchiveCodec colorArchiveCodec();

}  // namespace plat
