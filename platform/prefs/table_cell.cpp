#include "platform/prefs/table_cell.h"

#include "platform/prefs/runtime.h"
#include "platform/ui/attributed_string.h"

namespace plat {

void Label::setAttributedText(std::shared_ptr<AttributedString> text) {
    attributed_ = std::move(text);
    // UILabel mirrors the plain text of an attributed text.
    if (attributed_) text_ = attributed_->string();
}

std::vector<std::string> TableCell::classChain() const {
    return Runtime::shared().classChain(className());
}

bool TableCell::initWithStyle(int style, const std::optional<std::string>&,
                              const SpecifierPtr& specifier) {
    style_ = style;
    specifier_ = specifier;
    if (!specifier) return true;
    type_ = specifier->cellType();
    textLabel_.setText(specifier->name());
    if (type_ == PSSwitchCell) control_ = std::make_shared<Switch>();
    return true;
}

bool TableCell::initWithSpecifier(const SpecifierPtr& specifier) {
    return initWithStyle(UITableViewCellStyleDefault, std::nullopt, specifier);
}

double TableCell::preferredHeightForWidth(double) {
    return 44.0;
}

}  // namespace plat
