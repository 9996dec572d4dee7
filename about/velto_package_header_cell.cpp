#include "about/velto_package_header_cell.h"

#include "contract/catalogue.h"
#include "platform/foundation/format.h"
#include "platform/foundation/strings.h"
#include "platform/prefs/runtime.h"
#include "platform/ui/attributed_string.h"
#include "platform/ui/color.h"
#include "platform/ui/font.h"
#include "platform/ui/paragraph_style.h"

namespace velto {

bool VeltoPackageHeaderCell::initWithStyle(int style,
                                           const std::optional<std::string>& reuseIdentifier,
                                           const plat::SpecifierPtr& specifier) {
    if (!TableCell::initWithStyle(style, reuseIdentifier, specifier)) return false;
    setBackgroundColor(plat::Color::clearColor());
    setBackgroundView(nullptr);
    textLabel().setTextAlignment(plat::NSTextAlignmentCenter);
    updateData();
    return true;
}

bool VeltoPackageHeaderCell::initWithSpecifier(const plat::SpecifierPtr& specifier) {
    return initWithStyle(plat::UITableViewCellStyleDefault, std::nullopt, specifier);
}

double VeltoPackageHeaderCell::preferredHeightForWidth(double) {
    return 104.0;
}

void VeltoPackageHeaderCell::updateData() {
    const std::string name = kProductName;
    const std::string tagline = kTagline;
    auto text = plat::AttributedString::make(plat::stringWithFormat("%@\n%@", {name, tagline}),
                                             {{plat::NSKernAttributeName, plat::Value::null()}});
    auto paragraph = plat::ParagraphStyle::make();
    paragraph->setLineSpacing(4.0);
    paragraph->setAlignment(plat::NSTextAlignmentCenter);

    // The tagline's range starts at the newline, so the line break takes the small font.
    plat::AttributedString::Range range{0, plat::utf16Length(name)};
    text->addAttributes(
        {{plat::NSFontAttributeName, plat::Value(plat::Font::systemFontOfSize(26.0))},
         {plat::NSParagraphStyleAttributeName, plat::Value(paragraph)}},
        range);
    range.location += range.length;
    range.length = plat::utf16Length(tagline) + 1;
    text->addAttributes({{plat::NSFontAttributeName,
                          plat::Value(plat::Font::fontWithName("HelveticaNeue-Light", 14.0))},
                         {plat::NSParagraphStyleAttributeName, plat::Value(paragraph)}},
                        range);

    textLabel().setNumberOfLines(0);
    textLabel().setAttributedText(text);
}

void VeltoPackageHeaderCell::registerClass(plat::Runtime& runtime) {
    runtime.registerClass<VeltoPackageHeaderCell, plat::TableCell>(kBundlePath);
}

}  // namespace velto
