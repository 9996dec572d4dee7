#pragma once

#include <memory>

#include "contract/catalogue.h"
#include "platform/system/message_center.h"

namespace plat {
class DeviceRoot;
class Process;
}  // namespace plat

namespace velto::device {

// The extension's SpringBoard half, as far as the bundle talks to it: answers on the center
// "com.norvale.velto" to
//   "com.norvale.velto.appicon"  {"VeltoServiceMessageData": archived icon of the app whose
//                                 bundle identifier the request's "VeltoServiceMessageData" holds,
//                                 when its "VeltoServiceMessageID" is 6, the icon request kind}
//   "com.norvale.velto.apps"     {"VeltoServiceMessageData": archived array of application
//                                 records, one per installed app}
//   "com.norvale.velto.product"  {"VeltoServiceMessageData": archived {"Version": ...}: the
//                                 profile's ExtensionVersion, else the package database's
//                                 entry for com.norvale.velto2}
// Anything it does not know gets no reply. An app or package it cannot find gets a reply
// without payload, as SpringBoard answers when it has nothing to give. The application list
// is read afresh for every request; an icon request reads only the folder listings of the
// applications and, while they list the same entries, finds the app where the last scan did.
// Applications installed or removed meanwhile are seen either way.
plat::MessageResponder extensionResponder(std::shared_ptr<const plat::DeviceRoot> device);

// Puts the extension in place for a process on its device, unless the device's profile says
// the extension does not answer (then requests simply get no reply).
void attachExtension(plat::Process& process);

// The application record keys of the application-list reply.
namespace records = velto::records;

inline constexpr const char* kProductPackage = appids::kProductPackage;

}  // namespace velto::device
