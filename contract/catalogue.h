#pragma once

// The names that cross between the bundle, the extension and the device they share: folders
// and files, settings keys, Darwin notifications, requests to the extension and their
// user-info keys, and the applications the bundle looks for. Every layer from the contract up
// spells them from here; this header includes nothing.

namespace velto {

inline constexpr const char* kBundlePath = "/System/Library/PreferenceBundles/VeltoSettings.bundle";

namespace folders {
inline constexpr const char* kPreferences = "/var/mobile/Library/Preferences";
inline constexpr const char* kLogs = "/var/mobile/Library/Logs/Velto";
}  // namespace folders

namespace files {
inline constexpr const char* kMainSettings = "com.norvale.velto.plist";
inline constexpr const char* kMainSettingsPath =
    "/var/mobile/Library/Preferences/com.norvale.velto.plist";
inline constexpr const char* kLog = "/var/mobile/Library/Logs/Velto/Velto.log";
// The call-log and recents pages' own file; the name is the system's and stays as it is.
inline constexpr const char* kWhatsAppSettings = "com.norvale.whatsapp.plist";
}  // namespace files

namespace keys {
inline constexpr const char* kMasterSwitch = "VeltoEnabled";
inline constexpr const char* kMonogram = "VeltoEnabledMonogram";
inline constexpr const char* kPhone = "PhoneAppEnabled";
inline constexpr const char* kFaceTime = "VeltoEnabledFacetime";
inline constexpr const char* kFavorites = "ShowFavoritesContactImage";
inline constexpr const char* kLockScreen = "VeltoEnabledLS";
inline constexpr const char* kNotificationCenter = "VeltoEnabledNC";
inline constexpr const char* kMail = "VeltoEnabledMail";
inline constexpr const char* kRoundedPictures = "VeltoEnabledRoundedPictures";
inline constexpr const char* kMessages = "VeltoEnabledMessages";
}  // namespace keys

namespace notifications {
inline constexpr const char* kSettingsChanged = "com.norvale.veltosettingschanged";
// The exclusion list alone changed. Apart from the settings-changed name, so that the
// Excluded applications page, which reloads on that one, is not sent back to the extension
// for its whole list after each of its own switches.
inline constexpr const char* kExcludedAppsChanged = "com.norvale.veltoexcludedappschanged";
inline constexpr const char* kMailAvatarChanged = "com.norvale.veltoemailavatarsettingschanged";
inline constexpr const char* kMessagesAvatarChanged =
    "com.norvale.veltomessagesavatarsettingschanged";
}  // namespace notifications

namespace requests {
inline constexpr const char* kCenterName = "com.norvale.velto";
inline constexpr const char* kAppIcon = "com.norvale.velto.appicon";
inline constexpr const char* kApps = "com.norvale.velto.apps";
inline constexpr const char* kProduct = "com.norvale.velto.product";
inline constexpr const char* kMessageID = "VeltoServiceMessageID";
inline constexpr const char* kMessageData = "VeltoServiceMessageData";
inline constexpr int kAppIconRequestKind = 6;
}  // namespace requests

// The keys of an application record in the application-list reply.
namespace records {
inline constexpr const char* kBundleIdentifier = "VeltoBundleIdentifier";
inline constexpr const char* kDisplayName = "VeltoFolderDisplayName";
inline constexpr const char* kType = "VeltoType";
inline constexpr const char* kImage = "VeltoFolderImage";
}  // namespace records

namespace appids {
inline constexpr const char* kMessages = "com.apple.MobileSMS";
inline constexpr const char* kWhatsApp = "net.whatsapp.WhatsApp";
inline constexpr const char* kBiteSMS = "com.bitesms";
inline constexpr const char* kRingLedger = "com.norvale.RingLedger10";
inline constexpr const char* kRecents = "com.norvale.recents";
// The extension's own package, whose version the about page shows.
inline constexpr const char* kProductPackage = "com.norvale.velto2";
}  // namespace appids

}  // namespace velto
