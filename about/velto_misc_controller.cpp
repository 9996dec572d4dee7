#include "about/velto_misc_controller.h"

#include "about/version_lookup.h"
#include "contract/appearance.h"
#include "contract/catalogue.h"
#include "contract/list_categories.h"
#include "contract/velto_settings.h"
#include "contract/velto_utils.h"
#include "platform/foundation/format.h"
#include "platform/prefs/runtime.h"
#include "platform/system/bundle.h"

namespace velto {

namespace {

const char* const kProductName = "Velto 2";

const char* const kLoggingOffMessage =
    "Please turn on 'Enable Logging' and try. Before sharing the log file, please ensure that "
    "the problem is reproducible on your device. This helps the %@ to log the necessary "
    "information identifying the problem.";

plat::Value orNil(const std::optional<std::string>& text) {
    return text ? plat::Value(*text) : plat::Value();
}

}  // namespace

std::string VeltoMiscController::serviceName() {
    return requests::kCenterName;
}

std::string VeltoMiscController::productName() {
    return kProductName;
}

std::string VeltoMiscController::twitterMessage() {
    return sharingMessage();
}

plat::ImagePtr VeltoMiscController::twitterImage() {
    return bundleImage(className(), "twitter_velto");
}

plat::ColorPtr VeltoMiscController::customNavigationBarColor() {
    return VeltoUtils::navigationBarColor(className(), "nav");
}

std::shared_ptr<plat::BarButtonItem> VeltoMiscController::customBackButton() {
    return makeBackButton(shared_from_this(), className());
}

plat::SpecifierPtr VeltoMiscController::copyRightSpecifier() {
    return nv__specifierByIdentifier(specifiers(), kCopyRightIdentifier);
}

std::string VeltoMiscController::copryRightSpecifierText(std::int64_t year) {
    return plat::stringWithFormat("Version %@, © %ld Norvale, Inc. All rights reserved,",
                                  {orNil(__getProductVersion()), plat::Value::integer(year)});
}

void VeltoMiscController::emailLogFile(const plat::ObjectPtr& sender) {
    if (VeltoSettings::sharedSettings()->isLoggingEnabled()) {
        NVMiscSettingsViewController::emailLogFile(sender);
        return;
    }
    const std::string format = plat::NSLocalizedString(kLoggingOffMessage);
    showError(plat::stringWithFormat(format, {plat::Value(kProductName)}));
}

void VeltoMiscController::registerClass(plat::Runtime& runtime) {
    runtime.registerClass<VeltoMiscController, NVMiscSettingsViewController>(kBundlePath);
}

}  // namespace velto
