// Compiled templates, rendered: the template compiler and the view part of the framework together.

#include "tests/unit/framework/templates/records.h"

#include <cppcms/service.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/unit/framework/catalogue.h"
#include "tests/unit/platform/TemporaryFolder.h"

namespace {

namespace data = site::data;

/// An application whose URLs begin with /cfg.
class Templates : public ::testing::Test {
  protected:
    Templates() : service_(Settings()), app_(service_) {
        app_.mapper().root("/cfg");
        app_.mapper().assign("link", "/link/{1}/{2}");
    }

    std::string Render(std::string const &view, cppcms::base_content &record,
                       std::string const &locale = "C.UTF-8") {
        std::ostringstream out;
        out.imbue(service_.locale(locale));
        app_.render("site", view, out, record);
        return out.str();
    }

    TemporaryFolder const catalogues_;

  private:
    cppcms::json::value Settings() {
        cppcms::json::value settings;
        settings.set("localization.messages.paths", std::vector<std::string>{catalogues_.Path()});
        settings.set("localization.messages.domains", std::vector<std::string>{"site"});
        return settings;
    }

    cppcms::service service_;
    cppcms::application app_;
};

TEST_F(Templates, LoopsFiltersAndWhiteSpace) {
    data::Lists lists;
    EXPECT_EQ(Render("Lists", lists), "[none]\n[]\n[]\n|||||0\n  \n\t\"empty\" \\ 100%>\n  \n.");

    lists.numbers = {7, 1234567};
    lists.pairs = {{"a", "<1>"}, {"b&", "2"}};
    lists.text = "<\"'&/ \n>\\-_.~\xC3\xA9\x01";
    EXPECT_EQ(Render("Lists", lists),
              "[list 1:7, 2:1234567 end]\n[0:1234567 1:7 ]\n[a=<1>;b&amp;=2;]\n"
              "&lt;&quot;&#39;&amp;/ \n&gt;\\-_.~\xC3\xA9\x01|<\"'&/ \n>\\-_.~\xC3\xA9\x01|"
              "<\\\"\\u0027&/ \\n>\\\\-_.~\xC3\xA9\\u0001|%3c%22%27%26%2f%20%0a%3e%5c-_.~%c3%a9%01|"
              "%26lt%3b%26quot%3b%26%2339%3b%26amp%3b%2f%20%0a%26gt%3b%5c-_.~%c3%a9%01|0\n"
              "  \n  neither\n  \n.");
    lists.flag = true;
    EXPECT_NE(Render("Lists", lists).find("|1\n  \n  flag\n  \n"), std::string::npos);
}

TEST_F(Templates, PartsOfControls) {
    data::Widgets record;
    record.form.add(record.text);
    record.form.add(record.select);
    record.text.attributes_string("class='k'");
    record.select.name("s");
    record.select.attributes_string("class='k'");
    record.select.add("One", "1");
    record.select.add("T<wo", "2");
    record.select.selected(1);

    std::string const options =
        ">\n<option value=\"1\" >One</option>\n<option value=\"2\" selected >T&lt;wo</option>\n</select>\n";
    EXPECT_EQ(Render("Widgets", record),
              "<input type=\"text\" name=\"_1\" class='k' >\n"
              "<input type=\"text\" name=\"_1\" | >\n"
              "<select name=\"s\" class='k' " +
                  options + "<select name=\"s\" | " + options + "(_1:s)\n");
}

TEST_F(Templates, NamesFiltersAndLinks) {
    std::string const text = "a(/b";
    data::Expressions record;
    record.pointer = &text;
    record.rows = {{"x<", {{"1>", {}}, {"2", {}}}}, {"y", {{"3", {}}}}};
    EXPECT_EQ(Render("Expressions", record), Render("Lists", record) + R"(!-7a,b3,member;5a(/b4,member;
!a(/b! (/ %21%25%3e%20x%21
odd
N
x&lt;1>;x&lt;2;y3;(x&lt;y)member
café 5
/cfg/link/5/a(/b /cfg/link/a%28%2fb/member
)");
}

TEST_F(Templates, TextsInTheLanguageOfTheStream) {
    using namespace std::string_literals;
    data::Texts record;
    record.button.name("b");
    record.button.value(booster::locale::translate("Go"));
    EXPECT_EQ(Render("Texts", record),
              "Save|Save|a&amp;b of <b>a%26b</b>|&lt;Cancel&gt;\n"
              "0 files|0 files|1 file|1 file|1234 files|1234 files|\n"
              "ltr|<input type=\"submit\" name=\"b\" value=\"Go\"  >");

    Install(
        catalogues_.Path(), "de", "site",
        Catalogue({{"", "Content-Type: text/plain; charset=UTF-8\nPlural-Forms: nplurals=2; plural=n > 1;\n"},
                   {"Save", "Für"},
                   {"verb\4Save", "<i>Merken</i>"},
                   {"{1} of <b>{2}</b>", "{2}: {1}"},
                   {"Go", "Los"},
                   {"<Cancel>", "<Zurück>"},
                   {"{1} file\0{1} files"s, "{1} Akte\0{1,w=6} Akten"s},
                   {"dir\4{1} file\0{1} files"s, "ein\0viele"s},
                   {"LTR", "RTL"}}));
    for (char const *const locale : {"de_DE.UTF-8", "de_AT.UTF-8"})
        EXPECT_EQ(Render("Texts", record, locale),
                  "Für|<i>Merken</i>|a%26b: a&amp;b|&lt;Zurück&gt;\n"
                  "0 Akte|ein|1 Akte|ein|  1234 Akten|viele|\n"
                  "rtl|<input type=\"submit\" name=\"b\" value=\"Los\"  >");
}

}  // namespace
