#include "app/session/step_runner.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "app/render/journal_rows.h"
#include "app/render/page_view.h"
#include "app/render/row_frames.h"
#include "app/render/screenshot_writer.h"
#include "app/session/expect_step.h"
#include "app/session/row_lookup.h"
#include "app/session/step_error.h"
#include "platform/foundation/errors.h"
#include "platform/prefs/runtime.h"
#include "platform/prefs/specifier.h"
#include "platform/ui/activity_view_controller.h"
#include "platform/ui/alert_controller.h"
#include "platform/ui/image.h"
#include "platform/ui/image_picker_controller.h"
#include "platform/ui/mail_compose_view_controller.h"
#include "platform/ui/pixel_budget.h"

namespace velto::app {

namespace {

std::string shownName(const RowRef& ref) {
    return "'" + ref.row->name().value_or("#" + std::to_string(ref.index)) + "'";
}

// A relative file a step names is found beside the steps file that holds the step, so a script
// runs the same from any working directory.
std::string hostPath(const std::filesystem::path& folder, const std::string& file) {
    if (folder.empty() || std::filesystem::path(file).is_absolute()) return file;
    return (folder / file).string();
}

RowRef requireRow(const plat::ListController& page, const std::string& text,
                  RowUse use = RowUse::Any) {
    if (auto found = findRow(page.heldSpecifiers(), text, use)) return *found;
    if (use == RowUse::Link)
        if (auto group = findRow(page.heldSpecifiers(), text);
            group && group->row->cellType() == plat::PSGroupCell)
            throw StepError("row " + shownName(*group) + " is a group heading, not a link");
    throw StepError(rowMissMessage(page.heldSpecifiers(), text, use));
}

// "toggle ROW on" names the row without its last word when that word is on or off and the
// rest names a row; otherwise the whole text is the row (a label may end in "on").
struct ToggleRequest {
    RowRef row;
    std::optional<bool> value;
};

ToggleRequest toggleRequest(const plat::ListController& page, const std::string& argument) {
    const std::size_t space = argument.find_last_of(" \t");
    if (space != std::string::npos) {
        const std::string last = argument.substr(space + 1);
        if (last == "on" || last == "off") {
            const std::string rest =
                argument.substr(0, argument.find_last_not_of(" \t", space) + 1);
            if (auto found = findRow(page.heldSpecifiers(), rest)) return {*found, last == "on"};
        }
    }
    return {requireRow(page, argument), std::nullopt};
}

std::shared_ptr<plat::ViewController> requirePresented(const plat::ListController& page,
                                                       const char* what) {
    auto presented = plat::frontmostPresented(page);
    if (!presented) throw StepError(std::string("nothing is presented to ") + what);
    return presented;
}

std::shared_ptr<plat::ImagePickerController> requirePicker(const plat::ListController& page) {
    auto picker =
        std::dynamic_pointer_cast<plat::ImagePickerController>(plat::frontmostPresented(page));
    if (!picker) throw StepError("no photo picker is presented");
    return picker;
}

// A mail composer or share sheet closes the way its user closes it: Cancel. False when what is
// presented is neither.
bool cancelComposer(const std::shared_ptr<plat::ViewController>& presented) {
    if (auto mail = std::dynamic_pointer_cast<plat::MailComposeViewController>(presented)) {
        if (!mail->cancel()) throw StepError("the mail composer has no delegate to close it");
        return true;
    }
    if (auto sheet = std::dynamic_pointer_cast<plat::ActivityViewController>(presented)) {
        sheet->cancel();
        return true;
    }
    return false;
}

// A picture from the user's machine: a regular file of at most the size a phone's photo
// library would hand over. `pick /dev/zero` or a FIFO must fail the step, not fill memory or
// wait for ever.
plat::Bytes readHostFile(const std::string& file) {
    constexpr std::uintmax_t kPictureLimit = kPickLimit;
    std::error_code error;
    const auto status = std::filesystem::status(file, error);
    if (error || !std::filesystem::exists(status)) throw StepError("no file " + file);
    if (!std::filesystem::is_regular_file(status)) throw StepError(file + " is not a regular file");
    if (std::filesystem::file_size(file, error) > kPictureLimit || error)
        throw StepError(file + " is larger than 64 MB");
    std::ifstream in(file, std::ios::binary);
    if (!in) throw StepError("cannot read " + file);
    plat::Bytes bytes;
    char buffer[65536];
    while (in.read(buffer, sizeof buffer) || in.gcount() > 0) {
        bytes.insert(bytes.end(), buffer, buffer + in.gcount());
        // A file that grows while we read stops here too.
        if (bytes.size() > kPictureLimit) throw StepError(file + " is larger than 64 MB");
    }
    return bytes;
}

}  // namespace

StepRunner::Outcome StepRunner::run(const Step& step) {
    Outcome outcome = Outcome::Done;
    const std::size_t mark = session_.process().journal().size();
    if (step.kind != StepKind::Show && step.kind != StepKind::Help && step.kind != StepKind::Expect)
        actionMark_ = mark;
    try {
        perform(step);
        if (step.kind == StepKind::Quit) outcome = Outcome::Quit;
    } catch (const ExpectationFailed& e) {
        renderer_.errorAt(step.text, std::string("expectation not met: ") + e.what(), step.line);
        outcome = Outcome::Unmet;
    } catch (const StepError& e) {
        renderer_.errorAt(step.text, e.what(), step.line);
        outcome = Outcome::Failed;
    } catch (const plat::RangeError& e) {
        renderer_.errorAt(step.text, std::string("range error: ") + e.what(), step.line);
        outcome = Outcome::Failed;
    } catch (const plat::DispatchError& e) {
        renderer_.errorAt(step.text, std::string("unrecognized selector: ") + e.what(), step.line);
        outcome = Outcome::Failed;
    } catch (const plat::InvalidArgumentError& e) {
        renderer_.errorAt(step.text, std::string("invalid argument: ") + e.what(), step.line);
        outcome = Outcome::Failed;
    } catch (const std::exception& e) {
        renderer_.errorAt(step.text, e.what(), step.line);
        outcome = Outcome::Failed;
    }
    // Whatever the step left queued runs now, failed or not, as the run loop would.
    try {
        session_.settle();
    } catch (const std::exception& e) {
        renderer_.errorAt(step.text, std::string("after the step: ") + e.what(), step.line);
        outcome = Outcome::Failed;
    }
    return outcome;
}

void StepRunner::show() {
    auto page = session_.topPage();
    PageView view = viewOf(*page, session_.depth());
    const auto stack = session_.pages();
    for (const auto& shown : stack)
        view.stack.push_back(shown->className());
    if (renderer_.wantsFrames()) placeRowFrames(session_, view);
    auto journal = session_.takeJournal();
    placeInsertions(journal, stack);
    renderer_.page(view, journal);
    if (screenshotFolder_.empty()) return;
    char name[16];
    std::snprintf(name, sizeof name, "%03d.png", ++screenshotsTaken_);
    const std::string file = screenshotFolder_ + "/" + name;
    renderer_.screenshot(file, writeScreenshot(session_, file));
}

void StepRunner::perform(const Step& step) {
    auto page = session_.topPage();
    switch (step.kind) {
        case StepKind::Show:
            show();
            return;
        case StepKind::Open:
            session_.open(requireRow(*page, step.argument, RowUse::Link).row);
            return;
        case StepKind::Back:
            session_.back();
            return;
        case StepKind::Toggle:
            toggle(step.argument);
            return;
        case StepKind::Tap:
            tap(step.argument);
            return;
        case StepKind::Choose:
            choose(step.argument);
            return;
        case StepKind::Dismiss:
            dismiss();
            return;
        case StepKind::Pick:
            pick(step.argument, step.folder);
            return;
        case StepKind::Cancel:
            cancel();
            return;
        case StepKind::Notify:
            session_.process().darwin().postFromOtherProcess(step.argument);
            return;
        case StepKind::Screenshot: {
            const ScreenshotRequest request = screenshotRequest(step.argument);
            const std::string file = hostPath(step.folder, request.file);
            renderer_.screenshot(file, writeScreenshot(session_, file, request.full));
            return;
        }
        case StepKind::Scroll: {
            const RowRef ref = requireRow(*page, step.argument);
            if (!scrollToRow(session_, ref.index))
                throw StepError("row " + shownName(ref) + " is not shown on the page");
            return;
        }
        case StepKind::Reload:
            page->reloadSpecifiers();
            return;
        case StepKind::Watch: {
            const WatchLimits limits = parseWatchLimits(step.argument);
            WatchPlaces places;
            places.device =
                session_.process().root().hostLocation().value_or(std::filesystem::path());
            watchTopPage(*this, renderer_, watchPlaces_.value_or(places), limits);
            return;
        }
        case StepKind::Wait:
        case StepKind::Quit:
            return;  // settling after every step is all that waiting needs
        case StepKind::Help:
            renderer_.note(stepHelp());
            return;
        case StepKind::Expect:
            expect(step.argument);
            return;
    }
}

std::optional<bool> StepRunner::switchShows(plat::ListController& page, const RowRef& row) {
    const auto position = cellPosition(page, row.index);
    // What the switch shows is what the page's cell hook made of the row, not the stored value.
    auto cell =
        position ? page.tableViewCellForRowAtIndexPath(position->row, position->section) : nullptr;
    if (!cell || !cell->control()) return std::nullopt;
    return page.heldSwitchPosition(row.row).value_or(cell->control()->isOn());
}

void StepRunner::expect(const std::string& argument) {
    auto page = session_.topPage();
    const ExpectScene scene{*page, [&](const RowRef& row) { return switchShows(*page, row); },
                            session_.process().root(),
                            session_.process().journal().since(actionMark_)};
    checkExpectation(parseExpectation(argument), scene);
}

void StepRunner::toggle(const std::string& argument) {
    auto page = session_.topPage();
    const ToggleRequest request = toggleRequest(*page, argument);
    const auto shows = switchShows(*page, request.row);
    if (!shows) throw StepError("row " + shownName(request.row) + " is not a switch");
    const bool value = request.value.value_or(!*shows);
    // A finger can only flip a switch: "on" for a switch that shows on touches nothing.
    if (value == *shows) {
        renderer_.note("row " + shownName(request.row) + " is already " + (value ? "on" : "off") +
                       "; nothing changed\n");
        return;
    }

    if (!page->userSetSwitch(request.row.row, value))
        throw StepError("row " + shownName(request.row) + " has no target for " +
                        request.row.row->setter());
}

void StepRunner::tap(const std::string& argument) {
    auto page = session_.topPage();
    const RowRef ref = requireRow(*page, argument);
    if (ref.row->action().empty()) {
        if (!ref.row->detailControllerClass().empty())
            throw StepError("row " + shownName(ref) + " is a link (use open)");
        throw StepError("row " + shownName(ref) + " is not a button");
    }
    plat::ObjectPtr target = ref.row->target();
    if (!target)
        throw StepError("row " + shownName(ref) + " has no target for " + ref.row->action());
    // A user taps a cell on screen: a row inserted since the last look has one by then, made
    // as the table makes it, and a popover the tap opens points at it.
    if (ref.row->propertyForKey(plat::pskey::CellObject).isNil())
        if (const auto position = cellPosition(*page, ref.index))
            page->tableViewCellForRowAtIndexPath(position->row, position->section);
    plat::Runtime::shared().perform(*target, ref.row->action(), {plat::Value(ref.row)});
}

void StepRunner::choose(const std::string& title) {
    auto presented = requirePresented(*session_.topPage(), "choose from");
    if (title == "Cancel" && cancelComposer(presented)) return;
    auto alert = std::dynamic_pointer_cast<plat::AlertController>(presented);
    if (!alert) throw StepError("what is presented is not an alert or sheet");
    // A sheet shown as a popover on an iPad often has no Cancel: the user taps outside it.
    if (!alert->tapAction(title))
        throw StepError(
            "the presented alert has no action '" + title + "'" +
            (alert->presentsAsPopover() ? " (it is a popover: 'dismiss' taps outside it)" : ""));
}

void StepRunner::dismiss() {
    auto presented = requirePresented(*session_.topPage(), "dismiss");
    if (cancelComposer(presented)) return;
    if (!presented->presentsAsPopover()) throw StepError("what is presented is not a popover");
    if (auto alert = std::dynamic_pointer_cast<plat::AlertController>(presented)) {
        alert->dismissByTappingOutside();
        return;
    }
    // Any other popover goes the same way: away, with nobody told.
    presented->dismissViewControllerAnimated(true, nullptr);
}

void StepRunner::pick(const std::string& argument, const std::filesystem::path& folder) {
    // "--original-only": the user chose a picture without cropping it, so the picker hands
    // back no edited picture.
    static const std::string kOriginalOnly = "--original-only";
    std::string file = argument;
    bool originalOnly = false;
    if (file.size() > kOriginalOnly.size() &&
        file.compare(file.size() - kOriginalOnly.size(), kOriginalOnly.size(), kOriginalOnly) ==
            0 &&
        (file[file.size() - kOriginalOnly.size() - 1] == ' ' ||
         file[file.size() - kOriginalOnly.size() - 1] == '\t')) {
        originalOnly = true;
        file.erase(file.find_last_not_of(" \t", file.size() - kOriginalOnly.size() - 1) + 1);
    }
    file = hostPath(folder, file);
    auto picker = requirePicker(*session_.topPage());
    auto image = plat::Image::imageWithData(readHostFile(file));
    // The decoders answer nothing both for damaged bytes and for a header that asks for more
    // pixels than a picture may have, so the message names both.
    if (!image)
        throw StepError(file +
                        " does not decode as a PNG or JPEG picture (damaged, not a picture, or "
                        "more than " +
                        std::to_string(plat::kMaxPicturePixels) + " pixels or " +
                        std::to_string(plat::kMaxPictureSide) + " a side)");
    if (!picker->pick(originalOnly ? nullptr : image, image))
        throw StepError("the photo picker has no delegate");
}

void StepRunner::cancel() {
    if (cancelComposer(plat::frontmostPresented(*session_.topPage()))) return;
    auto picker = requirePicker(*session_.topPage());
    if (!picker->cancel()) throw StepError("the photo picker has no delegate");
}

}  // namespace velto::app
