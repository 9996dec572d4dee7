#pragma once

#include <memory>
#include <string>
#include <vector>

namespace plat {

// Base of every reference object the model passes around as `id` (images, colours, cells,
// specifiers, controllers). Identity matters as it does in Objective-C: two Values holding the
// same ObjectPtr are the same object.
class Object : public std::enable_shared_from_this<Object> {
  public:
    virtual ~Object() = default;

    // The runtime class name (what NSStringFromClass would answer).
    virtual std::string className() const = 0;

    // The class chain from this class up to NSObject, used by isKindOfClass: and by archiving.
    virtual std::vector<std::string> classChain() const { return {className(), "NSObject"}; }

    bool isKindOf(const std::string& name) const;

    // What %@ prints.
    virtual std::string description() const;
};

using ObjectPtr = std::shared_ptr<Object>;
using WeakObjectPtr = std::weak_ptr<Object>;

}  // namespace plat
