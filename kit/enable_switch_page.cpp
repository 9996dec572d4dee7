#include "kit/enable_switch_page.h"

#include "contract/catalogue.h"
#include "contract/enabled_query.h"
#include "kit/row_editing.h"
#include "platform/prefs/user_defaults.h"

namespace velto {

bool EnableSwitchPage::isEnabled() {
    return enabledQuery(key_, files::kMainSettings);
}

plat::SpecifierArrayPtr EnableSwitchPage::specifiers() {
    if (heldSpecifiers()) return heldSpecifiers();
    auto list = loadSpecifiersFromPlistName(resource_, shared_from_this());
    if (!isEnabled()) rows::removeDownToTwo(*list, list->count() - 1);
    setHeldSpecifiers(list);
    return list;
}

void EnableSwitchPage::enabledOrDisabled(const plat::Value& value,
                                         const plat::SpecifierPtr& specifier) {
    setPreferenceValue(value, specifier);
    plat::UserDefaults::standardUserDefaults().synchronize();
    // Every file row from 2 on, whatever is shown already: a second "on" shows them twice.
    rows::applyEnableSwitch(*this, value.boolValue(), resource_);
}

}  // namespace velto
