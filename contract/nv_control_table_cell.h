#pragma once

#include <string>

#include "platform/prefs/table_cell.h"
#include "platform/ui/color.h"

namespace plat {
class Runtime;
}

namespace velto {

// The maker's control cell: a switch cell whose on-colour a subclass chooses through the
// switchCellOnTintColor hook (null keeps the system colour).
class NVControlTableCell : public plat::TableCell {
  public:
    static constexpr const char* kClassName = "NVControlTableCell";
    std::string className() const override { return kClassName; }
    bool initWithStyle(int style, const std::optional<std::string>& reuseIdentifier,
                       const plat::SpecifierPtr& specifier) override;
    virtual plat::ColorPtr switchCellOnTintColor() { return nullptr; }

    static void registerClass(plat::Runtime& runtime);
};

}  // namespace velto
