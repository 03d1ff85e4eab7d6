#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

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
        Shell("for key in maker stranger; do openssl genpkey -algorithm ed25519 -out $key.key; done;"
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
constexpr char same[] = "1.9, the same as the running one";
constexpr char same19[] = "1.9.0, the same as the running one";
constexpr char older[] = "Release 1.2-rc1, older than the running 1.9.0";
constexpr char unknown[] = "test, not comparable with the running 1.9.0";
constexpr char notSigned[] = "The image is not signed.";
constexpr char strange[] = "The image is signed with a key that this device does not have (";
constexpr char elsewhere[] = "The image is for another platform: brq3\uFFFD. This device is a brq4.";
constexpr char changed[] =
    "The signature does not match the image: it was changed since, or damaged on its way.";
constexpr char unreadable[] = "The image cannot be read: it is damaged, or only a part of one.";

/// Writes \a byte where \a at says, counted from the end where it is negative.
void Overwrite(long at, char byte) {
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(at, at < 0 ? std::ios::end : std::ios::beg).put(byte);
}

TEST_F(FirmwareVerdictTest, TellsWhatAnImageIsAndRefusesWhatIsNotForThisDevice) {
    struct {
        char const *what;
        char const *options;
        std::function<void()> change;
        FirmwareVerdict expected;
        char const *refusedUnlessSigned;
    } const cases[] = {
        {"signed", "1.10.0 --sign maker.key", [] {}, {"", newer, false, "brq4", "by maker", 200000}, ""},
        {"unsigned", "1.9 --platform ''", [] {}, {"", same, false, "not told", "none", 200000}, notSigned},
        {"older", "'Release 1.2-rc1'", [] {}, {"", older, true, "brq4", "none", 200000}, notSigned},
        {"no version", "test", [] {}, {"", unknown, false, "brq4", "none", 200000}, notSigned},
        {"stranger",
         "1.9.0 --sign stranger.key",
         [] {},
         {"", same19, false, "brq4", "by a key", 200000},
         strange},
        {"elsewhere",
         "1.9.0 --sign maker.key --platform brq3\x7f",
         [] {},
         {elsewhere, same19, false, "brq3\uFFFD", "by maker", 200000},
         elsewhere},
        {"tampered",
         "1.9.0 --sign maker.key",
         [] { Overwrite(150000, 'x'); },
         {changed, same19, false, "brq4", "does not match; the key is maker", 200000},
         changed},
        {"other signature",
         "1.9.0 --sign maker.key",
         [] { Overwrite(-1, '\x7f'); },
         {changed, same19, false, "brq4", "does not match; the key is maker", 200000},
         changed},
        {"cut",
         "1.9.0 --sign maker.key",
         [] { fs::resize_file(path, 120); },
         {unreadable, "unknown", false, "unknown", "none", 120},
         unreadable},
        {"cut within the block",
         "1.9.0 --sign maker.key",
         [] { fs::resize_file(path, 200079); },
         {"", same19, false, "brq4", "none", 200079},
         notSigned},
        {"damaged tree",
         "1.9.0",
         [] { Overwrite(59, '\x7f'); },
         {unreadable, "unknown", false, "unknown", "none", 200000},
         unreadable},
        {"signed twice",
         "1.9.0 --sign stranger.key",
         [] { Shell(PROJECT_SOURCE_DIR "/device/sign-image maker.key image.itb"); },
         {"", same19, false, "brq4", "by maker", 200000},
         ""},
    };
    for (auto const &[what, options, change, expected, refusedUnlessSigned] : cases) {
        SCOPED_TRACE(what);
        Make(options);
        change();
        FirmwareVerdict const verdict = Judge();
        EXPECT_EQ(verdict.refusal, expected.refusal);
        EXPECT_EQ(verdict.version, expected.version);
        EXPECT_EQ(verdict.isOlder, expected.isOlder);
        EXPECT_EQ(verdict.platform, expected.platform);
        EXPECT_TRUE(verdict.signature.starts_with(expected.signature)) << verdict.signature;
        EXPECT_EQ(verdict.imageSize, expected.imageSize);
        EXPECT_TRUE(Judge(true).refusal.starts_with(refusedUnlessSigned)) << Judge(true).refusal;
        EXPECT_EQ(Judge(true).refusal.empty(), *refusedUnlessSigned == 0);
    }
}

TEST_F(FirmwareVerdictTest, KeysOfAnotherKindAreLoggedAndAWithdrawnKeyCountsNoMore) {
    Make("1.9.0 --sign maker.key");
    LogCapture log(booster::log::warning);
    fs::remove(folder + "/keys/maker.pem");
    EXPECT_FALSE(Judge(true).refusal.empty());
    for (char const *const name : {"another", "broken"})
        EXPECT_TRUE(log.Contains(name + std::string(".pem is no public Ed25519 key"))) << name;
    fs::remove(path);
    EXPECT_EQ(Judge().refusal, unreadable);
    fs::create_symlink("/dev/zero", path);
    EXPECT_EQ(Judge().refusal, unreadable);
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
