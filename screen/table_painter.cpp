#include "screen/table_painter.h"

#include <algorithm>
#include <cctype>

#include "platform/ui/image.h"
#include "screen/shapes.h"

namespace screen {

namespace {

constexpr double kRowHeight = 44;
constexpr double kIconSize = 29;
constexpr double kSectionGap = 35;
constexpr double kHeaderGap = 7;  // between a header's last line and its group
constexpr double kFooterGap = 7;  // between a group and its footer

std::string upper(std::string text) {
    // Headers are capitalised in ASCII only; other scripts keep their letters.
    for (char& c : text)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return text;
}

std::optional<std::string> stringProperty(const plat::Specifier& row, const char* key) {
    const plat::Value value = row.propertyForKey(key);
    if (!value.isString() || value.str().empty()) return std::nullopt;
    return value.str();
}

plat::ImagePtr iconOf(const plat::ListController& page, const plat::Specifier& row) {
    if (auto image = row.propertyForKey(plat::pskey::IconImage).as<plat::Image>()) return image;
    if (auto name = stringProperty(row, plat::pskey::Icon))
        return plat::Image::imageNamed(*name, page.bundle());
    return nullptr;
}

// What a value row shows on its right: the row's value as text.
std::optional<std::string> valueText(plat::ListController& page, const plat::SpecifierPtr& row) {
    if (row->cellType() != plat::PSTitleValueCell && row->cellType() != plat::PSLinkListCell)
        return std::nullopt;
    const plat::Value value = page.valueForSpecifier(row);
    if (value.isString()) return value.str();
    if (value.isInteger()) return std::to_string(value.integerValue());
    return std::nullopt;
}

bool isLink(const plat::Specifier& row) {
    return row.cellType() == plat::PSLinkCell || row.cellType() == plat::PSLinkListCell;
}

class TablePainter {
  public:
    TablePainter(cairo_t* cr, TextPainter& text, plat::ListController& page, Screenshot& shot)
        : cr_(cr), text_(text), page_(page), shot_(shot), look_(shot.look) {
        left_ = look_.margin;
        width_ = look_.width - 2 * look_.margin;
        textWidth_ = width_ - 2 * look_.cellInset;
    }

    void paint(double top) {
        auto list = page_.heldSpecifiers();
        if (!list) return;
        double y = top;
        for (std::size_t section = 0; section < page_.numberOfGroups(); ++section) {
            if (y > look_.height) break;  // below the screen
            y = paintSection(section, y);
        }
    }

  private:
    double headerX() const { return left_ + look_.cellInset; }

    double paintSection(std::size_t section, double y) {
        auto group = page_.groupSpecifierForSection(section);
        const TextStyle caption{13, Weight::Regular, look_.secondaryText};
        const std::string header = group ? group->name().value_or("") : "";
        if (!header.empty()) {
            const std::string shown = upper(header);
            const double height = text_.measure(shown, caption, textWidth_);
            y += std::max(kSectionGap, 17 + height + kHeaderGap);
            text_.draw(shown, caption, headerX(), y - kHeaderGap - height, textWidth_);
        } else {
            y += kSectionGap;
        }

        const std::size_t count = page_.rowsForGroup(section);
        std::vector<std::pair<plat::SpecifierPtr, plat::TableCellPtr>> rows;
        std::vector<double> heights;
        double groupHeight = 0;
        for (std::size_t row = 0; row < count; ++row) {
            const std::size_t index = page_.indexForRow(row, section);
            auto specifier = page_.specifierAtIndex(index);
            auto earlier = specifier->propertyForKey(plat::pskey::CellObject).as<plat::TableCell>();
            auto cell = page_.tableViewCellForRowAtIndexPath(row, section);
            double height = kRowHeight;
            if (cell && cell->hasCustomHeight())
                height = std::max(1.0, cell->preferredHeightForWidth(width_));
            rows.emplace_back(specifier, cell);
            heights.push_back(height);
            groupHeight += height;
            shot_.rows.push_back(
                RowFrame{index, plat::Rect{{left_, y + groupHeight - height}, {width_, height}},
                         cell, earlier});
        }

        // The group's white ground, rounded as one piece when inset; a custom cell with a
        // background colour of its own paints over it.
        if (groupHeight > 0) {
            roundedPath(cr_, plat::Rect{{left_, y}, {width_, groupHeight}}, look_.cornerRadius);
            setColor(cr_, kWhite);
            cairo_fill(cr_);
            if (!look_.insetGrouped) {
                fillRect(cr_, plat::Rect{{0, y - 0.5}, {look_.width, 0.5}}, look_.separator);
                fillRect(cr_, plat::Rect{{0, y + groupHeight}, {look_.width, 0.5}},
                         look_.separator);
            }
        }
        double rowTop = y;
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const bool first = i == 0, last = i + 1 == rows.size();
            const plat::Rect frame{{left_, rowTop}, {width_, heights[i]}};
            const double separatorX = paintRow(rows[i].first, rows[i].second, frame, first, last);
            if (!last)
                fillRect(cr_,
                         plat::Rect{{separatorX, rowTop + heights[i] - 0.5},
                                    {left_ + width_ - separatorX, 0.5}},
                         look_.separator);
            rowTop += heights[i];
        }
        y += groupHeight;

        if (auto footer = group ? stringProperty(*group, plat::pskey::FooterText) : std::nullopt) {
            y += kFooterGap;
            const double height = text_.draw(*footer, caption, headerX(), y, textWidth_);
            shot_.footers.push_back(
                TextFrame{section, plat::Rect{{headerX(), y}, {textWidth_, height}}});
            y += height;
        }
        return y;
    }

    // Draws one row; answers where its separator starts.
    double paintRow(const plat::SpecifierPtr& row, const plat::TableCellPtr& cell, plat::Rect frame,
                    bool first, bool last) {
        const double x = frame.origin.x, y = frame.origin.y;
        const double h = frame.size.height, w = frame.size.width;
        const double middle = y + h / 2;
        if (cell && cell->backgroundColor()) {
            cairo_save(cr_);
            roundedPath(cr_, frame, look_.cornerRadius, first, last);
            cairo_set_operator(cr_, CAIRO_OPERATOR_SOURCE);
            // A clear cell shows the table's ground, not the group's white.
            const Rgba own = rgbaOf(*cell->backgroundColor());
            setColor(cr_, own.a > 0 ? own : look_.background);
            cairo_fill(cr_);
            cairo_restore(cr_);
        }

        double textX = x + look_.cellInset;
        if (auto icon = iconOf(page_, *row)) {
            drawImage(cr_, *icon,
                      plat::Rect{{textX, middle - kIconSize / 2}, {kIconSize, kIconSize}});
            textX += kIconSize + 15;
        }
        double right = x + w - look_.cellInset;

        // A cell with text of its own fonts (a header cell) fills its height with it.
        if (cell && cell->textLabel().attributedText()) {
            const auto& attributed = *cell->textLabel().attributedText();
            const TextStyle base{17, Weight::Regular, kBlack, PANGO_ALIGN_CENTER};
            const double width = right - textX;
            const double height = text_.measure(attributed, base, width);
            cairo_save(cr_);
            cairo_rectangle(cr_, x, y, w, h);
            cairo_clip(cr_);
            text_.draw(attributed, base, textX, middle - height / 2, width);
            cairo_restore(cr_);
            return textX;
        }

        if (auto control = cell ? cell->control() : nullptr) {
            const Rgba on =
                control->onTintColor() ? rgbaOf(*control->onTintColor()) : look_.switchOn;
            drawSwitch(cr_, plat::Point{right - kSwitchWidth, middle - kSwitchHeight / 2},
                       control->isOn(), on, look_.switchOffBorder);
            right -= kSwitchWidth + 8;
        } else if (isLink(*row)) {
            drawChevron(cr_, right, middle, look_.chevron);
            right -= 8 + 12;
        }

        std::optional<std::string> label =
            cell && cell->textLabel().text() ? cell->textLabel().text() : row->name();
        const bool button = row->cellType() == plat::PSButtonCell;
        const TextStyle labelStyle{17, Weight::Regular, button ? look_.tint : kBlack,
                                   PANGO_ALIGN_LEFT, cell && cell->hasCustomHeight() ? 0 : 1};
        if (auto value = valueText(page_, row)) {
            const TextStyle valueStyle{17, Weight::Regular, Rgba{0.557, 0.557, 0.576, 1},
                                       PANGO_ALIGN_RIGHT, 1};
            const double valueWidth =
                std::min(text_.lineWidth(*value, valueStyle) + 1, (right - textX) / 2);
            text_.draw(*value, valueStyle, right - valueWidth, middle - 10.5, valueWidth);
            right -= valueWidth + 8;
        }
        if (label && !label->empty()) {
            const double width = std::max(1.0, right - textX);
            const double height = text_.measure(*label, labelStyle, width);
            cairo_save(cr_);
            cairo_rectangle(cr_, x, y, w, h);
            cairo_clip(cr_);
            text_.draw(*label, labelStyle, textX, middle - height / 2, width);
            cairo_restore(cr_);
        }
        return textX;
    }

    cairo_t* cr_;
    TextPainter& text_;
    plat::ListController& page_;
    Screenshot& shot_;
    const Look& look_;
    double left_ = 0, width_ = 0, textWidth_ = 0;
};

}  // namespace

void paintTable(cairo_t* cr, TextPainter& text, plat::ListController& page, double top,
                Screenshot& shot) {
    TablePainter(cr, text, page, shot).paint(top);
}

}  // namespace screen
