#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "WebApps/webconfig/util/FirmwareVerdict.h"
#include "tests/unit/platform/TemporaryFolder.h"
#include "tests/unit/util/LogCapture.h"

namespace {

using namespace webconfig::util;
namespace fs = std::filesystem;

/// A device with the key "maker", images by device/make-image, and a key that the device does not have.
class FirmwareVerdictTest : public testing::Test {
  protected:
    FirmwareVerdictTest() {
        Shell(
            "mkdir keys; for key in maker stranger; do openssl genpkey -algorithm ed25519 -out $key.key; "
            "done;"
            "openssl pkey -in maker.key -pubout -out keys/maker.pem; echo nothing >keys/broken.pem;"
            "openssl genpkey -algorithm ed448 | openssl pkey -pubout -out keys/another.pem");
    }

    void Shell(std::string const &command) const {
        ASSERT_EQ(std::system(("cd " + folder.Path() + " && " + command).c_str()), 0) << command;
    }
    void Make(std::string const &options) const {
        Shell(PROJECT_SOURCE_DIR "/device/make-image " + options + " image.itb --size 200000");
    }

    FirmwareVerdict Judge(bool signedOnly = false) const {
        return JudgeFirmware(path, {.soundTree = true,
                                    .signature = signedOnly,
                                    .platform = "brq4",
                                    .running = "1.9.0",
                                    .keyFolder = folder / "keys"});
    }

    TemporaryFolder const folder;
    std::string const path = folder / "image.itb";
};

constexpr char newer[] = "1.10.0, newer than the running 1.9.0";
constexpr char same[] = "1.9.0, the same as the running one";
constexpr char twoLines[] = "1.9 .0, the same as the running one";
constexpr char older[] = "Release 1.2-rc1, older than the running 1.9.0";
constexpr char unclear[] = "test, not comparable with the running 1.9.0";
constexpr char mismatch[] = "does not match; the key is maker";

// What befalls an image.
constexpr char nothing[] = "true";
constexpr char signAgain[] = PROJECT_SOURCE_DIR "/device/sign-image maker.key image.itb";
constexpr char tamper[] = "printf x | dd status=none of=image.itb conv=notrunc bs=1 seek=150000";
constexpr char tamperWithSignature[] = "printf x | dd status=none of=image.itb conv=notrunc bs=1 seek=200079";
constexpr char tamperWithTree[] = "printf x | dd status=none of=image.itb conv=notrunc bs=1 seek=59";
constexpr char cutTree[] = "truncate -s 120 image.itb";
constexpr char cutSignature[] = "truncate -s 200079 image.itb";

TEST_F(FirmwareVerdictTest, TellsWhatAnImageIsAndRefusesWhatIsNotForThisDevice) {
    struct {
        char const *options;
        char const *change;
        char const *reason;
        char const *reasonUnlessSigned;
        std::string version;
        char const *platform;
        char const *signature;  // begins with this
        unsigned size = 200000;
    } const cases[] = {
        {"1.10.0 --sign maker.key", nothing, "", "", newer, "brq4", "by maker"},
        {"1.9.0 --platform ''", nothing, "", "unsigned", same, "not told", "none"},
        {"'Release 1.2-rc1'", nothing, "", "unsigned", older, "brq4", "none"},
        {"\"$(printf '1.9\\n.0')\"", nothing, "", "unsigned", twoLines, "brq4", "none"},
        {"test", nothing, "", "unsigned", unclear, "brq4", "none"},
        {"1.9.0 --sign stranger.key", nothing, "", "unknown-key", same, "brq4", "by a key"},
        {"1.9.0 --sign stranger.key", signAgain, "", "", same, "brq4", "by maker"},
        {"1.9.0 --platform brq3\x7f", nothing, "platform", "platform", same, "brq3\uFFFD", "none"},
        {"1.9.0 --sign maker.key", tamper, "signature", "signature", same, "brq4", mismatch},
        {"1.9.0 --sign maker.key", tamperWithSignature, "signature", "signature", same, "brq4", mismatch},
        {"1.9.0", tamperWithTree, "unreadable", "unreadable", "unknown", "unknown", "none"},
        {"1.9.0 --sign maker.key", cutTree, "unreadable", "unreadable", "unknown", "unknown", "none", 120},
        {"1.9.0 --sign maker.key", cutSignature, "", "unsigned", same, "brq4", "none", 200079},
    };
    for (auto const &expected : cases) {
        SCOPED_TRACE(expected.options + std::string(", ") + expected.change);
        Make(expected.options);
        Shell(expected.change);
        FirmwareVerdict const verdict = Judge();
        EXPECT_STREQ(verdict.reason, expected.reason);
        EXPECT_STREQ(Judge(true).reason, expected.reasonUnlessSigned);
        EXPECT_EQ(verdict.refusal.empty(), *expected.reason == 0);
        EXPECT_EQ(verdict.version.english, expected.version);
        EXPECT_EQ(verdict.isOlder, expected.version == older);
        EXPECT_EQ(verdict.platform.english, expected.platform);
        EXPECT_TRUE(verdict.signature.english.starts_with(expected.signature)) << verdict.signature.english;
        EXPECT_EQ(verdict.imageSize, expected.size);
    }
}

TEST_F(FirmwareVerdictTest, KeysOfAnotherKindAreLoggedAndAWithdrawnKeyCountsNoMore) {
    Make("1.9.0 --sign maker.key");
    LogCapture log(booster::log::warning);
    fs::remove(folder / "keys/maker.pem");
    EXPECT_STREQ(Judge(true).reason, "unknown-key");
    for (char const *const name : {"another", "broken"})
        EXPECT_TRUE(log.Contains(name + std::string(".pem is no public Ed25519 key"))) << name;
    fs::remove(path);
    EXPECT_STREQ(Judge().reason, "unreadable");
    fs::create_symlink("/dev/zero", path);
    EXPECT_STREQ(Judge().reason, "unreadable");
}

TEST(FirmwareVersions, AreComparedByTheirNumbers) {
    std::tuple<char const *, char const *, Age> const cases[] = {
        {"1.10", "1.9", Age::Newer},      {"v2", "1.99.99", Age::Newer},     {"1.9.1", "1.9", Age::Newer},
        {"1.9.0", "1.9", Age::Same},      {"1.0-rc1", "1.0", Age::Unknown},  {"", "1", Age::Unknown},
        {"1", "", Age::Unknown},          {"1.9 (test)", "2.0", Age::Older}, {"0.0", "0", Age::Same},
        {"99999999999", "1", Age::Newer},
    };
    for (auto const &[offered, running, age] : cases)
        EXPECT_EQ(CompareVersions(offered, running), age) << offered << " and " << running;
    EXPECT_EQ(RunningVersion("rootfs0: 1.0.0\nrootfs1: 1.2.3 (running)\n"), "1.2.3");
    EXPECT_EQ(RunningVersion("rootfs0: 1.0.0\n"), "");
    EXPECT_EQ(RunningVersion(""), "");
}

}  // namespace
