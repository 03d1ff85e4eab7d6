#include <booster/locale.h>
#include <cppcms/application.h>
#include <cppcms/base_view.h>
#include <cppcms/http_response.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iomanip>
#include <sstream>

#include "booster/locale/plural_rule.h"
#include "fake_request.h"
#include "tests/unit/framework/catalogue.h"
#include "tests/unit/platform/TemporaryFolder.h"
#include "tests/unit/util/LogCapture.h"

namespace {

namespace locale = booster::locale;
using locale::format, locale::message, locale::translate;
using namespace std::string_literals;

std::string Head(std::string const &rule, std::string const &charset = "UTF-8") {
    return "Content-Type: text/plain; charset=" + charset + "\nPlural-Forms: nplurals=3; plural=" + rule +
           ";\n";
}

/// Written to a stream of a locale, in one of its domains.
template <typename Object>
std::string Written(Object const &object, std::locale const &in, int domain = 0) {
    std::ostringstream out;
    out.imbue(in);
    cppcms::translation_domain_scope const scope(out, domain);
    out << object;
    return out.str();
}

class Locale : public testing::Test {
  protected:
    std::locale German(std::string const &name = "de_DE.UTF-8") const {
        locale::generator generator;
        generator.add_messages_path(folder_ / "none");
        generator.add_messages_path(folder_.Path());
        generator.add_messages_domain("site");
        generator.add_messages_domain("more");
        return generator(name);
    }

    TemporaryFolder folder_;
};

TEST(LocaleInfo, IsWhatTheNameSays) {
    std::array<std::string, 4> const cases[] = {
        {"C", "c", "", "us-ascii"},
        {"C.UTF-8", "c", "", "utf-8"},
        {"DE-at.utf8@euro", "de", "AT", "utf8"},
        {"de", "de", "", "us-ascii"},
        {"en_US.ISO-8859-1", "en", "US", "iso-8859-1"},
        {"../../de.UTF-8", "c", "", "us-ascii"},
        {"de_../x.UTF-8", "c", "", "us-ascii"},
        {"de.", "c", "", "us-ascii"},
    };
    locale::generator const generator;
    for (auto const &[name, language, country, encoding] : cases) {
        auto const made = generator(name);
        auto const &info = std::use_facet<locale::info>(made);
        EXPECT_EQ((std::array{info.name(), info.language(), info.country(), info.encoding()}),
                  (std::array{name, language, country, encoding}));
        EXPECT_EQ(info.utf8(), encoding.starts_with("utf")) << name;
        EXPECT_EQ(Written(1234567.5, made), "1.23457e+06") << name;
        EXPECT_EQ(Written(translate("é"), made), "é") << name;
    }
}

TEST_F(Locale, ChoosesTheTranslation) {
    Install(folder_.Path(), "de", "site",
            Catalogue({{"", Head("n>1")},
                       {"a", "ä"},
                       {"x\4a", "xä"},
                       {"one\0many"s, "ein\0viele"s},
                       {"x\4one\0many"s, "xein\0xviele"s},
                       {"half\0halves"s, "halb\0"s},
                       {"none", ""}}));
    Install(folder_.Path(), "de_CH", "site", Catalogue({{"a", "CH"}, {"one\0many"s, "eis\0vieli"s}}));
    Install(folder_.Path(), "de", "more", Catalogue({{"a", "mehr"}}));
    auto const german = German();
    std::ostringstream out;
    out.imbue(german);
    out << translate("a") << '|' << translate("x", "a") << '|' << translate("y", "a") << '|'
        << translate("b"s);
    out << '|' << translate("none") << translate("") << message() << std::setw(4) << translate("a");
    EXPECT_EQ(out.str(), "ä|xä|a|b|none  ä");
    out.str("");
    out << translate("one", "many", 0) << '|' << translate("one", "many", -2) << '|';
    out << translate("x"s, "one"s, "many"s, 2) << '|' << translate("one of", "many", 1) << '|';
    out << translate("half", "halves", 1) << '|' << translate("half", "halves", 2) << '|';
    {
        cppcms::translation_domain_scope const more(out, "more");
        cppcms::translation_domain_scope const unknown(out, "unknown");
        out << translate("a") << '|';
    }
    out << translate("a");
    EXPECT_EQ(out.str(), "ein|viele|xviele|one of|halb|halves|mehr|ä");
    EXPECT_EQ(Written(translate("a"), german, 2), "a") << "there is no third domain";
    EXPECT_EQ(Written(translate("a"), German("de_CH.UTF-8")), "CH");
    EXPECT_EQ(Written(translate("one", "many", 0), German("de_CH.UTF-8")), "vieli") << "without a rule";
    EXPECT_EQ(Written(translate("a"), German("de_DE.ISO-8859-1")), "\xE4");
    EXPECT_EQ(Written(translate("a"), German("fr_FR.UTF-8")), "a");
    EXPECT_EQ(Written(translate("caf\xC3\xA9\x7F"), std::locale::classic()), "caf\x7F");

    EXPECT_THROW(cppcms::translation_domain_scope(*std::make_unique<std::ostringstream>(), "more"),
                 std::bad_cast);
}

TEST_F(Locale, OfARequestTranslatesWhatItsResponseShows) {
    Install(folder_.Path(), "de", "site",
            Catalogue({{"a", "ä"}, {"x\4a", "xä"}, {"one\0many"s, "ein\0viele"s}}));
    auto settings = QuietSettings();
    settings.set("localization.messages.paths", std::vector<std::string>{folder_.Path()});
    settings.set("localization.messages.domains", std::vector<std::string>{"site"});
    cppcms::service service(settings);
    cppcms::application app(service);
    FakeRequest request(service, {});
    app.assign_context(request.shared_context());
    app.response().out() << translate("a");
    app.context().locale("de_DE.UTF-8");
    app.response().out() << translate("a") << 12345.5 << app.translate("a") << app.translate("x", "a")
                         << app.translate("one", "many", 2) << app.translate("x", "one", "many", 1);
    EXPECT_TRUE(request.Answer().ends_with("\r\n\r\naä12345.5äxävieleone")) << request.Sent();
    FakeRequest next(service, {});
    next.context().response().out() << translate("a");
    EXPECT_TRUE(next.Answer().ends_with("\r\n\r\na")) << "the next request begins anew";
}

TEST_F(Locale, LeavesOutBrokenCataloguesAndSaysWhy) {
    std::string const whole = Catalogue({{"", Head("n!=1")}, {"a", "ä"}, {"one\0many"s, "ein\0viele"s}});
    LogCapture log(booster::log::error, "cppcms");
    auto const check = [&](std::string const &content, std::string const &complaint) {
        Install(folder_.Path(), "de", "site", content);
        EXPECT_EQ(Written(translate("a"), German()), "a");
        EXPECT_TRUE(log.Contains("/de/LC_MESSAGES/site.mo is left out: " + complaint)) << complaint;
        log.Take();
    };
    for (std::size_t size = 0; size < whole.size(); ++size)
        check(whole.substr(0, size), "");
    check("no catalogue", "it is no catalogue");
    check(std::string(whole).replace(6, 1, "\1"), "its format is unknown");
    check(std::string(5 * 1024 * 1024, '\0'), "it is too large");
    check(Catalogue({{"", Head("n", "x-none")}, {"a", "b"}}), "it cannot be converted from x-none to utf-8");
    for (auto const &rule :
         {"EXPRESSION"s, "n n"s, "n+"s, "(n"s, "n?1"s, "1234567890"s, std::string(60, '!') + 'n',
          std::string(60, '(') + 'n' + std::string(60, ')'), "n" + std::string(2000, ' ') + "+1"})
        check(Catalogue({{"", Head(rule)}, {"a", "b"}}),
              "its plural rule is no expression of n, or too long");

    for (std::size_t at = 0; at < whole.size(); ++at) {
        Install(folder_.Path(), "de", "site",
                std::string(whole).replace(at, 1, 1, static_cast<char>(~whole[at])));
        Written(translate("one", "many", 2), German());  // Whatever it says, nothing beyond its end is read.
    }
    auto foreign = Catalogue({{"a", "b"}});  // of a machine with the other order of bytes
    for (auto at = foreign.begin(); at != foreign.begin() + 28 + 16; at += 4)
        std::reverse(at, at + 4);
    Install(folder_.Path(), "de", "site", foreign);
    EXPECT_EQ(Written(translate("a"), German()), "b");
}

TEST(PluralRule, ComputesLikeC) {
    std::tuple<std::string, std::vector<unsigned long>, std::vector<unsigned long>> const cases[] = {
        {"0", {0, 1, 2}, {0, 0, 0}},
        {" n != 1 ", {0, 1, 2}, {1, 0, 1}},
        {"n%10==1 && n%100!=11 ? 0 : n%10>=2 && n%10<=4 && (n%100<10 || n%100>=20) ? 1 : 2",
         {1, 2, 5, 11, 21, 22, 112},
         {0, 1, 2, 2, 0, 1, 2}},
        {"n==0?0:n==1?1:n==2?2:n%100>=3&&n%100<=10?3:n%100>=11?4:5",
         {0, 1, 2, 103, 99, 100},
         {0, 1, 2, 3, 4, 5}},
        {"!n+2*3-n/2%3", {0, 4, 6}, {7, 4, 6}},
        {"n%0+n/0", {7}, {0}},
        {"1||0&&0", {0}, {1}},
        {"10-3-2<n>0", {6, 5}, {1, 0}},
    };
    for (auto const &[text, numbers, forms] : cases) {
        locale::impl::plural_rule const rule(text);
        for (std::size_t i = 0; i < numbers.size(); ++i)
            EXPECT_EQ(rule(numbers[i]), forms[i]) << text << ", " << numbers[i];
    }
}

TEST_F(Locale, FormatPutsValuesInTheirPlaces) {
    Install(folder_.Path(), "de", "site", Catalogue({{"a", "ä"}, {"{1} of {2}", "{2}: {1}"}}));
    std::pair<std::string, std::string> const cases[] = {
        {"{1} {2} {1}", "55 1.23456 55"},
        {"{{}} {0}{3}{}{x}{-1}{99999999999}|}{1", "{} |}55"},
        {"{1,w=5}|{1,width=5,left}|{1,w=4,<}|{1,w=4,>}|{1}", "   55|55   |55  |  55|55"},
        {"{2,p=2}|{2,precision=3}|{2}", "1.2|1.23|1.23456"},
        {"{1,w=}{1,oops=3}{1,w=-4}", "555555"},
    };
    for (auto const &[text, expected] : cases)
        EXPECT_EQ((format(text) % 55 % 1.23456).str(), expected) << text;
    EXPECT_EQ((format("{1,w=2000000000}") % 1).str().size(), 1000U);
    EXPECT_EQ(Written(format(translate("{1} of {2}")) % 1 % translate("a"), German()), "ä: 1");
    EXPECT_EQ((format("{1}") % translate("a")).str(German()), "ä");
}

}  // namespace
