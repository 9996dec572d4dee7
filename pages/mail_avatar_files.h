#pragma once

#include <string>

#include "platform/foundation/geometry.h"
#include "platform/ui/image.h"

namespace velto::mail {

// The default avatar that Mail shows for senders without a contact picture: a full-size image
// and a thumbnail in the extension's Mail folder, and the stock picture of the bundle that a
// restore goes back to. The extension reads the files; this side only writes and removes them
// and tells the extension when they changed.

// "/var/mobile/Library/Mail/Velto": the folder joined as a path component, so its trailing
// separator goes away.
std::string avatarFolderPath();
// The file names carry "@3x.png" whatever the screen: the extension looks for exactly these
// names, and the pixel density they were drawn at is not part of them.
std::string avatarImagePath();
std::string avatarThumbnailPath();
// The bundle's stock avatar, read only.
std::string stockAvatarPath();

enum class AvatarFile { Image, Thumbnail };

// Draws the picture stretched over a transparent canvas at the main screen's scale and writes
// it as PNG, atomically, so the extension never reads a half-written avatar. The folder is
// made on demand; when that fails one error line is logged and nothing is written. The
// "Saved ..." line follows every attempted write.
void saveAvatar(const plat::ImagePtr& picture, AvatarFile file);

// Removes one file system entry when there is one, with its log lines.
void removeAvatarItem(const std::string& path);

// Tells the extension that the avatar files changed.
void postAvatarsChanged();

}  // namespace velto::mail
