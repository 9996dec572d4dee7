#include "platform/system/message_center.h"

#include <exception>

#include "platform/system/journal.h"

namespace plat {

Value MessageCenter::sendMessageAndReceiveReplyName(const std::string& messageName,
                                                    const Value& userInfo, std::string* error) {
    return hub_.route(name_, messageName, userInfo, error);
}

std::shared_ptr<MessageCenter> MessageCenters::centerNamed(const std::string& name) {
    {
        std::lock_guard lock(mutex_);
        ++made_;
    }
    return std::make_shared<MessageCenter>(name, *this);
}

std::size_t MessageCenters::centersMade() const {
    std::lock_guard lock(mutex_);
    return made_;
}

void MessageCenters::setResponder(MessageResponder responder) {
    std::lock_guard lock(mutex_);
    responder_ = std::move(responder);
}

Value MessageCenters::route(const std::string& centerName, const std::string& messageName,
                            const Value& userInfo, std::string* error) {
    MessageResponder responder;
    {
        std::lock_guard lock(mutex_);
        responder = responder_;
    }

    // The caller waits on a reply that may never come; on a device that is a timeout and an
    // NSError, here it is a nil reply and a message. Nothing thrown crosses back.
    Value reply;
    std::string failure;
    if (!responder) {
        failure = "no server is listening on " + centerName;
    } else {
        try {
            // The responder runs unlocked: answering may well use message centers itself.
            reply = responder(centerName, messageName, userInfo);
            if (reply.isNil()) failure = "no reply to " + messageName + " from " + centerName;
        } catch (const std::exception& e) {
            reply = Value();
            failure = "request " + messageName + " to " + centerName + " failed: " + e.what();
        } catch (...) {
            reply = Value();
            failure = "request " + messageName + " to " + centerName + " failed";
        }
    }
    if (error && !failure.empty()) *error = failure;

    journal_.append(journal::Request{centerName, messageName, userInfo, reply});
    return reply;
}

}  // namespace plat
