#include "contract/appearance.h"

#include "contract/velto_utils.h"
#include "platform/prefs/runtime.h"
#include "platform/system/bundle.h"

namespace velto {

void applyAppearance(plat::ViewController& page, const Appearance& appearance) {
    auto& item = page.navigationItem();
    item.setLeftBarButtonItem(appearance.backButton);
    item.setBarTintColor(appearance.barTint);
    item.setTitleImage(appearance.titleImage);
}

plat::ImagePtr bundleImage(const std::string& className, const std::string& imageName) {
    return plat::Image::imageNamed(
        imageName, plat::Bundle(plat::Runtime::shared().bundlePathForClass(className)));
}

std::shared_ptr<plat::BarButtonItem> makeBackButton(const plat::ObjectPtr& page,
                                                    const std::string& pageClassName) {
    if (VeltoUtils::isIOS11()) return nullptr;
    return plat::BarButtonItem::initWithImage(bundleImage(pageClassName, "Velto"),
                                              plat::UIBarButtonItemStylePlain, page,
                                              "backButtonAction:");
}

std::string sharingMessage() {
    return plat::NSLocalizedString(
        "I'm loving #Velto2, which brings contact pictures every where on my iDevice.");
}

}  // namespace velto
