#include "platform/ui/activity_view_controller.h"

#include "platform/system/process.h"

namespace plat {

std::optional<std::string> ActivityViewController::text() const {
    for (const Value& item : items_)
        if (item.isString()) return item.str();
    return std::nullopt;
}

ImagePtr ActivityViewController::image() const {
    for (const Value& item : items_)
        if (auto image = item.as<Image>()) return image;
    return nullptr;
}

bool ActivityViewController::presentsAsPopover() const {
    if (ViewController::presentsAsPopover()) return true;
    Process* process = Process::tryCurrent();
    return process && process->deviceFamily() == DeviceFamily::iPad;
}

bool ActivityViewController::cancel() {
    // The presenter drops its hold on the sheet when it goes; the handler still belongs to it.
    const auto self = weak_from_this().lock();
    if (!dismissFromPresenter("cancel")) return false;
    if (completion_) completion_(std::nullopt, false);
    return true;
}

}  // namespace plat
