// Compiled templates, rendered: the template compiler and the view part of the framework together.

#include "tests/unit/framework/templates/records.h"

#include <cppcms/service.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

namespace data = site::data;

/// An application whose URLs begin with /cfg.
class Templates : public ::testing::Test {
  protected:
    Templates() : service_(cppcms::json::value()), app_(service_) {
        app_.mapper().root("/cfg");
        app_.mapper().assign("reboot", "/reboot");
    }

    std::string Render(std::string const &view, cppcms::base_content &record) {
        std::ostringstream out;
        app_.render("site", view, out, record);
        return out.str();
    }

  private:
    cppcms::service service_;
    cppcms::application app_;
};

std::string FailureOf(std::string const &skin, std::string const &view, cppcms::base_content &record) {
    std::ostringstream out;
    try {
        cppcms::views::pool::instance().render(skin, view, out, record);
    } catch (cppcms::cppcms_error const &error) {
        return error.what();
    }
    return "";
}

TEST_F(Templates, PageWithMenusAndForm) {
    data::Page page;
    page.alert = true;
    page.here = "/cfg/fw";
    page.menus = {{"Set up", "", {{"Firm ware", "/fw", {{"K<1>", "", {}}}}, {"NoPath", "", {}}}}};
    page.title = "A <b> & 'c'";
    page.selected_tab = 12345;
    page.status_url = "/a'b\"c";

    cppcms::widgets::text named;
    named.name("tx");
    named.id("id_tx");
    named.message("Label <x>");
    named.value("v&1");
    named.attributes_string("class='a b'");
    cppcms::widgets::text nameless;
    nameless.valid(false);
    nameless.error_message("Bad & wrong");
    nameless.attributes_string("class='cppcms_error_msg'");
    page.form.add(named);
    page.form.add(nameless);

    EXPECT_EQ(Render("Page", page), R"(<html><body>
<ul><li>Set up<ul><li class=" selected  parent "><a id="menu_Firm_ware" href="/cfg/fw"> Firm ware</a></li><li class=" child  menu_Firm_ware">K&lt;1&gt;</li>

<li class=""><a id="menu_NoPath" href=""> NoPath</a></li>
</ul></li>
</ul>
<h1>A &lt;b&gt; &amp; &#39;c&#39;</h1>
<form method="post" action=""><table>
<tr><th>Label &lt;x&gt; </th><td><input type="text" id="id_tx" name="tx"  value="v&amp;1"class='a b' ></td></tr>
<tr class="bad"><th></th><td><input type="text" name="_2" class='cppcms_error_msg' ><span class="bad">Bad &amp; wrong</span></td></tr>
</table></form>

<script>alertBox("/cfg/reboot");
tabs({selected: 12345}); poll("/a\u0027b\"c");
</script>
</body></html>
)");
}

TEST_F(Templates, DerivedRecordInBaseView) {
    std::string const expected =
        "<html><body>\n<ul><h4> No menus </h4></ul>\n\n\n<script>\n</script>\n</body></html>\n";
    data::Base base;
    EXPECT_EQ(Render("Base", base), expected);
    data::Page page;
    EXPECT_EQ(Render("Base", page), expected);
}

TEST_F(Templates, LoopsFiltersAndWhiteSpace) {
    data::Lists lists;
    EXPECT_EQ(Render("Lists", lists), "[none]\n[]\n[]\n|||||0\n  \n\t\"empty\" \\ 100%>\n  \n");

    lists.numbers = {7, 1234567};
    lists.pairs = {{"a", "<1>"}, {"b&", "2"}};
    lists.text = "<\"'&/ \n>";
    EXPECT_EQ(Render("Lists", lists),
              "[list 1:7, 2:1234567 end]\n[0:1234567 1:7 ]\n[a=<1>;b&amp;=2;]\n"
              "&lt;&quot;&#39;&amp;/ \n&gt;|<\"'&/ \n>|<\\\"\\u0027&/ \\n>|%3c%22%27%26%2f%20%0a%3e|"
              "%26lt%3b%26quot%3b%26%2339%3b%26amp%3b%2f%20%0a%26gt%3b|0\n  \n  neither\n  \n");
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

TEST_F(Templates, UnfitRecordsAndNames) {
    data::Base base;
    data::Page page;
    page.alert = true;
    EXPECT_EQ(FailureOf("site", "Page", base),
              "cppcms::views::generator: an attempt to use content of invalid type");
    EXPECT_EQ(FailureOf("nowhere", "Page", page), "cppcms::views::pool: no such skin: nowhere");
    EXPECT_EQ(FailureOf("site", "Nothing", page),
              "cppcms::view::pool: no such view: Nothing is registered for skin: site");
    EXPECT_EQ(FailureOf("site", "Page", page),
              "cppcms::base_content: an attempt to access content's application that wasn't assigned");
}

}  // namespace
