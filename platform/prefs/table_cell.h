#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/foundation/object.h"
#include "platform/prefs/specifier.h"
#include "platform/ui/color.h"
#include "platform/ui/view.h"

namespace plat {

class AttributedString;

// UISwitch: the control of a switch row.
class Switch : public View {
  public:
    static constexpr const char* kClassName = "UISwitch";
    std::string className() const override { return kClassName; }
    bool isOn() const { return on_; }
    void setOn(bool on) { on_ = on; }
    ColorPtr onTintColor() const { return onTint_; }
    void setOnTintColor(ColorPtr color) { onTint_ = std::move(color); }

  private:
    bool on_ = false;
    ColorPtr onTint_;
};

// UILabel as cells use it.
class Label {
  public:
    const std::optional<std::string>& text() const { return text_; }
    void setText(std::optional<std::string> text) { text_ = std::move(text); }
    std::shared_ptr<AttributedString> attributedText() const { return attributed_; }
    void setAttributedText(std::shared_ptr<AttributedString> text);
    int textAlignment() const { return alignment_; }  // NSTextAlignment
    void setTextAlignment(int alignment) { alignment_ = alignment; }
    int numberOfLines() const { return lines_; }  // 0: unlimited
    void setNumberOfLines(int lines) { lines_ = lines; }

  private:
    std::optional<std::string> text_;
    std::shared_ptr<AttributedString> attributed_;
    int alignment_ = 0;
    int lines_ = 1;
};

// UITableViewCellStyle values.
enum TableViewCellStyle : int { UITableViewCellStyleDefault = 0, UITableViewCellStyleValue1 = 1 };

// PSTableCell. The list controller makes one per shown row (from the row's "cellClass" when it
// names a registered cell class), sends it an initialiser, and records it on the row under
// "cellObject". Switch rows get a control.
class TableCell : public View {
  public:
    static constexpr const char* kClassName = "PSTableCell";
    std::string className() const override { return kClassName; }
    std::vector<std::string> classChain() const override;

    // initWithStyle:reuseIdentifier:specifier: — the designated initialiser; false stands for
    // an initialiser that answered nil.
    virtual bool initWithStyle(int style, const std::optional<std::string>& reuseIdentifier,
                               const SpecifierPtr& specifier);
    // initWithSpecifier: — the framework's convenience for custom cells.
    virtual bool initWithSpecifier(const SpecifierPtr& specifier);
    // The height the table gives the row.
    virtual double preferredHeightForWidth(double width);
    // Whether the cell class chose its own height (PreferencesTableCustomView).
    virtual bool hasCustomHeight() const { return false; }

    SpecifierPtr specifier() const { return specifier_.lock(); }
    int type() const { return type_; }
    int style() const { return style_; }

    Label& textLabel() { return textLabel_; }
    const Label& textLabel() const { return textLabel_; }
    ColorPtr backgroundColor() const { return background_; }
    void setBackgroundColor(ColorPtr color) { background_ = std::move(color); }
    ObjectPtr backgroundView() const { return backgroundView_; }
    void setBackgroundView(ObjectPtr view) { backgroundView_ = std::move(view); }
    // The switch of a switch row; nullptr for other rows.
    std::shared_ptr<Switch> control() const { return control_; }

  private:
    std::weak_ptr<Specifier> specifier_;
    int type_ = PSStaticTextCell;
    int style_ = UITableViewCellStyleDefault;
    Label textLabel_;
    ColorPtr background_;
    ObjectPtr backgroundView_;
    std::shared_ptr<Switch> control_;
};

using TableCellPtr = std::shared_ptr<TableCell>;

}  // namespace plat
