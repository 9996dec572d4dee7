#pragma once

#include <optional>
#include <string>

#include "platform/prefs/table_cell.h"

namespace plat {
class Runtime;
}

namespace velto {

// The product's name and tagline, centred in two sizes, at the head of a page. A resource row
// names it as its cell class.
class VeltoPackageHeaderCell : public plat::TableCell {
  public:
    static constexpr const char* kProductName = "Velto 2";
    static constexpr const char* kTagline = "Contact pictures everywhere and anywhere!!";

    static constexpr const char* kClassName = "VeltoPackageHeaderCell";

    std::string className() const override { return kClassName; }

    bool initWithStyle(int style, const std::optional<std::string>& reuseIdentifier,
                       const plat::SpecifierPtr& specifier) override;
    bool initWithSpecifier(const plat::SpecifierPtr& specifier) override;
    // Constant, so the table sizes the row without laying it out.
    double preferredHeightForWidth(double width) override;
    bool hasCustomHeight() const override { return true; }
    void updateData();

    static void registerClass(plat::Runtime& runtime);
};

}  // namespace velto
