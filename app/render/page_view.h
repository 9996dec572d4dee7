#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "platform/prefs/list_controller.h"
#include "platform/ui/image.h"

namespace velto::app {

// What the user sees of one row. Switch values come from the cell the page made for the row,
// so they show what the page's own cell hooks say.
struct RowView {
    std::size_t index = 0;
    std::string cell;  // PSGroupCell, PSLinkCell, PSSwitchCell...
    std::optional<std::string> label;
    // What a cell of its own class shows in place of the label (a header's text).
    std::optional<std::string> text;
    std::optional<std::string> id;  // only an identifier of its own; never the label standing in
    std::optional<std::string> footer;
    std::optional<bool> value;  // switches only
    std::optional<std::string> detail;
    std::optional<std::string> action;
    // Where the row stores its value and whom it tells: its key, defaults domain and the
    // Darwin notification posted after a write.
    std::optional<std::string> key;
    std::optional<std::string> defaults;
    std::optional<std::string> notification;
    struct Icon {
        int width, height;
        // The picture itself, for a record that fingerprints it.
        std::shared_ptr<const plat::Image> image;
    };
    std::optional<Icon> icon;
    // Where the row is drawn on screen, in points: a group row by its heading. nullopt for a
    // row off screen, a group without a heading, or a view made without a layout.
    std::optional<plat::Rect> frame;
    bool group() const { return cell == "PSGroupCell"; }
};

// A section of the table: the group row heading it (none for rows before the first group)
// and the flat indexes of its rows.
struct SectionView {
    std::optional<std::size_t> header;
    std::vector<std::size_t> rows;
};

struct ActionView {
    std::string title;
    std::string style;  // default, cancel, destructive
};

// A mail composer's draft: recipients, subject and attachments (by name and byte size).
struct MailView {
    struct Attachment {
        std::string name;
        std::string mimeType;
        std::size_t size = 0;
    };
    std::vector<std::string> to;
    std::string subject;
    std::vector<Attachment> attachments;
};

// A share sheet's text and the pixel size of its image.
struct ShareView {
    std::optional<std::string> text;
    std::optional<RowView::Icon> image;
};

// The controller presented over the page: an alert, an action sheet, the photo picker, a
// mail composer ("mail"), a share sheet ("share"), or something else ("other", named by its
// class).
struct PresentedView {
    std::string kind;
    std::string className;
    std::optional<std::string> title;
    std::optional<std::string> message;
    std::vector<ActionView> actions;
    bool popover = false;
    // The row a popover points at (its identifier, else its label), when it points at a row's
    // cell; nullopt for anything else.
    std::optional<std::string> anchor;
    std::optional<MailView> mail;
    std::optional<ShareView> share;
};

struct PageView {
    std::string className;
    std::optional<std::string> title;
    std::size_t depth = 1;  // pages on the navigation stack, this one included
    // The class of every page on the navigation stack, from the root page to this one.
    std::vector<std::string> stack;
    std::vector<RowView> rows;
    std::vector<SectionView> sections;
    std::optional<PresentedView> presented;
};

// Looks at the page as the table would: every shown row's cell is asked for. May raise what
// the page's own hooks raise.
PageView viewOf(plat::ListController& page, std::size_t depth);

// What a presented controller shows, as `presented` of a page gives it.
PresentedView presentedViewOf(const plat::ViewController& controller);

}  // namespace velto::app
