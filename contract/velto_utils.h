#pragma once

#include <string>

#include "contract/catalogue.h"
#include "platform/ui/color.h"
#include "platform/ui/image.h"

namespace velto {

// The extension library's class methods for device facts, installed applications, the
// product colour, picture shapes and its log.
class VeltoUtils {
  public:
    static bool isIPadOrIPod();
    static bool isIPad();
    static bool isFaceTimeAvailable();
    static bool isIOS11();
    static bool isIOS13();

    // The maker's call-log and recents applications.
    static bool isRingLedgerInstalled();
    static bool isRecentsInstalled();

    // The colour of the image `imageName` of the bundle that holds the class: the average
    // of its opaque pixels. The product colour when the image is missing.
    static plat::ColorPtr navigationBarColor(const std::string& className,
                                             const std::string& imageName);

    // The picture cut to the circle inscribed in its shorter side / to its central square.
    // A null picture gives null.
    static plat::ImagePtr roundedImage(const plat::ImagePtr& image);
    static plat::ImagePtr squareImage(const plat::ImagePtr& image);

    // One line into the extension's log: journaled always, appended to the log file
    // (kLogFilePath) while logging is switched on.
    static void logMessage(const std::string& message);

    static constexpr const char* kLogFilePath = files::kLog;
    static constexpr const char* kRingLedgerIdentifier = appids::kRingLedger;
    static constexpr const char* kRecentsIdentifier = appids::kRecents;
};

}  // namespace velto
