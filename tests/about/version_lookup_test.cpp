// The version lookup through the real shell and dpkg-query on the device's package database,
// with SpringBoard's product information as the fallback and its process-wide cache.

#include "about/version_lookup.h"

#include <gtest/gtest.h>

#include "tests/about/about_fixture.h"

namespace {

using abouttest::AboutDevice;

TEST(VersionLookupTest, PackageVersionIsWhatDpkgQueryPrintsForTheIdentifierAsGiven) {
    AboutDevice device;
    device.installPackage("com.norvale.velto2", "2.1.0-1");
    EXPECT_EQ(velto::packageVersion("com.norvale.velto2"), "2.1.0-1");
    EXPECT_EQ(device.entries<plat::journal::Shell>().at(0).command,
              "'/usr/bin/dpkg-query' '-Wf' '${Version}' 'com.norvale.velto2'");
    // dpkg-query complains on its error output and exits 1; nothing of that is read.
    EXPECT_EQ(velto::packageVersion("com.norvale.absent"), std::nullopt);
    // A quote ends the shell's quoting; the shell refuses the line and the answer is nil.
    EXPECT_EQ(velto::packageVersion("com.norvale.velto2'"), std::nullopt);
    EXPECT_EQ(device.entries<plat::journal::Shell>().at(2).command,
              "'/usr/bin/dpkg-query' '-Wf' '${Version}' 'com.norvale.velto2''");
}

TEST(VersionLookupTest, ACharacterCutByTheReadBecomesReplacementCharactersAndTheRestStays) {
    AboutDevice device;
    // fgets reads 1023 bytes a time: the "é" falls across the first two reads, and the
    // characters of two, three and four bytes around it are kept whole.
    const std::string head(1019, '1');
    device.installPackage("com.norvale.velto2", head + "\u20ac\u00e9\U0001F600\u00fc-2");
    EXPECT_EQ(velto::packageVersion("com.norvale.velto2"),
              head + "\u20ac\uFFFD\uFFFD\U0001F600\u00fc-2");
    // A bad sequence takes the continuations its lead announces, and no more.
    device.installPackage("com.norvale.overlong", "1\xE0\x80\x80\x80-1");
    EXPECT_EQ(velto::packageVersion("com.norvale.overlong"), "1\uFFFD\uFFFD-1");
}

TEST(VersionLookupTest, SpringBoardAnswerIsKeptAfterTheFirstSuccess) {
    AboutDevice device;
    device.answerProduct(plat::Value::dictionary({{"Version", "2.0"}}));
    EXPECT_EQ(velto::__getProductVersion(), "2.0");
    EXPECT_EQ(velto::__getProductVersion(), "2.0");
    EXPECT_EQ(device.shellRuns(), 2u);
    EXPECT_EQ(device.productRequests, 1);
    // The package manager still comes first once it knows the package.
    device.installPackage("com.norvale.velto2", "2.1.0-1");
    EXPECT_EQ(velto::__getProductVersion(), "2.1.0-1");
}

TEST(VersionLookupTest, AFailedProductAnswerIsAskedForAgainOnEveryCall) {
    // No reply, then one that is no dictionary.
    for (const auto& info : {plat::Value(), plat::Value::array({plat::Value("2.0")})}) {
        SCOPED_TRACE(info.description());
        AboutDevice device;
        device.answerProduct(info);
        EXPECT_EQ(velto::__getProductVersion(), std::nullopt);
        EXPECT_EQ(velto::__getProductVersion(), std::nullopt);
        EXPECT_EQ(device.productRequests, 2);
    }
}

}  // namespace
