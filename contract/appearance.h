#pragma once

#include <memory>
#include <string>

#include "platform/ui/bar_button_item.h"
#include "platform/ui/color.h"
#include "platform/ui/image.h"
#include "platform/ui/view_controller.h"

namespace velto {

// What both libraries' page bases do with the appearance hooks when a page's view loads.
struct Appearance {
    std::shared_ptr<plat::BarButtonItem> backButton;  // null: the system back button
    plat::ColorPtr barTint;                           // null: the system bar
    plat::ImagePtr titleImage;                        // null: the text title
};
void applyAppearance(plat::ViewController& page, const Appearance& appearance);

// The back button of the maker's pages below system version 11: the "Velto" image of the
// page class's bundle, plain style, calling backButtonAction: on the page. From 11 on the
// system's own back button stays (null).
std::shared_ptr<plat::BarButtonItem> makeBackButton(const plat::ObjectPtr& page,
                                                    const std::string& pageClassName);

// The sharing text, through the main bundle's localisation.
std::string sharingMessage();

// An image of the bundle that holds a class.
plat::ImagePtr bundleImage(const std::string& className, const std::string& imageName);

}  // namespace velto
