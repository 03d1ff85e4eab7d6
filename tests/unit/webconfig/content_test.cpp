#include <cppcms/form.h>
#include <cppcms/url_mapper.h>
#include <gtest/gtest.h>

#include "WebApps/webconfig/data/Menu.h"
#include "WebApps/webconfig/data/Message.h"
#include "WebApps/webconfig/data/Wlan.h"
#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/forms/Validation.h"
#include "WebApps/webconfig/security/Policy.h"
#include "tests/unit/framework/running_service.h"

namespace webconfig {

using data::Menu;
using data::Message;

/// Shows the record of the test, whatever is asked for.
class Site : public cppcms::application {
  public:
    Site(cppcms::service &service, char const *view, data::Base *content)
        : application(service), _view(view), _content(*content) {
        mapper().root("/config");
        auto *const settings = new cppcms::application(service);
        attach(settings, "settings", "/settings{1}", "/settings(/none)", 1);
        settings->mapper().assign("firmware", "/firmware");
        settings->mapper().assign("reboot", "/reboot");
    }
    void main(std::string) override { render(_view, _content); }

  private:
    char const *const _view;
    data::Base &_content;
};

/// The compiled \a view as a browser at /config/settings/firmware gets it.
std::string Shown(char const *view, data::Base &content) {
    int const port = FreePort();
    cppcms::json::value settings = HttpSettings(port);
    settings.set("views.default_skin", "webconfig");
    cppcms::service service(settings);
    service.applications_pool().mount(cppcms::applications_factory<Site>(view, &content),
                                      cppcms::mount_point("(.*)", 1));
    ServiceThread const running(service);
    return Get(port, "/config/settings/firmware");
}

void ExpectParts(std::string const &text, std::vector<std::string> const &parts) {
    for (auto const &part : parts)
        EXPECT_NE(text.find(part), std::string::npos) << part << "\nis not in\n" << text;
}

TEST(SkeletonTest, TextsAreEscapedAndMarkupIsTaken) {
    data::Base content;
    content.branding.window_text = "<w>";
    content.branding.banner_text = "<b> & c";
    content.branding.footer_left_text = "<i>left</i>";
    content.branding.footer_right_text = "<i>right</i>";
    content.title = "<t>";
    content.message = Message::Custom("<m>", "note", true);
    content.reboot_required = true;
    ExpectParts(Shown("Base", content), {
                                            "<title> &lt;w&gt; </title>",
                                            "<link href=\"/css/screen.css?rev=\"",
                                            "<script type=\"text/javascript\" src=\"/js/json3.min.js?rev=\"",
                                            "<div id=\"banner_middle\"><h1>&lt;b&gt; &amp; c</h1></div>",
                                            "<div class=\"left_footer\"><i>left</i></div>",
                                            "<div class=\"right_footer\">&lt;i&gt;right&lt;/i&gt;</div>",
                                            "<h2 id=\"config_page_title\"> &lt;t&gt; </h2>",
                                            "<div class=\"note\nstatic\nform_result_msg\">&lt;m&gt;</div>",
                                            "<a href=\"/config/settings/reboot\">Reboot</a>",
                                            "<ul class=\"nav\">\n<h4> No menus </h4>\n</ul>",
                                        });

    content.branding.banner_html = "<b>banner</b>";
    content.branding.footer_html = "<b>footer</b>";
    content.message = {};
    content.reboot_required = false;
    std::string const branded = Shown("Base", content);
    ExpectParts(branded,
                {"<div id=\"banner\">\n<b>banner</b>\n</div>", "<div id=\"footer\">\n<b>footer</b>\n</div>"});
    for (char const *const other : {"banner_middle", "left_footer", "form_result_msg", "alertsBox"})
        EXPECT_EQ(branded.find(other), std::string::npos) << other;
}

TEST(SkeletonTest, TheMenusShowWhereThePageIs) {
    data::Base content;
    Menu menu("Set <up>");
    Menu firmware("Firm ware", "/settings/firmware");
    firmware << Menu("Again", "/settings/firmware") << Menu("K<1>", "/settings/reboot");
    menu << firmware << Menu("Reboot", "/settings/reboot");
    content.menus = {menu};
    ExpectParts(Shown("Base", content), {R"(<ul class="nav">
<li><div class="nav">Set &lt;up&gt;</div>
<ul class="nav2">
<li class=" selected  parentSideMenu parentSubMenu "><a id="menu_Firm_ware" href="/config/settings/firmware"> Firm ware</a></li>
<li class=" childSideMenu subMenu hiddenOnLoad selected  menu_Firm_ware"><a href="/config/settings/firmware"> Again</a></li>
<li class=" childSideMenu subMenu hiddenOnLoad menu_Firm_ware"><a href="/config/settings/reboot"> K&lt;1&gt;</a></li>
<li class=""><a id="menu_Reboot" href="/config/settings/reboot"> Reboot</a></li>
</ul>
</li>
</ul>
)"});
}

TEST(SkeletonTest, AHiddenRowIsMarkedWhereItsInputIsInvalid) {
    data::Wlan content;
    ExpectParts(Shown("Wlan", content), {"<tr class=\"hiddenOnLoad\" id=\"wlan_country_copy_row\">"});
    content.form.country.copy.valid(false);
    ExpectParts(Shown("Wlan", content),
                {"<tr class=\"hiddenOnLoad cppcms_error_msg\" id=\"wlan_country_copy_row\">"});
}

TEST(MenuTest, NoneIsPartOfItself) {
    Menu top("Top");
    top << Menu("Child");
    top << top;
    EXPECT_EQ(top.GetChildren().size(), 1U);
}

TEST(MenuTest, AConfigurationWithASlipIsNoMenu) {
    auto const read = [](std::string const &text) {
        cppcms::json::value value;
        char const *begin = text.data();
        EXPECT_TRUE(value.load(begin, begin + text.size(), true)) << text;
        return data::ReadMenus(value);
    };
    EXPECT_TRUE(data::ReadMenus({}).empty());
    for (char const *const slip : {R"({"text":"A"})", R"(["A"])", R"([{"path":"/"}])",
                                   R"([{"text":"A","path":1}])", R"([{"text":"A","children":{}}])"})
        EXPECT_THROW(read(slip), cppcms::json::bad_value_cast) << slip;
}

TEST(ValidationTest, AddClassExtendsAClassAttributeAndDropsOthers) {
    std::tuple<char const *, char const *, char const *> const cases[] = {
        {"class='a'", "b", "class='a b'"},
        {"id='x' class=\"a\" ", "b", "id='x' class=\"a b\" "},
        {"size='5'", "cppcms_error_msg", "class='cppcms_error_msg'"},
        {"class='a' title='t'", "b", "class='a' title='t b'"},  // up to the last quote
    };
    for (auto const &[before, cssClass, after] : cases) {
        cppcms::widgets::text widget;
        widget.attributes_string(before);
        util::validation::AddClass(widget, cssClass);
        EXPECT_EQ(widget.attributes_string(), after);
    }
}

TEST(ValidationTest, ControlCharactersAreRefusedInFieldsOfOneLine) {
    for (std::string const bad : {"", "a\n", "\tb", "c\rd", "e\x7F"}) {
        security::Policy policy;
        policy.refuse_control_characters = !bad.empty();
        security::SetPolicy(policy);
        cppcms::widgets::password line;
        cppcms::widgets::textarea area;
        forms::Base form;
        form.add(line);
        form.add(area);
        line.value(bad.empty() ? "as\never" : bad);
        area.value("two\nlines");
        EXPECT_EQ(form.validate(), bad.empty()) << bad;
        EXPECT_TRUE(area.valid());
    }
    security::SetPolicy({});
}

}  // namespace webconfig
