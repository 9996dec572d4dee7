#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/value.h"
#include "platform/system/message_center.h"

namespace velto {

// The maker's shared interface library's class methods: message centers to the extension's
// SpringBoard side, and application data containers.
class NVUtils {
  public:
    // A message center object for the name (the tweak message center for "com.norvale.velto").
    static std::shared_ptr<plat::MessageCenter> messageCenter(const std::string& name);
    // One synchronous request through a fresh center of that name. ignoreApproach chooses
    // between delivery approaches on a device; the model has one, so it changes nothing.
    static plat::Value sendMessageToSpringBoardAndReceiveReplyName(const std::string& centerName,
                                                                   const std::string& messageName,
                                                                   bool ignoreApproach,
                                                                   const plat::Value& userInfo);
    // The data container of an application, nil when it has none.
    static std::optional<std::string> applicationDataContainerDirectory(
        const std::string& bundleIdentifier);
};

}  // namespace velto
