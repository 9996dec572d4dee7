#include "apps/velto_disabled_apps_settings_controller.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>
#include <vector>

#include "contract/appearance.h"
#include "contract/catalogue.h"
#include "contract/nv_utils.h"
#include "contract/velto_settings.h"
#include "contract/velto_utils.h"
#include "platform/foundation/keyed_archive.h"
#include "platform/foundation/strings.h"
#include "platform/prefs/runtime.h"
#include "platform/system/bundle.h"
#include "platform/system/process.h"

namespace velto {

namespace {

constexpr plat::SlotKey<plat::MessageCenter> kMessageCenterSlot{
    "VeltoDisabledAppsSettingsController.messageCenter"};

// The applications the bundle's own pages cover, with their companion services. The
// notification service stands twice; only membership counts.
constexpr std::array<std::string_view, 14> kHiddenApplications{
    "com.apple.mobilephone",
    "com.apple.facetime",
    "com.apple.MobileSMS",
    "com.apple.mobilesms.notification",
    "com.apple.MobileSMS.MessagesNotificationExtension",
    "net.whatsapp.WhatsApp",
    "com.apple.MobileAddressBook",
    "com.apple.mobilesms.notification",
    "com.apple.mobilemail",
    "com.norvale.RingLedger10",
    "com.apple.ContactsUI.ContactsViewService",
    "com.apple.MobileAddressBook.ContactsViewService",
    "com.norvale.RingLedger2",
    "com.norvale.RingLedgerKit",
};

// A name made ready for compare: / compare:options: with NSCaseInsensitiveSearch, once per
// record rather than once per comparison: a sort compares each name about log n times. ASCII
// text, which nearly every application name is, orders by its bytes (lower-cased for the
// case-insensitive search) exactly as by UTF-16 code units; the rest takes the full
// comparison.
class SortName {
  public:
    SortName(const std::string& text, bool caseInsensitive)
        : text_(&text), caseInsensitive_(caseInsensitive) {
        ascii_ = std::all_of(text.begin(), text.end(),
                             [](char c) { return static_cast<unsigned char>(c) < 0x80; });
        if (ascii_ && caseInsensitive) {
            folded_ = text;
            for (char& c : folded_)
                c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }

    bool operator<(const SortName& other) const {
        if (ascii_ && other.ascii_)
            return caseInsensitive_ ? folded_ < other.folded_ : *text_ < *other.text_;
        return plat::compare(*text_, *other.text_,
                             caseInsensitive_ ? unsigned{plat::NSCaseInsensitiveSearch} : 0u) ==
               plat::ComparisonResult::Ascending;
    }

  private:
    const std::string* text_;
    std::string folded_;
    bool caseInsensitive_;
    bool ascii_ = false;
};

// Stable, as sortedArrayUsingDescriptors: and sortUsingComparator: are for equal names.
template <typename Item>
void sortByName(std::vector<std::pair<SortName, Item>>& items) {
    std::stable_sort(items.begin(), items.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
}

// The row's own identifier: the name a row without one falls back to is no bundle identifier.
std::optional<std::string> bundleIdentifierOf(const plat::Specifier& row) {
    return row.hasExplicitIdentifier() ? row.identifier() : std::nullopt;
}

plat::SpecifierPtr makeRow(const plat::Value& record, const plat::ObjectPtr& target) {
    const plat::Value name = record.objectForKey(records::kDisplayName);
    auto row = plat::Specifier::preferenceSpecifierNamed(
        name.isString() ? std::optional<std::string>(name.str()) : std::nullopt, target,
        "setPreferenceValue:specifier:", "", "", plat::PSSwitchCell, "");
    row->setProperty(plat::Value("VeltoSwitchCell"), plat::pskey::CellClass);
    const plat::Value identifier = record.objectForKey(records::kBundleIdentifier);
    row->setIdentifier(identifier.isString() ? std::optional<std::string>(identifier.str())
                                             : std::nullopt);
    const plat::Value icon = record.objectForKey(records::kImage);
    if (!icon.isNil()) row->setProperty(icon, plat::pskey::IconImage);
    // A shallow copy, as initWithDictionary: makes; the icon stays only on the row.
    plat::Dictionary info;
    for (const auto& [key, value] : *record.asDictionary())
        if (key != records::kImage) info.emplace_hint(info.end(), key, value);
    row->setUserInfo(plat::Value::dictionary(std::move(info)));
    return row;
}

}  // namespace

std::shared_ptr<plat::MessageCenter> VeltoDisabledAppsSettingsController::tweakMessageCenter() {
    return plat::Process::current().slots().get(kMessageCenterSlot);
}

bool VeltoDisabledAppsSettingsController::isHiddenApplication(const std::string& bundleIdentifier) {
    return std::find(kHiddenApplications.begin(), kHiddenApplications.end(), bundleIdentifier) !=
           kHiddenApplications.end();
}

bool VeltoDisabledAppsSettingsController::initForContentSize(plat::Size size) {
    if (!VeltoBaseSettingsController::initForContentSize(size)) return false;
    // Made from the main thread only, once per process.
    auto& slots = plat::Process::current().slots();
    if (!slots.get(kMessageCenterSlot))
        slots.set(kMessageCenterSlot, NVUtils::messageCenter(requests::kCenterName));
    return true;
}

plat::Value VeltoDisabledAppsSettingsController::applications() {
    auto center = tweakMessageCenter();
    if (!center) return plat::Value::array();
    const plat::Value reply =
        center->sendMessageAndReceiveReplyName(requests::kApps, plat::Value());
    const plat::Value payload = reply.objectForKey(requests::kMessageData);
    const plat::Bytes* bytes = payload.asData();
    if (!bytes) return plat::Value::array();
    const plat::Value decoded = plat::unarchiveObjectWithData(*bytes);
    const plat::Array* records = decoded.asArray();
    if (!records) return plat::Value::array();

    // sortedArrayUsingDescriptors: with the descriptor's compare: on the display name. A
    // record without a name (or one that is not a dictionary) comes first, as nil does.
    plat::Array sorted;
    sorted.reserve(records->size());
    std::vector<std::pair<SortName, const plat::Value*>> named;
    named.reserve(records->size());
    for (const plat::Value& record : *records) {
        const plat::Dictionary* fields = record.asDictionary();
        const auto it =
            fields ? fields->find(records::kDisplayName) : plat::Dictionary::const_iterator();
        const std::string* name = fields && it != fields->end() ? it->second.asString() : nullptr;
        if (name)
            named.emplace_back(SortName(*name, false), &record);
        else
            sorted.push_back(record);
    }
    sortByName(named);
    for (const auto& [name, record] : named)
        sorted.push_back(*record);
    return plat::Value::array(std::move(sorted));
}

plat::SpecifierArrayPtr VeltoDisabledAppsSettingsController::addApplicationDataToSpecifiers(
    const plat::Value& applications) {
    auto result = std::make_shared<plat::SpecifierArray>();
    static const std::string kNoName;
    using Group = std::vector<std::pair<SortName, plat::SpecifierPtr>>;
    Group system, user;
    const plat::ObjectPtr self = shared_from_this();
    if (const plat::Array* records = applications.asArray()) {
        for (const plat::Value& record : *records) {
            // Only dictionaries are records; anything else in the array is passed over.
            if (!record.isDictionary()) continue;
            const plat::Value identifier = record.objectForKey(records::kBundleIdentifier);
            if (identifier.isString() && isHiddenApplication(identifier.str())) continue;
            auto row = makeRow(record, self);
            // A nameless row compares as the empty string.
            const std::string& name = row->name() ? *row->name() : kNoName;
            (record.objectForKey(records::kType).boolValue() ? system : user)
                .emplace_back(SortName(name, true), std::move(row));
        }
    }
    auto appendGroup = [&](Group& rows, const char* title) {
        if (rows.empty()) return;
        sortByName(rows);
        result->addObject(plat::Specifier::groupSpecifierWithName(plat::NSLocalizedString(title)));
        for (auto& [name, row] : rows)
            result->addObject(std::move(row));
    };
    appendGroup(system, "System Applications");
    appendGroup(user, "User Applications");
    return result;
}

plat::SpecifierArrayPtr VeltoDisabledAppsSettingsController::specifiers() {
    if (heldSpecifiers()) return heldSpecifiers();
    auto list = addApplicationDataToSpecifiers(applications());
    setHeldSpecifiers(list);
    return list;
}

plat::TableCellPtr VeltoDisabledAppsSettingsController::tableViewCellForRowAtIndexPath(
    std::size_t row, std::size_t section) {
    auto cell = VeltoBaseSettingsController::tableViewCellForRowAtIndexPath(row, section);
    const auto specifier = specifierAtIndex(indexForRow(row, section));
    const bool excluded =
        VeltoSettings::sharedSettings()->isAppExcluded(bundleIdentifierOf(*specifier), true);
    if (cell)
        if (auto control = cell->control()) control->setOn(excluded);
    return cell;
}

void VeltoDisabledAppsSettingsController::setPreferenceValue(const plat::Value&,
                                                             const plat::SpecifierPtr& specifier) {
    if (!specifier) return;
    const auto settings = VeltoSettings::sharedSettings();
    const auto identifier = bundleIdentifierOf(*specifier);
    if (settings->isAppExcluded(identifier, true))
        settings->removeFromExcludedApps(identifier);
    else
        settings->addToExcludedApps(identifier);
}

void VeltoDisabledAppsSettingsController::viewDidLoad() {
    VeltoBaseSettingsController::viewDidLoad();
    auto& process = plat::Process::current();
    process.darwin().addObserver(nullptr, &veltoSettingsChangedCallBack,
                                 notifications::kSettingsChanged,
                                 plat::SuspensionBehavior::DeliverImmediately);
    std::weak_ptr<VeltoDisabledAppsSettingsController> weak =
        std::static_pointer_cast<VeltoDisabledAppsSettingsController>(shared_from_this());
    process.notificationCenter().addObserver(weak, notifications::kSettingsChanged,
                                             [weak](const plat::Notification& notification) {
                                                 if (auto page = weak.lock())
                                                     page->veltoSettingsChanged(notification);
                                             });
}

void VeltoDisabledAppsSettingsController::veltoSettingsChanged(const plat::Notification&) {
    VeltoSettings::sharedSettings()->loadSettings();
    std::weak_ptr<VeltoDisabledAppsSettingsController> weak =
        std::static_pointer_cast<VeltoDisabledAppsSettingsController>(shared_from_this());
    plat::Process::current().mainQueue().async([weak] {
        if (auto page = weak.lock()) page->reloadSpecifiers();
    });
}

plat::ColorPtr VeltoDisabledAppsSettingsController::customNavigationBarColor() {
    return VeltoUtils::navigationBarColor(className(), "nav");
}

std::string VeltoDisabledAppsSettingsController::twitterMessage() {
    return sharingMessage();
}

plat::ImagePtr VeltoDisabledAppsSettingsController::twitterImage() {
    return bundleImage(className(), "twitter");
}

std::shared_ptr<plat::BarButtonItem> VeltoDisabledAppsSettingsController::customBackButton() {
    return makeBackButton(shared_from_this(), className());
}

void VeltoDisabledAppsSettingsController::registerClass(plat::Runtime& runtime) {
    using Self = VeltoDisabledAppsSettingsController;
    runtime.registerClass<Self, VeltoBaseSettingsController>(kBundlePath);
    runtime.addMethod("VeltoDisabledAppsSettingsController", "veltoSettingsChanged:",
                      plat::bindMethod<Self>([](Self& self, const plat::Arguments& args) {
                          self.veltoSettingsChanged(
                              {plat::argumentAt(args, 0).str(), plat::Value(), plat::Value()});
                          return plat::Value();
                      }));
}

void veltoSettingsChangedCallBack(plat::DarwinNotifyCenter*, void*, const std::string& name,
                                  const void*, const plat::Value&) {
    plat::Process::current().notificationCenter().postNotificationName(name, plat::Value(),
                                                                       plat::Value());
}

}  // namespace velto
