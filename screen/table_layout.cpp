#include "screen/table_layout.h"

#include <algorithm>

namespace screen {

namespace {

constexpr double kRowHeight = 44;
constexpr double kSectionGap = 35;
constexpr double kHeaderGap = 7;  // between a header's last line and its group
constexpr double kFooterGap = 7;  // between a group and its footer
constexpr double kIconGap = 15;   // between an icon and its label

const TextStyle kCaption{13, Weight::Regular, Rgba{}};

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

class Layouter {
  public:
    Layouter(TextPainter& text, plat::ListController& page, const Look& look)
        : text_(text), page_(page), look_(look) {
        left_ = look.pageX() + look.margin;
        width_ = look.pageWidth() - 2 * look.margin;
        textWidth_ = width_ - 2 * look.cellInset;
    }

    TableLayout layout(double top) {
        TableLayout table;
        table.visible = plat::Rect{{look_.pageX(), 0}, {look_.pageWidth(), look_.contentBottom()}};
        if (!page_.heldSpecifiers()) return table;
        double y = top;
        for (std::size_t section = 0; section < page_.numberOfGroups(); ++section) {
            if (y > table.visible.size.height) break;  // below what the screen shows
            table.sections.push_back(layoutSection(section, y));
        }
        return table;
    }

  private:
    LaidSection layoutSection(std::size_t section, double& y) {
        LaidSection laid;
        laid.section = section;
        auto group = page_.groupSpecifierForSection(section);
        const double headerX = left_ + look_.cellInset;
        const std::string header = group ? group->name().value_or("") : "";
        if (!header.empty()) {
            const std::string shown = upper(header);
            const double height = text_.measure(shown, kCaption, textWidth_);
            y += std::max(kSectionGap, 17 + height + kHeaderGap);
            laid.header =
                LaidText{shown, {{headerX, y - kHeaderGap - height}, {textWidth_, height}}};
        } else {
            y += kSectionGap;
        }

        const std::size_t count = page_.rowsForGroup(section);
        const double groupTop = y;
        bool icons = false;
        for (std::size_t row = 0; row < count; ++row) {
            LaidRow laidRow;
            laidRow.index = page_.indexForRow(row, section);
            laidRow.specifier = page_.specifierAtIndex(laidRow.index);
            laidRow.earlierCell =
                laidRow.specifier->propertyForKey(plat::pskey::CellObject).as<plat::TableCell>();
            laidRow.cell = page_.tableViewCellForRowAtIndexPath(row, section);
            laidRow.icon = iconOf(page_, *laidRow.specifier);
            icons = icons || laidRow.icon;
            double height = kRowHeight;
            if (laidRow.cell && laidRow.cell->hasCustomHeight())
                height = std::max(1.0, laidRow.cell->preferredHeightForWidth(width_));
            laidRow.frame = plat::Rect{{left_, y}, {width_, height}};
            laidRow.first = row == 0;
            laidRow.last = row + 1 == count;
            laid.rows.push_back(std::move(laidRow));
            y += height;
        }
        laid.ground = plat::Rect{{left_, groupTop}, {width_, y - groupTop}};
        laid.textX = headerX + (icons ? kIconSize + kIconGap : 0);

        if (auto footer = group ? stringProperty(*group, plat::pskey::FooterText) : std::nullopt) {
            y += kFooterGap;
            const double height = text_.measure(*footer, kCaption, textWidth_);
            laid.footer = LaidText{*footer, {{headerX, y}, {textWidth_, height}}};
            y += height;
        }
        return laid;
    }

    TextPainter& text_;
    plat::ListController& page_;
    const Look& look_;
    double left_ = 0, width_ = 0, textWidth_ = 0;
};

}  // namespace

TableLayout TableLayout::of(TextPainter& text, plat::ListController& page, const Look& look,
                            double top) {
    return Layouter(text, page, look).layout(top);
}

const LaidRow* TableLayout::row(std::size_t index) const {
    for (const LaidSection& section : sections)
        for (const LaidRow& laid : section.rows)
            if (laid.index == index) return &laid;
    return nullptr;
}

}  // namespace screen
