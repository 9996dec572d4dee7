#include "app/render/page_view.h"

#include "platform/prefs/table_cell.h"
#include "platform/ui/activity_view_controller.h"
#include "platform/ui/alert_controller.h"
#include "platform/ui/image.h"
#include "platform/ui/image_picker_controller.h"
#include "platform/ui/mail_compose_view_controller.h"

namespace velto::app {

namespace {

std::optional<std::string> stringProperty(const plat::Specifier& row, const char* key) {
    const plat::Value value = row.propertyForKey(key);
    if (!value.isString()) return std::nullopt;
    return value.str();
}

std::optional<std::string> nonEmpty(const std::string& text) {
    if (text.empty()) return std::nullopt;
    return text;
}

RowView rowView(const plat::Specifier& row, std::size_t index) {
    RowView view;
    view.index = index;
    view.cell = plat::stringFromCellType(row.cellType());
    view.label = row.name();
    if (row.hasExplicitIdentifier()) view.id = row.identifier();
    view.footer = stringProperty(row, plat::pskey::FooterText);
    view.detail = nonEmpty(row.detailControllerClass());
    view.action = nonEmpty(row.action());
    view.key = stringProperty(row, plat::pskey::Key);
    view.defaults = stringProperty(row, plat::pskey::Defaults);
    view.notification = stringProperty(row, plat::pskey::PostNotification);
    if (auto icon = row.propertyForKey(plat::pskey::IconImage).as<plat::Image>())
        view.icon = RowView::Icon{icon->pixelWidth(), icon->pixelHeight(), icon};
    return view;
}

const char* styleName(int style) {
    switch (style) {
        case plat::UIAlertActionStyleCancel:
            return "cancel";
        case plat::UIAlertActionStyleDestructive:
            return "destructive";
        default:
            return "default";
    }
}

PresentedView presentedView(const plat::ViewController& controller) {
    PresentedView view;
    view.className = controller.className();
    view.title = controller.title();
    view.popover = controller.presentsAsPopover();
    const auto* popover = controller.popoverPresentationController();
    if (view.popover && popover) {
        const auto cell = std::dynamic_pointer_cast<plat::TableCell>(popover->sourceView());
        if (const auto row = cell ? cell->specifier() : nullptr)
            view.anchor = row->hasExplicitIdentifier() ? row->identifier() : row->name();
    }
    if (auto* alert = dynamic_cast<const plat::AlertController*>(&controller)) {
        view.kind =
            alert->preferredStyle() == plat::UIAlertControllerStyleAlert ? "alert" : "sheet";
        view.message = alert->message();
        for (const auto& action : alert->actions())
            view.actions.push_back({action->title(), styleName(action->style())});
    } else if (dynamic_cast<const plat::ImagePickerController*>(&controller)) {
        view.kind = "picker";
    } else if (auto* mail = dynamic_cast<const plat::MailComposeViewController*>(&controller)) {
        view.kind = "mail";
        MailView draft{mail->toRecipients(), mail->subject(), {}};
        for (const auto& attachment : mail->attachments())
            draft.attachments.push_back(
                {attachment.fileName, attachment.mimeType, attachment.data.size()});
        view.mail = std::move(draft);
    } else if (auto* sheet = dynamic_cast<const plat::ActivityViewController*>(&controller)) {
        view.kind = "share";
        ShareView shared{sheet->text(), std::nullopt};
        if (auto image = sheet->image())
            shared.image = RowView::Icon{image->pixelWidth(), image->pixelHeight(), image};
        view.share = std::move(shared);
    } else {
        view.kind = "other";
    }
    return view;
}

}  // namespace

PageView viewOf(plat::ListController& page, std::size_t depth) {
    PageView view;
    view.className = page.className();
    view.depth = depth;

    plat::SpecifierArrayPtr list = page.heldSpecifiers();
    if (!list) list = page.specifiers();
    view.title = page.navigationItem().title();
    if (list)
        for (std::size_t i = 0; i < list->count(); ++i)
            view.rows.push_back(rowView(*list->objectAtIndex(i), i));

    for (std::size_t section = 0; section < page.numberOfGroups(); ++section) {
        SectionView shown;
        if (auto group = page.groupSpecifierForSection(section); group && list)
            shown.header = list->indexOfObject(group);
        for (std::size_t row = 0; row < page.rowsForGroup(section); ++row) {
            const std::size_t index = page.indexForRow(row, section);
            shown.rows.push_back(index);
            auto cell = page.tableViewCellForRowAtIndexPath(row, section);
            if (!cell || index >= view.rows.size()) continue;
            RowView& shownRow = view.rows[index];
            // A switch the user moved stays where the finger left it until its row is redrawn.
            if (cell->control())
                shownRow.value = page.heldSwitchPosition(list->objectAtIndex(index))
                                     .value_or(cell->control()->isOn());
            if (cell->textLabel().text() && cell->textLabel().text() != shownRow.label)
                shownRow.text = cell->textLabel().text();
        }
        view.sections.push_back(std::move(shown));
    }

    if (auto presented = plat::frontmostPresented(page)) view.presented = presentedView(*presented);
    return view;
}

}  // namespace velto::app

namespace velto::app {

PresentedView presentedViewOf(const plat::ViewController& controller) {
    return presentedView(controller);
}

}  // namespace velto::app
