#include <fcntl.h>
#include <gtest/gtest.h>
#include <prm/prmlib.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <array>
#include <climits>
#include <csignal>
#include <cstdio>
#include <functional>
#include <utility>
#include <vector>

#include "Store.h"
#include "tests/unit/platform/TemporaryFolder.h"

namespace {

constexpr auto webClient = static_cast<PRM_CLIENT_ID_T>(3);
constexpr auto otherClient = static_cast<PRM_CLIENT_ID_T>(24);

enum Code { Ok = 0, NotFound = 1, Invalid = 2, Unavailable = 3 };

class PrmLib : public testing::Test {
  public:
    ~PrmLib() override { ::unsetenv("PRM_STORE"); }

  protected:
    std::string Text(char const *key) {
        std::string value = "(none)";
        client.getPar(key, value);
        return value;
    }

    std::vector<std::string> List(char const *prefix) {
        std::vector<std::string> names;
        std::array<char, 128> name{};
        client.getList(prefix, 0);
        while (client.getNext(name.data(), 0) == Ok)
            names.emplace_back(name.data());
        return names;
    }

    TemporaryFolder folder;
    std::string path = folder / "folder/prm.db";
    int const named = ::setenv("PRM_STORE", path.c_str(), 1);  // before the client asks for it
    cPrmLib client{webClient};
};

TEST_F(PrmLib, NumbersAreReadFromAnyValueThatIsOne) {
    std::tuple<char const *, int, int> const cases[] = {{"42", Ok, 42},
                                                        {"-7.9", Ok, -7},
                                                        {"1e3", Ok, 1000},
                                                        {"2147483648", Invalid, 5},
                                                        {"-2147483648", Ok, INT_MIN},
                                                        {"nan", Invalid, 5},
                                                        {"4 2", Invalid, 5},
                                                        {"", Invalid, 5}};
    for (auto const &[stored, code, read] : cases) {
        client.setPar("n", stored);
        int number = 5;
        EXPECT_EQ(client.getPar("n", &number), code) << stored;
        EXPECT_EQ(number, read) << stored;
    }
    float real = 0;
    client.setPar("n", 0.3f);
    EXPECT_EQ(client.getPar("n", &real), Ok);
    EXPECT_EQ(real, 0.3f);
}

TEST_F(PrmLib, KeysAreNormalizedAndChecked) {
    EXPECT_EQ(client.setPar("//net/hostname", "box"), Ok);
    EXPECT_EQ(Text("net/hostname"), "box");
    EXPECT_EQ(client.delPar("/net/hostname"), Ok);
    EXPECT_EQ(client.delPar("net/hostname"), NotFound);

    std::string value = "kept";
    EXPECT_EQ(client.getPar("net/hostname", value), NotFound);
    for (std::string const &key :
         {std::string(), std::string("/"), std::string("a\nb"), std::string(1024, 'k')})
        EXPECT_EQ(client.setPar(key.c_str(), 1), Invalid) << key;
    EXPECT_EQ(client.getPar(nullptr, value), Invalid);
    EXPECT_EQ(value, "kept");
}

TEST_F(PrmLib, FilesAreStoredByContent) {
    std::string const content("client\0\n", 8);
    std::string const file = folder.File("client.ovpn", content);
    EXPECT_EQ(client.addFile("f", file.c_str(), 0666), Ok);
    std::filesystem::remove(file);
    std::string text;
    auto type = static_cast<PRM_PAR_T>(3);
    EXPECT_EQ(client.getPar("f", text, &type), Ok);
    EXPECT_EQ(text, content);
    EXPECT_EQ(type, PRM_PAR_FILE);

    std::string const pipe = folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::string const large = folder.File("large", std::string(prm::maxFileSize + 1, 'x'));
    for (std::string const &bad : {file, pipe, large, folder / "."})
        EXPECT_EQ(client.addFile("f", bad.c_str(), 0666), Invalid) << bad;
    EXPECT_EQ(Text("f"), content);
}

TEST_F(PrmLib, ListComesInByteOrderWithoutNamesThatDoNotFit) {
    std::string const fits = "p/" + std::string(125, 'x');
    for (std::string const &key : {std::string("p/b"), std::string("p/B"), std::string("p"), fits, fits + 'x',
                                   std::string("p/\xff"), std::string("q"), std::string("o")})
        client.setPar(key.c_str(), 1);
    EXPECT_EQ(List("p/"), std::vector<std::string>({"p/B", "p/b", fits, "p/\xff"}));
    EXPECT_EQ(List("/p/b"), std::vector<std::string>({"p/b"}));
    EXPECT_EQ(client.delPar("p"), Ok);
    EXPECT_EQ(List("p/").size(), 4u) << "the keys below it stay";
}

TEST_F(PrmLib, StoreIsReadableByItsOwnerOnly) {
    client.setPar("k", "secret");
    for (auto const &entry : std::filesystem::directory_iterator(std::filesystem::path(path).parent_path())) {
        struct stat info {};
        ASSERT_EQ(::stat(entry.path().c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 0777, 0600u) << entry.path();
    }
}

TEST_F(PrmLib, ProcessesThatStartTogetherLoseNoWrite) {
    std::vector<pid_t> children;
    for (int n = 0; n < 4; ++n) {
        children.push_back(::fork());
        if (children.back() > 0)
            continue;
        cPrmLib own(otherClient);
        int failures = 0;
        for (int i = 0; i < 20; ++i)
            failures += own.setPar(("p/" + std::to_string(n) + '/' + std::to_string(i)).c_str(), i) != Ok;
        ::_exit(failures);
    }
    for (pid_t const child : children) {
        int status = -1;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(List("p/").size(), 80u);
}

TEST_F(PrmLib, AnUnusableStoreFailsEachCallAndIsPickedUpWhenRepaired) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << std::string(8192, 'x');
    std::string value = "kept";
    EXPECT_EQ(client.getPar("k", value), Unavailable);
    EXPECT_EQ(client.setPar("k", 1), Unavailable);
    EXPECT_EQ(client.delPar("k"), Unavailable);
    EXPECT_EQ(client.addFile("k", folder.File("f", "content").c_str(), 0644), Unavailable);
    EXPECT_EQ(client.getList("", 0), Unavailable);
    EXPECT_EQ(value, "kept");

    std::filesystem::remove(path);
    EXPECT_EQ(client.setPar("k", 1), Ok);
    EXPECT_EQ(Text("k"), "1");
}

TEST_F(PrmLib, AStoreThatWasReplacedIsNotWrittenToInVain) {
    client.setPar("k", "old");
    std::filesystem::remove_all(std::filesystem::path(path).parent_path());
    EXPECT_EQ(client.setPar("k", "new"), Ok);
    cPrmLib other(otherClient);
    std::string value;
    EXPECT_EQ(other.getPar("k", value), Ok);
    EXPECT_EQ(value, "new");
}

/// Whatever is remembered of reads, be it that a key is not there, goes with the next commit of anybody.
TEST_F(PrmLib, AReadSeesWhatOthersHaveCommittedBefore) {
    std::string value;
    cPrmLib other(otherClient);
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(client.getPar("k", value), NotFound) << round;
        EXPECT_EQ(client.getPar("k", value), NotFound) << round;
        other.setPar("k", round);
        EXPECT_EQ(Text("k"), std::to_string(round));
        EXPECT_EQ(Text("k"), std::to_string(round));
        other.delPar("k");
    }
}

/// Runs something once, before the library opens the next log.
std::function<void()> beforeLog;

int OpenHooked(sqlite3_vfs *hooked, char const *name, sqlite3_file *file, int flags, int *out) {
    if ((flags & SQLITE_OPEN_WAL) != 0 && beforeLog)
        std::exchange(beforeLog, nullptr)();
    auto *const system = static_cast<sqlite3_vfs *>(hooked->pAppData);
    return system->xOpen(system, name, file, flags, out);
}

TEST_F(PrmLib, AStoreThatIsReplacedWhileItIsOpenedIsNotReadWithoutItsLog) {
    std::array<int, 2> ready{};
    ASSERT_EQ(::pipe(ready.data()), 0);
    pid_t const writer = ::fork();
    if (writer == 0) {
        cPrmLib(otherClient).setPar("k", 1);
        cPrmLib second(otherClient);
        second.setPar("k", 2);  // which is in the log only
        ::close(ready[::write(ready[1], "x", 1) == 1 ? 0 : 1]);
        ::pause();
    }
    char sign = 0;
    ASSERT_EQ(::read(ready[0], &sign, 1), 1);
    std::string const other = folder / "other";
    prm::Store(other + "/prm.db", {}).Write("k", {"3"});

    sqlite3_vfs *const system = sqlite3_vfs_find(nullptr);
    static sqlite3_vfs hooked = *system;  // what was opened by it outlives the test
    hooked.zName = "hooked";
    hooked.pAppData = system;
    hooked.xOpen = OpenHooked;
    sqlite3_vfs_register(&hooked, 1);
    beforeLog = [&] {
        ::renameat2(AT_FDCWD, other.c_str(), AT_FDCWD, (folder / "folder").c_str(), RENAME_EXCHANGE);
    };
    EXPECT_EQ(Text("k"), "3");
    EXPECT_FALSE(beforeLog);
    sqlite3_vfs_unregister(&hooked);
    sqlite3_vfs_register(system, 1);
    ::kill(writer, SIGKILL);
    ::waitpid(writer, nullptr, 0);
}

TEST(PrmStore, TellsAReasonOnceNotPerCall) {
    TemporaryFolder const folder;
    std::vector<std::string> lines;
    prm::Store store(folder.File("prm.db", std::string(4096, 'x')),
                     [&](std::string const &reason) { lines.push_back(reason); });
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(store.Write("k", {"v"}), prm::Status::Unavailable);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find("not a database"), std::string::npos) << lines[0];
}

TEST(PrmStore, RefusesTheFileOfANewerVersion) {
    TemporaryFolder const folder;
    std::string const path = folder / "prm.db";
    prm::Store(path, {}).Write("k", {"v"});
    constexpr std::streamoff userVersion = 60;  // in the header of an SQLite file, the last byte of four
    std::fstream(path, std::ios::in | std::ios::out | std::ios::binary).seekp(userVersion + 3).put(2);
    EXPECT_EQ(prm::Store(path, [](auto const &) {}).Write("k", {"v"}), prm::Status::Unavailable);
}

TEST(PrmStore, RemovesATreeAndNothingBesideIt) {
    TemporaryFolder const folder;
    prm::Store store(folder / "prm.db", [](std::string const &reason) { ADD_FAILURE() << reason; });
    for (char const *key : {"x", "x/a", "x/a/b", "x.y", "x0", "xy/a", "y"})
        store.Write(key, {"v"});
    EXPECT_EQ(store.RemoveTree("/x/"), prm::Status::Ok);
    EXPECT_EQ(store.RemoveTree("x"), prm::Status::NotFound);
    EXPECT_EQ(store.RemoveTree("/"), prm::Status::Invalid);
    std::string left;
    store.ForEach("", [&](std::string const &key) {
        left += key + ' ';
        return prm::Status::Ok;
    });
    EXPECT_EQ(left, "x.y x0 xy/a y ");
}

}  // namespace
