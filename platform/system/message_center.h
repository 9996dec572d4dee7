#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "platform/foundation/object.h"
#include "platform/foundation/value.h"

namespace plat {

class Journal;

// The answering side of message centers (outside this program on a device: the extension's
// SpringBoard half). Answers the reply dictionary, or nil for no reply.
using MessageResponder = std::function<Value(
    const std::string& centerName, const std::string& messageName, const Value& userInfo)>;

class MessageCenters;

// A named center with synchronous request/reply. No responder, a responder that throws or
// answers nil: the reply is nil, never a hang and never an exception to the caller.
class MessageCenter : public Object {
  public:
    MessageCenter(std::string name, MessageCenters& hub) : name_(std::move(name)), hub_(hub) {}
    std::string className() const override { return "CPDistributedMessagingCenter"; }
    const std::string& name() const { return name_; }

    // sendMessageAndReceiveReplyName:userInfo:error:. `error` (may be null) gets a message
    // when no reply came.
    Value sendMessageAndReceiveReplyName(const std::string& messageName, const Value& userInfo,
                                         std::string* error = nullptr);

  private:
    std::string name_;
    MessageCenters& hub_;
};

// The process's view of message centers: makes center objects and routes their requests to
// the pluggable responder. Every request is journaled with whether a reply came.
class MessageCenters {
  public:
    explicit MessageCenters(Journal& journal) : journal_(journal) {}

    // A new center object for the name (what `messageCenter:` hands out).
    std::shared_ptr<MessageCenter> centerNamed(const std::string& name);
    std::size_t centersMade() const;

    void setResponder(MessageResponder responder);
    Value route(const std::string& centerName, const std::string& messageName,
                const Value& userInfo, std::string* error);

  private:
    Journal& journal_;
    mutable std::mutex mutex_;
    MessageResponder responder_;
    std::size_t made_ = 0;
};

}  // namespace plat
