#include <gtest/gtest.h>
#include <prm/prmlib.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vnt_util/system.h>

#include <functional>

#include "tests/unit/platform/TemporaryFolder.h"

namespace {

struct Outcome {
    int code;
    std::string output;  // standard output, then standard error
};

/// Runs the tool, whose path the build gives, on a store of its own.
class PrmTool : public testing::Test {
  public:
    PrmTool() { UseStore("prm.db"); }
    ~PrmTool() override { ::unsetenv("PRM_STORE"); }

  protected:
    void UseStore(std::string const &name) { ::setenv("PRM_STORE", (folder / name).c_str(), 1); }

    Outcome Run(std::string const &arguments) {
        std::string output;
        int const code = vnt_util::system::exec(PRM_TOOL " 2>&1 " + arguments, output);
        return {code, output};
    }

    TemporaryFolder folder;
};

TEST_F(PrmTool, CommandsAnswerAsDocumented) {
    folder.File("ca.pem", "secret");
    std::string const file = folder / "ca.pem";
    // In this order: each line works on what the ones before have left.
    std::tuple<std::string, int, std::string> const cases[] = {
        {"set /net/hostname 'field box'", 0, ""},
        {"get net/hostname", 0, "field box\n"},
        {"get net/none", 1, "prm: net/none: no such parameter\n"},
        {"set -t int net/mtu 0150", 0, ""},
        {"set net/mtu 1400x", 1,
         "prm: net/mtu: '1400x' is not an int, the type of this parameter (-t changes it)\n"},
        {"set net/mtu -5", 0, ""},
        {"set -t float gain 0.10", 0, ""},
        {"set -t int gain 1.5", 1, "prm: gain: '1.5' is not an int\n"},
        {"addfile net/ca " + file + " 0640", 0, ""},
        {"addfile net/ca /none", 1, "prm: /none: not a readable file of at most 4 MiB\n"},
        {"list", 0, "gain\nnet/ca\nnet/hostname\nnet/mtu\n"},
        {"export net/", 0,
         "\"net/ca\",\"secret\", file 0640\n\"net/hostname\",\"field box\", s\n\"net/mtu\",\"-5\", i\n"},
        {"del /net", 0, ""},
        {"del /net", 1, "prm: /net: no such parameter\n"},
        {"export", 0, "\"gain\",\"0.1\", f\n"},
        {"get ''", 1, "prm: '' is not a key\n"},
        {"get", 2, "prm: wrong number of arguments for get\nTry 'prm --help'.\n"},
        {"list > /dev/full", 1, "prm: cannot write the output\n"},
    };
    for (auto const &[arguments, code, output] : cases) {
        Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.code, code) << arguments;
        EXPECT_EQ(outcome.output, output) << arguments;
    }
}

TEST_F(PrmTool, ExportAndImportKeepEveryByteTypeAndMode) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    bytes += "\"\\\\n\", s\n# no comment\n";
    {
        cPrmLib client(static_cast<PRM_CLIENT_ID_T>(1));
        client.setPar("all \"bytes\\", bytes);
        client.setPar("int", -1);
        client.setPar("float", 1e-30f);
        client.setPar("empty", "");
        client.addFile("file", folder.File("binary", bytes).c_str(), 0604);
    }
    std::string const dump = folder / "dump";
    ASSERT_EQ(Run("export > " + dump).code, 0);
    UseStore("copy.db");
    ASSERT_EQ(Run("import " + dump).code, 0);
    EXPECT_EQ(Run("export").output, ContentOf(dump));

    std::string const written = folder / "written";
    ASSERT_EQ(Run("getfile file " + written).code, 0);
    EXPECT_EQ(ContentOf(written), bytes);
    struct stat info {};
    ASSERT_EQ(::stat(written.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0604u);
}

TEST_F(PrmTool, ImportTakesAllLinesOrNone) {
    EXPECT_EQ(
        Run("import < " + folder.File("good", "# comment\r\n\n  \"a\" , \"1\",i\r\n\"b\",\"\\x41\", s")).code,
        0);
    EXPECT_EQ(Run("export").output, "\"a\",\"1\", i\n\"b\",\"A\", s\n");
    std::pair<std::string, std::string> const cases[] = {
        {"\"k\",\"v\", x", "expected the type: i, f, s or file MODE"},
        {"\"k\",\"v\"", "expected ,"},
        {"\"k\",\"v, s", "the closing quote is missing"},
        {"\"k\",\"\\q\", s", "unknown escape after \\"},
        {"\"k\",\"\\x-1\", s", "unknown escape after \\"},
        {"\"k\",\"v\", i", "'v' is not a value of its type"},
        {"\"k\",\"v\", file 10000", "the file mode is no octal number up to 7777"},
        {"\"/\",\"v\", s", "'/' is not a key"},
    };
    for (auto const &[line, reason] : cases) {
        std::string const file = folder.File("bad", "\"new\",\"1\", s\n" + line + '\n');
        Outcome const outcome = Run("import " + file);
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.output, "prm: " + file + ": line 2: " + reason + '\n');
    }
    EXPECT_EQ(Run("get new").code, 1);
    EXPECT_EQ(Run("import " + (folder / "none")).code, 1);
    EXPECT_EQ(Run("import " + (folder / ".")).code, 1);
}

TEST_F(PrmTool, WhatAClientHasReadIsWhatWasCommittedLast) {
    cPrmLib client(static_cast<PRM_CLIENT_ID_T>(3));
    cPrmLib other(static_cast<PRM_CLIENT_ID_T>(24));
    std::function<void(std::string const &)> const writers[] = {
        [&](std::string const &text) { client.setPar("k", text); },
        [&](std::string const &text) { other.setPar("k", text); },
        [&](std::string const &text) { Run("set k " + text); },
        [&](std::string const &text) { Run("del k && " PRM_TOOL " set k " + text); },
    };
    for (int n = 0; n < 12; ++n) {
        writers[n % std::size(writers)](std::to_string(n));
        for (int again = 0; again < 3; ++again) {
            std::string value;
            EXPECT_EQ(client.getPar("k", value), 0);
            EXPECT_EQ(value, std::to_string(n));
        }
    }
    Run("del k");
    std::string value;
    EXPECT_EQ(client.getPar("k", value), 1);
}

TEST_F(PrmTool, AWriteProtectedStoreIsRead) {
    ASSERT_EQ(Run("set k v").code, 0);
    std::string const unshare = ::geteuid() == 0 ? "unshare -m " : "unshare -rm ";
    std::string output;
    if (vnt_util::system::exec(unshare + "true", output) != 0)
        GTEST_SKIP() << "may not mount";
    std::string const store = folder / ".";
    std::string const script = "mount --bind " + store + ' ' + store + " && mount -o remount,bind,ro " +
                               store + " && " PRM_TOOL " get k && ! " PRM_TOOL " set k new 2>&1";
    EXPECT_EQ(vnt_util::system::exec(unshare + "sh -c '" + script + '\'', output), 0);
    EXPECT_TRUE(output.starts_with("v\nprm: ")) << output;
}

TEST_F(PrmTool, AnUnusableStoreIsTold) {
    ::setenv("PRM_STORE", "/proc/none/prm.db", 1);
    for (char const *arguments : {"get k", "export"}) {
        Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.code, 1) << arguments;
        EXPECT_EQ(outcome.output,
                  "prm: parameter store /proc/none/prm.db cannot be used: unable to open database file\n");
    }
}

}  // namespace
