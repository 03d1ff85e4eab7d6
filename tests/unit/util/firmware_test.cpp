#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "WebApps/webconfig/util/FirmwareVerdict.h"
#include "tests/unit/util/LogCapture.h"

namespace {

using namespace webconfig::util;
namespace fs = std::filesystem;

std::string const folder = "/tmp/firmware_test";
std::string const path = folder + "/image.itb";

void Shell(std::string const &command) {
    ASSERT_EQ(std::system(("cd " + folder + " && " + command).c_str()), 0) << command;
}

/// A device with the key "maker", images by device/make-image, and a key that the device does not have.
class FirmwareVerdictTest : public testing::Test {
  protected:
    FirmwareVerdictTest() {
        fs::remove_all(folder);
        fs::create_directories(folder + "/keys");
        Shell(
            "for key in maker stranger; do openssl genpkey -algorithm ed25519 -out $key.key; done;"
            "openssl pkey -in maker.key -pubout -out keys/maker.pem; echo nothing >keys/broken.pem;"
            "openssl genpkey -algorithm ed448 | openssl pkey -pubout -out keys/another.pem");
    }

    static void Make(std::string const &options) {
        Shell(PROJECT_SOURCE_DIR "/device/make-image " + options + " image.itb --size 200000");
    }

    static FirmwareVerdict Judge(bool signedOnly = false) {
        return JudgeFirmware(path, {.soundTree = true,
                                    .signature = signedOnly,
                                    .platform = "brq4",
                                    .running = "1.9.0",
                                    .keyFolder = folder + "/keys"});
    }
};

constexpr char newer[] = "1.10.0, newer than the running 1.9.0";
constexpr char same[] = "1.9.0, the same as the running one";
constexpr char older[] = "Release 1.2-rc1, older than the running 1.9.0";
constexpr char unclear[] = "test, not comparable with the running 1.9.0";
constexpr char mismatch[] = "does not match; the key is maker";

/// Writes \a byte where \a at says, counted from the end where it is negative.
void Overwrite(long at, char byte) {
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(at, at < 0 ? std::ios::end : std::ios::beg).put(byte);
}

void AsMade() {}
void Tamper() {
    Overwrite(150000, 'x');
}
void TamperWithSignature() {
    Overwrite(-1, '\x7f');
}
void TamperWithTree() {
    Overwrite(59, '\x7f');
}
void SignAgain() {
    Shell(PROJECT_SOURCE_DIR "/device/sign-image maker.key image.itb");
}
template <int size>
void Cut() {
    fs::resize_file(path, size);
}

TEST_F(FirmwareVerdictTest, TellsWhatAnImageIsAndRefusesWhatIsNotForThisDevice) {
    struct {
        char const *options;
        void (*change)();
        char const *reason;
        char const *reasonUnlessSigned;
        std::string version;
        char const *platform;
        char const *signature;  // begins with this
        unsigned size = 200000;
    } const cases[] = {
        {"1.10.0 --sign maker.key", AsMade, "", "", newer, "brq4", "by maker"},
        {"1.9.0 --platform ''", AsMade, "", "unsigned", same, "not told", "none"},
        {"'Release 1.2-rc1'", AsMade, "", "unsigned", older, "brq4", "none"},
        {"test", AsMade, "", "unsigned", unclear, "brq4", "none"},
        {"1.9.0 --sign stranger.key", AsMade, "", "unknown-key", same, "brq4", "by a key"},
        {"1.9.0 --sign stranger.key", SignAgain, "", "", same, "brq4", "by maker"},
        {"1.9.0 --sign maker.key --platform brq3\x7f", AsMade, "platform", "platform", same, "brq3\uFFFD",
         "by maker"},
        {"1.9.0 --sign maker.key", Tamper, "signature", "signature", same, "brq4", mismatch},
        {"1.9.0 --sign maker.key", TamperWithSignature, "signature", "signature", same, "brq4", mismatch},
        {"1.9.0", TamperWithTree, "unreadable", "unreadable", "unknown", "unknown", "none"},
        {"1.9.0 --sign maker.key", Cut<120>, "unreadable", "unreadable", "unknown", "unknown", "none", 120},
        {"1.9.0 --sign maker.key", Cut<200079>, "", "unsigned", same, "brq4", "none", 200079},
    };
    for (auto const &expected : cases) {
        SCOPED_TRACE(expected.options);
        Make(expected.options);
        expected.change();
        FirmwareVerdict const verdict = Judge();
        EXPECT_STREQ(verdict.reason, expected.reason);
        EXPECT_STREQ(Judge(true).reason, expected.reasonUnlessSigned);
        EXPECT_EQ(verdict.refusal.empty(), *expected.reason == 0);
        EXPECT_EQ(verdict.version, expected.version);
        EXPECT_EQ(verdict.isOlder, expected.version == older);
        EXPECT_EQ(verdict.platform, expected.platform);
        EXPECT_TRUE(verdict.signature.starts_with(expected.signature)) << verdict.signature;
        EXPECT_EQ(verdict.imageSize, expected.size);
    }
}

TEST_F(FirmwareVerdictTest, KeysOfAnotherKindAreLoggedAndAWithdrawnKeyCountsNoMore) {
    Make("1.9.0 --sign maker.key");
    LogCapture log(booster::log::warning);
    fs::remove(folder + "/keys/maker.pem");
    EXPECT_STREQ(Judge(true).reason, "unknown-key");
    for (char const *const name : {"another", "broken"})
        EXPECT_TRUE(log.Contains(name + std::string(".pem is no public Ed25519 key"))) << name;
    fs::remove(path);
    EXPECT_STREQ(Judge().reason, "unreadable");
    fs::create_symlink("/dev/zero", path);
    EXPECT_STREQ(Judge().reason, "unreadable");
}

TEST(FirmwareVersions, AreComparedByTheirNumbers) {
    struct {
        char const *offered;
        char const *running;
        Age age;
    } const cases[] = {
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
