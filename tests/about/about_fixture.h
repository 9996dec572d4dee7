#pragma once

#include <memory>
#include <string>

#include "about/velto_misc_controller.h"
#include "platform/foundation/keyed_archive.h"
#include "tests/support/bundle_device.h"

namespace abouttest {

// A device with the bundle loaded, a real package database that dpkg-query reads, and an
// extension whose product answer the test chooses and counts.
class AboutDevice : public testsupport::BundleDevice {
  public:
    AboutDevice() { writeText("/var/lib/dpkg/status", ""); }

    // The package database with one installed package.
    void installPackage(const std::string& identifier, const std::string& version) const {
        writeText("/var/lib/dpkg/status", "Package: " + identifier +
                                              "\nStatus: install ok installed\n"
                                              "Maintainer: Norvale <support@norvale.com>\n"
                                              "Architecture: iphoneos-arm\nVersion: " +
                                              version + "\nDescription: test\n\n");
    }

    // SpringBoard answers the product request with this information (nil: no reply).
    void answerProduct(const plat::Value& info) {
        process().messageCenters().setResponder(
            [this, info](const std::string&, const std::string& message, const plat::Value&) {
                if (message != "com.norvale.velto.product") return plat::Value();
                ++productRequests;
                if (info.isNil()) return plat::Value();
                return plat::Value::dictionary(
                    {{"VeltoServiceMessageData",
                      plat::Value::data(*plat::archivedDataWithRootObject(info))}});
            });
    }

    std::size_t shellRuns() const { return entries<plat::journal::Shell>().size(); }

    auto page() const { return open<velto::VeltoMiscController>("VeltoMiscController"); }

    int productRequests = 0;
};

}  // namespace abouttest
