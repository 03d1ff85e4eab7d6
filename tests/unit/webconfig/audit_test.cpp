#include <gtest/gtest.h>

#include <fstream>

#include "WebApps/webconfig/security/Audit.h"
#include "WebApps/webconfig/security/AuditLog.h"

namespace {

using namespace webconfig;
using namespace webconfig::security;

constexpr char logged[] = "Nov 22 08:15:00 vm authpriv.notice web: ";
constexpr std::time_t noon = 1795348800;  // 2026-11-22T12:00:00Z

TEST(Audit, NoValueForgesALineAndAllAreReadAsTheyWere) {
    EXPECT_EQ(AuditLine("setting", util::Outcome::Failed, {"admin", "192.168.0.20", "/config/"}, noon,
                        {{"key", "net/hostname"}, {"x", ""}}),
              "audit event=setting result=failed user=admin address=192.168.0.20 page=/config/ "
              "time=2026-11-22T12:00:00Z key=net/hostname x=-");
    std::tuple<std::string, char const *, char const *> const cases[] = {
        {"a b", "a%20b", "a b"},
        {"x\nNov 22 08:15:00 vm authpriv.notice web: audit event=reboot",
         "x%0ANov%2022%2008:15:00%20vm%20authpriv.notice%20web:%20audit%20event%3Dreboot",
         "xNov 22 08:15:00 vm authpriv.notice web: audit event=reboot"},
        {"a=b\r\"%41\\", "a%3Db%0D%22%2541%5C", "a=b\"%41\\"},
        {"\xC3\xA4\xFF\x1B[2J", "%C3%A4%FF%1B%5B2J", "\u00E4\uFFFD\uFFFD[2J"},
        {std::string("\0", 1), "%00", "\uFFFD"},
        {"-", "%2D", "-"},
        {"<b>", "%3Cb%3E", "<b>"},
    };
    for (auto const &[value, word, read] : cases) {
        EXPECT_EQ(AuditWord(value), word);
        auto const entry = ReadAuditLine(
            logged + AuditLine("upload", util::Outcome::Ok, {value, value, value}, noon, {{"name", value}}));
        ASSERT_TRUE(entry);
        EXPECT_EQ(entry->event + ' ' + entry->result + ' ' + entry->time, "upload ok 2026-11-22T12:00:00Z");
        EXPECT_EQ(entry->user + entry->address + entry->page, std::string(read) + read + read);
        EXPECT_EQ(entry->details, std::string("name=") + read);
    }
    std::string const cut = AuditWord(std::string(1000, '\n'));
    EXPECT_EQ(cut.size(), 96U);
    EXPECT_TRUE(cut.ends_with("%0A%.."));
    std::string const full(100, ' ');
    EXPECT_LE(AuditLine("upload", util::Outcome::Ok, {full, full, full}, noon,
                        {{"a", full}, {"b", full}, {"c", full}, {"d", full}, {"e", full}, {"f", full}})
                  .size(),
              900U);
}

TEST(Audit, OnlyTheLinesOfTheAuditAreRead) {
    for (std::string const line : {
             "",
             "\n",
             "audit event=login",
             "Nov 22 08:15:00 vm authpriv.notice sudo: root: audit event=login",
             "Nov 22 08:15:00 vm authpriv.info sshd[7]: user web: audit event=login",
             "Nov 22 08:15:00 vm authpriv.notice web: audit",
             "Nov 22 08:15:00 vm authpriv.notice web: audit  =x",
         })
        EXPECT_FALSE(ReadAuditLine(line)) << line;
    auto const entry =
        ReadAuditLine(std::string(logged) + "audit event=login result=locked user=%zz%4 event=x\n");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->event + entry->user + entry->details, "login%zz%4");
}

TEST(Audit, TheNewestOfBothFilesComeFirst) {
    constexpr char path[] = "/tmp/audit_test";
    auto const line = [](int number) {
        return logged +
               AuditLine(number % 2 ? "login" : "setting", util::Outcome::Ok, {"User", "", ""}, noon,
                         {{"n", std::to_string(number)}}) +
               '\n';
    };
    // Of one of these, the end is what is left at the begin of what is read.
    std::string const noise = "Nov 22 08:15:00 vm authpriv.info sshd[7]: user " + std::string(600, 'x') +
                              " web: audit event=reboot\n";
    EXPECT_FALSE(ReadAudit(path, "", "", 10));
    EXPECT_FALSE(ReadAudit("/tmp", "", "", 10));
    {
        std::ofstream older(path + std::string(".0"));
        std::ofstream newer(path);
        for (int number = 0; number < 10000; ++number)
            (number < 9990 ? older : newer) << line(number) << noise;
    }
    auto const all = ReadAudit(path, "", "", 200000);
    ASSERT_TRUE(all);
    EXPECT_EQ(all->front().details, "n=9999");
    EXPECT_LT(all->size(), 5000U) << "only the end of a file is read";
    EXPECT_EQ(all->back().details, "n=" + std::to_string(10000 - all->size())) << "no line is missing or cut";
    EXPECT_TRUE(ReadAudit(path, "reboot", "", 10)->empty());
    auto const some = ReadAudit(path, "login", "uSER", 3);
    ASSERT_EQ(some->size(), 3U);
    EXPECT_EQ(some->at(2).details, "n=9995");
    EXPECT_EQ(ReadAudit(path, "", "n=998", 100)->size(), 10U);
    EXPECT_TRUE(ReadAudit(path, "", "nothing of this", 100)->empty());
    std::remove(path);
    std::remove("/tmp/audit_test.0");
}

}  // namespace
