// How `--app` and `--package` name what to install.

#include "device/app_spec.h"

#include <gtest/gtest.h>

namespace velto::device {
namespace {

TEST(AppSpec, ShortNamesAreTheAppsTheRootPageLooksFor) {
    EXPECT_EQ(parseAppSpec("whatsapp"), (AppSpec{"net.whatsapp.WhatsApp", "WhatsApp", false}));
    // biteSMS must be in /Applications under exactly this name.
    EXPECT_EQ(parseAppSpec("bitesms"), (AppSpec{"com.bitesms", "biteSMS", true}));
    EXPECT_EQ(parseAppSpec("ringledger")->bundleIdentifier, "com.norvale.RingLedger10");
    EXPECT_EQ(parseAppSpec("recents")->bundleIdentifier, "com.norvale.recents");
}

TEST(AppSpec, IdentifierNameAndKind) {
    EXPECT_EQ(parseAppSpec("com.example.Chat"), (AppSpec{"com.example.Chat", "Chat", false}));
    EXPECT_EQ(parseAppSpec("com.example.chat,Chat Pro"),
              (AppSpec{"com.example.chat", "Chat Pro", false}));
    EXPECT_EQ(parseAppSpec("com.example.chat,Chat,system"),
              (AppSpec{"com.example.chat", "Chat", true}));
    EXPECT_EQ(parseAppSpec("com.example.chat,,user"), (AppSpec{"com.example.chat", "chat", false}));
}

TEST(AppSpec, MalformedSpecsAreRefusedWithAReason) {
    for (const char* text :
         {"", "has space", ".leading", "com.x,Name,kernel", "com.x,a/b", "a,b,system,more"}) {
        std::string error;
        EXPECT_FALSE(parseAppSpec(text, &error)) << text;
        EXPECT_FALSE(error.empty()) << text;
    }
}

TEST(PackageSpec, IdentifierEqualsVersion) {
    const auto spec = parsePackageSpec("com.norvale.velto2=2.1.0-1");
    ASSERT_TRUE(spec);
    EXPECT_EQ(spec->identifier, "com.norvale.velto2");
    EXPECT_EQ(spec->version, "2.1.0-1");
    EXPECT_EQ(parsePackageSpec("p=1:2.0~beta")->version, "1:2.0~beta");
    for (const char* text : {"p", "=1", "p=", "p q=1", "p=1 2"})
        EXPECT_FALSE(parsePackageSpec(text)) << text;
}

}  // namespace
}  // namespace velto::device
