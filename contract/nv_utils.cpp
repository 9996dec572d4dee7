#include "contract/nv_utils.h"

#include "contract/installed_apps.h"
#include "platform/system/process.h"

namespace velto {

std::shared_ptr<plat::MessageCenter> NVUtils::messageCenter(const std::string& name) {
    return plat::Process::current().messageCenters().centerNamed(name);
}

plat::Value NVUtils::sendMessageToSpringBoardAndReceiveReplyName(const std::string& centerName,
                                                                 const std::string& messageName,
                                                                 bool,
                                                                 const plat::Value& userInfo) {
    return messageCenter(centerName)->sendMessageAndReceiveReplyName(messageName, userInfo);
}

std::optional<std::string> NVUtils::applicationDataContainerDirectory(
    const std::string& bundleIdentifier) {
    return findDataContainer(bundleIdentifier);
}

}  // namespace velto
