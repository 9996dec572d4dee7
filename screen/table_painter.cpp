#include "screen/table_painter.h"

#include <algorithm>

#include "platform/ui/image.h"
#include "screen/shapes.h"

namespace screen {

namespace {

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
    TablePainter(cairo_t* cr, TextPainter& text, plat::ListController& page, const Look& look)
        : cr_(cr), text_(text), page_(page), look_(look) {}

    void paint(const TableLayout& layout) {
        cairo_save(cr_);
        const plat::Rect& visible = layout.visible;
        cairo_rectangle(cr_, visible.origin.x, visible.origin.y, visible.size.width,
                        visible.size.height);
        cairo_clip(cr_);
        for (const LaidSection& section : layout.sections)
            paintSection(section);
        cairo_restore(cr_);
    }

  private:
    void paintSection(const LaidSection& section) {
        const TextStyle caption{13, Weight::Regular, look_.secondaryText};
        if (section.header) {
            const LaidText& header = *section.header;
            text_.draw(header.text, caption, header.frame.origin.x, header.frame.origin.y,
                       header.frame.size.width);
        }
        // The group's white ground, rounded as one piece when inset; a custom cell with a
        // background colour of its own paints over it.
        const plat::Rect& ground = section.ground;
        if (ground.size.height > 0) {
            roundedPath(cr_, ground, look_.cornerRadius);
            setColor(cr_, kWhite);
            cairo_fill(cr_);
            if (!look_.insetGrouped) {
                const double x = look_.pageX(), width = look_.pageWidth();
                fillRect(cr_, plat::Rect{{x, ground.origin.y - 0.5}, {width, 0.5}},
                         look_.separator);
                fillRect(cr_, plat::Rect{{x, ground.origin.y + ground.size.height}, {width, 0.5}},
                         look_.separator);
            }
        }
        for (const LaidRow& row : section.rows) {
            paintRow(row, section.textX);
            if (row.last) continue;
            const plat::Rect& frame = row.frame;
            fillRect(cr_,
                     plat::Rect{{section.textX, frame.origin.y + frame.size.height - 0.5},
                                {frame.origin.x + frame.size.width - section.textX, 0.5}},
                     look_.separator);
        }
        if (section.footer) {
            const LaidText& footer = *section.footer;
            text_.draw(footer.text, caption, footer.frame.origin.x, footer.frame.origin.y,
                       footer.frame.size.width);
        }
    }

    void paintRow(const LaidRow& laid, double textX) {
        const plat::SpecifierPtr& row = laid.specifier;
        const plat::TableCellPtr& cell = laid.cell;
        const plat::Rect frame = laid.frame;
        const double x = frame.origin.x, y = frame.origin.y;
        const double h = frame.size.height, w = frame.size.width;
        const double middle = y + h / 2;
        if (cell && cell->backgroundColor()) {
            cairo_save(cr_);
            roundedPath(cr_, frame, look_.cornerRadius, laid.first, laid.last);
            cairo_set_operator(cr_, CAIRO_OPERATOR_SOURCE);
            // A clear cell shows the table's ground, not the group's white.
            const Rgba own = rgbaOf(*cell->backgroundColor());
            setColor(cr_, own.a > 0 ? own : look_.background);
            cairo_fill(cr_);
            cairo_restore(cr_);
        }

        if (laid.icon)
            drawImage(
                cr_, *laid.icon,
                plat::Rect{{x + look_.cellInset, middle - kIconSize / 2}, {kIconSize, kIconSize}});
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
            return;
        }

        if (auto control = cell ? cell->control() : nullptr) {
            const Rgba on =
                control->onTintColor() ? rgbaOf(*control->onTintColor()) : look_.switchOn;
            drawSwitch(cr_, plat::Point{right - kSwitchWidth, middle - kSwitchHeight / 2},
                       control->isOn(), on, look_.switchOff, look_.outlinedOffSwitch);
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
    }

    cairo_t* cr_;
    TextPainter& text_;
    plat::ListController& page_;
    const Look& look_;
};

}  // namespace

void paintTable(cairo_t* cr, TextPainter& text, plat::ListController& page,
                const TableLayout& layout, const Look& look) {
    TablePainter(cr, text, page, look).paint(layout);
}

}  // namespace screen
