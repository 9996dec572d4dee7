#pragma once

// The names that cross between the bundle and the extension: settings files and keys,
// Darwin notifications, requests to the extension and their user-info keys.

namespace velto {

inline constexpr const char* kBundlePath = "/System/Library/PreferenceBundles/VeltoSettings.bundle";

namespace files {
inline constexpr const char* kMainSettings = "com.norvale.velto.plist";
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
inline constexpr const char* kMailAvatarChanged = "com.norvale.veltoemailavatarsettingschanged";
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

}  // namespace velto
