#include "screen/presented_painter.h"

#include <algorithm>

#include "platform/prefs/table_cell.h"
#include "platform/ui/activity_view_controller.h"
#include "platform/ui/alert_controller.h"
#include "platform/ui/image_picker_controller.h"
#include "platform/ui/mail_compose_view_controller.h"
#include "screen/shapes.h"
#include "screen/share_sheet_painter.h"

namespace screen {

namespace {

constexpr double kAlertWidth = 270;
constexpr double kPopoverWidth = 304;
constexpr double kArrowHeight = 13;
constexpr double kArrowWidth = 26;
constexpr double kSheetRow = 57;

const Rgba kPanel{0.97, 0.97, 0.97, 1};
const Rgba kLine{0.24, 0.24, 0.26, 0.29};
const Rgba kDim{0, 0, 0, 0.2};

Rgba actionColor(const plat::AlertAction& action, const Look& look) {
    return action.style() == plat::UIAlertActionStyleDestructive ? look.destructive : look.tint;
}

Weight actionWeight(const plat::AlertAction& action) {
    return action.style() == plat::UIAlertActionStyleCancel ? Weight::Semibold : Weight::Regular;
}

class PresentedPainter {
  public:
    PresentedPainter(cairo_t* cr, TextPainter& text, Screenshot& shot)
        : cr_(cr), text_(text), shot_(shot), look_(shot.look) {}

    void paint(const plat::ViewController& presented) {
        if (auto* alert = dynamic_cast<const plat::AlertController*>(&presented)) {
            if (alert->preferredStyle() == plat::UIAlertControllerStyleAlert)
                return paintAlert(*alert);
            if (alert->presentsAsPopover()) return paintPopover(*alert);
            return paintActionSheet(*alert);
        }
        if (presented.presentsAsPopover()) return paintPopover(presented);
        if (auto* share = dynamic_cast<const plat::ActivityViewController*>(&presented))
            return paintShareCard(*share);
        const bool picker = dynamic_cast<const plat::ImagePickerController*>(&presented) != nullptr;
        paintSheet(presented, presented.title().value_or(picker ? "Photos" : ""), picker);
    }

  private:
    void dim() { fillRect(cr_, plat::Rect{{0, 0}, {look_.width, look_.height}}, kDim); }

    // Title and message of an alert or sheet, centred; answers the height they take.
    double heading(const plat::AlertController& alert, double x, double y, double width,
                   bool measureOnly, bool sheet) {
        double height = 0;
        const Rgba ink = sheet ? look_.secondaryText : kBlack;
        const TextStyle titleStyle{sheet ? 13.0 : 17.0, Weight::Semibold, ink, PANGO_ALIGN_CENTER};
        const TextStyle messageStyle{13, Weight::Regular, ink, PANGO_ALIGN_CENTER};
        if (!alert.title() && !alert.message()) return 0;
        height += sheet ? 14 : 19;
        auto put = [&](const std::string& text, const TextStyle& style) {
            height += measureOnly ? text_.measure(text, style, width)
                                  : text_.draw(text, style, x, y + height, width);
        };
        if (alert.title()) put(*alert.title(), titleStyle);
        if (alert.title() && alert.message()) height += 3;
        if (alert.message()) put(*alert.message(), messageStyle);
        return height + (sheet ? 14 : 19);
    }

    void actionLabel(const plat::AlertAction& action, plat::Rect row, double size) {
        const TextStyle style{size, actionWeight(action), actionColor(action, look_),
                              PANGO_ALIGN_CENTER, 1};
        const double height = text_.measure(action.title(), style, row.size.width - 16);
        text_.draw(action.title(), style, row.origin.x + 8,
                   row.origin.y + (row.size.height - height) / 2, row.size.width - 16);
    }

    void paintAlert(const plat::AlertController& alert) {
        dim();
        const auto& actions = alert.actions();
        const bool sideBySide = actions.size() == 2;
        const double head = heading(alert, 0, 0, kAlertWidth - 32, true, false);
        const double buttons = sideBySide ? 44 : 44 * static_cast<double>(actions.size());
        const double height = head + buttons;
        const double x = (look_.width - kAlertWidth) / 2;
        const double y = (look_.height - height) / 2;
        roundedPath(cr_, plat::Rect{{x, y}, {kAlertWidth, height}}, 14);
        setColor(cr_, kPanel);
        cairo_fill(cr_);
        heading(alert, x + 16, y, kAlertWidth - 32, false, false);
        double top = y + head;
        for (std::size_t i = 0; i < actions.size(); ++i) {
            plat::Rect row{{x, top}, {kAlertWidth, 44}};
            if (sideBySide) {
                row.size.width = kAlertWidth / 2;
                row.origin.x = x + static_cast<double>(i) * kAlertWidth / 2;
                if (i == 1) fillRect(cr_, plat::Rect{{row.origin.x, top}, {0.5, 44}}, kLine);
            } else {
                top += 44;
            }
            fillRect(cr_, plat::Rect{row.origin, {row.size.width, 0.5}}, kLine);
            actionLabel(*actions[i], row, 17);
            shot_.buttons.push_back({actions[i]->title(), row});
        }
    }

    void paintActionSheet(const plat::AlertController& alert) {
        dim();
        const double width = std::min(look_.width - 16, 359.0);
        const double x = (look_.width - width) / 2;
        std::vector<const plat::AlertAction*> main, cancel;
        for (const auto& action : alert.actions())
            (action->style() == plat::UIAlertActionStyleCancel ? cancel : main)
                .push_back(action.get());
        const double head = heading(alert, 0, 0, width - 32, true, true);
        const double mainHeight = head + kSheetRow * static_cast<double>(main.size());
        double bottom = look_.height - std::max(8.0, look_.homeIndicator);
        if (!cancel.empty()) {
            const plat::Rect box{{x, bottom - kSheetRow}, {width, kSheetRow}};
            roundedPath(cr_, box, 14);
            setColor(cr_, kWhite);
            cairo_fill(cr_);
            actionLabel(*cancel.front(), box, 20);
            shot_.buttons.push_back({cancel.front()->title(), box});
            bottom -= kSheetRow + 8;
        }
        if (mainHeight <= 0) return;
        const double y = bottom - mainHeight;
        roundedPath(cr_, plat::Rect{{x, y}, {width, mainHeight}}, 14);
        setColor(cr_, kPanel);
        cairo_fill(cr_);
        heading(alert, x + 16, y, width - 32, false, true);
        double top = y + head;
        for (std::size_t i = 0; i < main.size(); ++i, top += kSheetRow) {
            if (i > 0 || head > 0) fillRect(cr_, plat::Rect{{x, top}, {width, 0.5}}, kLine);
            const plat::Rect row{{x, top}, {width, kSheetRow}};
            actionLabel(*main[i], row, 20);
            shot_.buttons.push_back({main[i]->title(), row});
        }
    }

    // Where the popover points: the row whose cell it names (that cell, or one made for the
    // same row before or since), else the middle of the screen.
    plat::Rect anchorOf(const plat::ViewController& controller) {
        const auto* popover = controller.popoverPresentationController();
        const auto source = popover ? popover->sourceView() : nullptr;
        const auto sourceCell = std::dynamic_pointer_cast<plat::TableCell>(source);
        const auto sourceRow = sourceCell ? sourceCell->specifier() : nullptr;
        for (const LaidSection& section : shot_.table.sections)
            for (const LaidRow& row : section.rows) {
                if (!source) break;
                if (source == row.cell || source == row.earlierCell ||
                    (sourceRow && row.cell && row.cell->specifier() == sourceRow)) {
                    anchorRow_ = row.index;
                    return row.frame;
                }
            }
        return plat::Rect{{look_.width / 2, look_.height / 2}, {0, 0}};
    }

    void paintPopover(const plat::ViewController& controller) {
        const auto* alert = dynamic_cast<const plat::AlertController*>(&controller);
        // A popover has no cancel button: tapping outside it cancels.
        std::vector<const plat::AlertAction*> actions;
        if (alert)
            for (const auto& action : alert->actions())
                if (action->style() != plat::UIAlertActionStyleCancel)
                    actions.push_back(action.get());
        const bool picker = dynamic_cast<const plat::ImagePickerController*>(&controller);
        const auto* share = dynamic_cast<const plat::ActivityViewController*>(&controller);
        // An alert's popover fits its actions, a share sheet its content; any other controller
        // shows its own content at the size a popover's content usually asks for.
        const double width = alert ? kPopoverWidth : 375;
        const double head = alert ? heading(*alert, 0, 0, width - 32, true, true) : 0;
        const double height =
            alert   ? std::max(44.0, head + kSheetRow * static_cast<double>(actions.size()))
            : share ? shareSheetHeight(*share)
                    : 480;

        const plat::Rect anchor = anchorOf(controller);
        const double anchorMid = anchor.origin.x + anchor.size.width / 2;
        const double below = anchor.origin.y + anchor.size.height;
        const bool down = below + kArrowHeight + height <= look_.height - 20;
        const double tipY = down ? below : anchor.origin.y;
        const double boxY = down ? tipY + kArrowHeight : tipY - kArrowHeight - height;
        const double boxX = std::clamp(anchorMid - width / 2, 10.0, look_.width - 10 - width);
        const plat::Rect box{{boxX, boxY}, {width, height}};

        // Box and arrow as one shape, with a faint shadow ring.
        auto shape = [&](double grow) {
            roundedPath(
                cr_, plat::Rect{{boxX - grow, boxY - grow}, {width + 2 * grow, height + 2 * grow}},
                13);
            const double base = down ? boxY - grow + 0.5 : boxY + height + grow - 0.5;
            const double tip = down ? tipY - grow : tipY + grow;
            cairo_move_to(cr_, anchorMid - kArrowWidth / 2 - grow, base);
            cairo_line_to(cr_, anchorMid, tip);
            cairo_line_to(cr_, anchorMid + kArrowWidth / 2 + grow, base);
            cairo_close_path(cr_);
        };
        shape(0.5);
        setColor(cr_, Rgba{0, 0, 0, 0.15});
        cairo_fill(cr_);
        shape(0);
        // The arrow takes the colour of what it joins: the bar of a controller's content.
        setColor(cr_, alert ? kWhite : share ? Rgba{0.95, 0.95, 0.97, 1} : look_.barBackground);
        cairo_fill(cr_);

        if (alert) {
            heading(*alert, boxX + 16, boxY, width - 32, false, true);
            double top = boxY + head;
            for (std::size_t i = 0; i < actions.size(); ++i, top += kSheetRow) {
                if (i > 0 || head > 0) fillRect(cr_, plat::Rect{{boxX, top}, {width, 0.5}}, kLine);
                const plat::Rect row{{boxX, top}, {width, kSheetRow}};
                actionLabel(*actions[i], row, 20);
                shot_.buttons.push_back({actions[i]->title(), row});
            }
        } else {
            cairo_save(cr_);
            roundedPath(cr_, box, 13);
            cairo_clip(cr_);
            if (share)
                paintShareSheet(cr_, text_, *share, look_, box, false);
            else
                content(controller, box, boxY, controller.title().value_or(picker ? "Photos" : ""),
                        picker);
            cairo_restore(cr_);
        }
        shot_.popover = PopoverFrame{box, plat::Point{anchorMid, tipY}, anchorRow_};
    }

    // The share sheet on a phone: a card rising from the bottom over the dimmed page.
    void paintShareCard(const plat::ActivityViewController& share) {
        fillRect(cr_, plat::Rect{{0, 0}, {look_.width, look_.height}}, Rgba{0, 0, 0, 0.4});
        const double height = shareSheetHeight(share) + look_.homeIndicator;
        const plat::Rect card{{0, look_.height - height}, {look_.width, height}};
        cairo_save(cr_);
        roundedPath(cr_, card, 10, true, false);
        cairo_clip(cr_);
        if (auto close = paintShareSheet(cr_, text_, share, look_, card, true))
            shot_.buttons.push_back({"Cancel", *close});
        cairo_restore(cr_);
    }

    // A modal sheet: full screen before iOS 13, a card from 13 on; a form sheet on an iPad.
    void paintSheet(const plat::ViewController& controller, const std::string& title, bool picker) {
        plat::Rect card{{0, 0}, {look_.width, look_.height}};
        bool rounded = false;
        if (look_.iPad) {
            dim();
            card = plat::Rect{{(look_.width - 540) / 2, (look_.height - 620) / 2}, {540, 620}};
            rounded = true;
        } else if (look_.insetGrouped) {
            fillRect(cr_, plat::Rect{{0, 0}, {look_.width, look_.height}}, Rgba{0, 0, 0, 0.4});
            card = plat::Rect{{0, look_.statusBar + 10},
                              {look_.width, look_.height - look_.statusBar - 10}};
            rounded = true;
        }
        const double radius = rounded ? 10 : 0;
        cairo_save(cr_);
        roundedPath(cr_, card, radius, true, look_.iPad);
        cairo_clip(cr_);
        content(controller, card, rounded ? card.origin.y : look_.statusBar, title, picker);
        cairo_restore(cr_);
    }

    // What a presented controller shows inside its frame: a bar with its title and Cancel,
    // and for the photo picker a grid of photos, for a mail its fields and attachments.
    void content(const plat::ViewController& controller, plat::Rect card, double barTop,
                 const std::string& title, bool picker) {
        fillRect(cr_, card, kWhite);
        const plat::Rect bar{{card.origin.x, card.origin.y},
                             {card.size.width, barTop - card.origin.y + 56}};
        fillRect(cr_, bar, look_.barBackground);
        fillRect(
            cr_,
            plat::Rect{{bar.origin.x, bar.origin.y + bar.size.height - 0.5}, {bar.size.width, 0.5}},
            Rgba{0, 0, 0, 0.3});
        const TextStyle titleStyle{17, Weight::Semibold, kBlack, PANGO_ALIGN_CENTER, 1};
        text_.draw(title, titleStyle, card.origin.x + 90, barTop + 17, card.size.width - 180);
        const TextStyle cancelStyle{17, Weight::Regular, look_.tint, PANGO_ALIGN_RIGHT, 1};
        text_.draw("Cancel", cancelStyle, card.origin.x + card.size.width - 116, barTop + 17, 100);
        shot_.buttons.push_back(
            {"Cancel", plat::Rect{{card.origin.x + card.size.width - 116, barTop}, {116, 56}}});
        const double below = bar.origin.y + bar.size.height;
        if (auto* mail = dynamic_cast<const plat::MailComposeViewController*>(&controller))
            mailDraft(*mail, card, below);
        if (picker) {
            // A grid of photo placeholders, as the library looks while it loads.
            const double gap = 2;
            const int columns = card.size.width > 400 ? 5 : 4;
            const double side = (card.size.width - gap * (columns - 1)) / columns;
            const double top = bar.origin.y + bar.size.height + gap;
            for (int i = 0; i < columns * 8; ++i) {
                const double shade = 0.80 + 0.04 * ((i * 5 + i / columns * 3) % 4);
                fillRect(cr_,
                         plat::Rect{{card.origin.x + (i % columns) * (side + gap),
                                     top + (i / columns) * (side + gap)},
                                    {side, side}},
                         Rgba{shade, shade, shade + 0.02, 1});
            }
        }
    }

    // The mail's header fields, one per line under a hairline, then each attachment as a
    // rounded tile with its name and size.
    void mailDraft(const plat::MailComposeViewController& mail, plat::Rect card, double top) {
        const double x = card.origin.x + 16, width = card.size.width - 32;
        const TextStyle field{15, Weight::Regular, look_.secondaryText, PANGO_ALIGN_LEFT, 1};
        const TextStyle value{15, Weight::Regular, kBlack, PANGO_ALIGN_LEFT, 1};
        std::string to;
        for (const std::string& address : mail.toRecipients())
            to += (to.empty() ? "" : ", ") + address;
        for (const auto& [name, text] : {std::pair<std::string, std::string>{"To:", to},
                                         {"Cc/Bcc:", ""},
                                         {"Subject:", mail.subject()}}) {
            const double labelWidth = text_.lineWidth(name, field) + 6;
            text_.draw(name, field, x, top + 12, labelWidth);
            text_.draw(text, value, x + labelWidth, top + 12, width - labelWidth);
            top += 44;
            fillRect(cr_, plat::Rect{{x, top}, {width, 0.5}}, kLine);
        }
        top += 16;
        for (const auto& attachment : mail.attachments()) {
            const plat::Rect tile{{x, top}, {std::min(width, 220.0), 56}};
            roundedPath(cr_, tile, 8);
            setColor(cr_, kPanel);
            cairo_fill(cr_);
            text_.draw(attachment.fileName,
                       TextStyle{15, Weight::Semibold, kBlack, PANGO_ALIGN_LEFT, 1}, x + 12,
                       top + 9, tile.size.width - 24);
            text_.draw(std::to_string(attachment.data.size()) + " bytes", field, x + 12, top + 30,
                       tile.size.width - 24);
            top += 64;
        }
        if (!mail.messageBody().empty())
            text_.draw(mail.messageBody(),
                       TextStyle{15, Weight::Regular, kBlack, PANGO_ALIGN_LEFT, 0}, x, top + 4,
                       width);
    }

    cairo_t* cr_;
    TextPainter& text_;
    Screenshot& shot_;
    const Look& look_;
    std::optional<std::size_t> anchorRow_;
};

}  // namespace

void paintPresented(cairo_t* cr, TextPainter& text, const plat::ViewController& presented,
                    Screenshot& shot) {
    PresentedPainter(cr, text, shot).paint(presented);
}

}  // namespace screen
