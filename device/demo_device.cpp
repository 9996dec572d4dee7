#include "device/demo_device.h"

#include <algorithm>

#include "contract/catalogue.h"
#include "device/extension_responder.h"

namespace velto::device {

std::vector<AppChoice> demoApps(plat::DeviceFamily family) {
    std::vector<AppChoice> apps;
    if (family == plat::DeviceFamily::iPhone)
        apps.push_back({"com.apple.mobilephone", "Phone", true});
    const std::vector<AppChoice> system = {
        {appids::kMessages, "Messages", true},
        {"com.apple.mobilemail", "Mail", true},
        {"com.apple.facetime", "FaceTime", true},
        {"com.apple.MobileAddressBook", "Contacts", true},
        {"com.apple.mobilesafari", "Safari", true},
        {"com.apple.mobileslideshow", "Photos", true},
        {"com.apple.camera", "Camera", true},
        {"com.apple.mobilecal", "Calendar", true},
        {"com.apple.mobiletimer", "Clock", true},
        {"com.apple.Maps", "Maps", true},
        {"com.apple.weather", "Weather", true},
        {"com.apple.mobilenotes", "Notes", true},
        {"com.apple.reminders", "Reminders", true},
        {"com.apple.Music", "Music", true},
        {"com.apple.Preferences", "Settings", true},
        {"com.apple.AppStore", "App Store", true},
        {"com.apple.Passbook", "Wallet", true},
        {"com.apple.calculator", "Calculator", true},
        {"com.apple.DocumentsApp", "Files", true},
        biteSMSChoice(),
        ringLedgerChoice(),
    };
    apps.insert(apps.end(), system.begin(), system.end());
    // Invented third-party applications, so the user group of the exclusion list has content.
    const std::vector<AppChoice> user = {
        whatsAppChoice(),
        {"com.harbourlight.chatter", "Chatter", false},
        {"io.quillworks.notebook", "Quill", false},
        {"net.parcelpost.tracker", "Parcel Post", false},
        {"com.ninefold.podcasts", "Podwave", false},
        {"org.trailhead.maps", "Trailhead", false},
        {"com.brightloop.video", "Loop", false},
        {"app.tandem.meet", "Tandem Meet", false},
        {"com.kitesurf.weather", "Kite", false},
    };
    apps.insert(apps.end(), user.begin(), user.end());
    return apps;
}

void addDemoContent(DeviceOptions& options) {
    // What the user chose explicitly wins over the demo's choice for the same app or package.
    for (const AppChoice& app : demoApps(options.family)) {
        const bool chosen = std::any_of(
            options.apps.begin(), options.apps.end(),
            [&](const AppChoice& other) { return other.bundleIdentifier == app.bundleIdentifier; });
        if (!chosen) options.apps.push_back(app);
    }
    for (const PackageChoice& package : {PackageChoice{kProductPackage, kDemoProductVersion},
                                         PackageChoice{"mobilesubstrate", "0.9.7113"}}) {
        const bool chosen = std::any_of(
            options.packages.begin(), options.packages.end(),
            [&](const PackageChoice& other) { return other.identifier == package.identifier; });
        if (!chosen) options.packages.push_back(package);
    }
    // What the extension wrote while logging was on once, so the About page has a log to mail.
    options.extensionLog =
        "2026-11-20 09:12:04 Velto 2.1.0-1 loaded into SpringBoard\n"
        "2026-11-20 09:12:04 Settings read: Phone, Messages, Mail on\n"
        "2026-11-20 09:13:37 MobilePhone: pictures for 212 contacts\n"
        "2026-11-20 09:15:02 MobileSMS: no picture for +1 555 0142, monogram shown\n";
    options.mainSettings =
        plat::Value::dictionary({{keys::kMasterSwitch, plat::Value::boolean(true)},
                                 {keys::kPhone, plat::Value::boolean(true)},
                                 {keys::kMessages, plat::Value::boolean(true)},
                                 {keys::kMail, plat::Value::boolean(true)}});
}

}  // namespace velto::device
