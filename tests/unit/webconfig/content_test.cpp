#include <arpa/inet.h>
#include <cppcms/application.h>
#include <cppcms/applications_pool.h>
#include <cppcms/form.h>
#include <cppcms/json.h>
#include <cppcms/mount_point.h>
#include <cppcms/service.h>
#include <cppcms/url_mapper.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <future>
#include <thread>

#include "WebApps/webconfig/data/About.h"
#include "WebApps/webconfig/data/Menu.h"
#include "WebApps/webconfig/data/Message.h"
#include "WebApps/webconfig/data/Wlan.h"
#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/forms/Select.h"
#include "WebApps/webconfig/forms/Validation.h"
#include "WebApps/webconfig/widgets/IpAddress.h"

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

/// The connection of a client to the service, which is given time to listen; -1 without one.
int Connected(sockaddr_in const &address) {
    for (int tries = 100; tries > 0; --tries) {
        int const client = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (::connect(client, reinterpret_cast<sockaddr const *>(&address), sizeof address) == 0)
            return client;
        ::close(client);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return -1;
}

/// The compiled \a view as a browser at /config/settings/firmware gets it.
std::string Shown(char const *view, data::Base &content) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int const probe = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    socklen_t size = sizeof address;
    EXPECT_EQ(::bind(probe, reinterpret_cast<sockaddr *>(&address), size), 0);
    ::getsockname(probe, reinterpret_cast<sockaddr *>(&address), &size);
    ::close(probe);

    cppcms::json::value settings;
    settings.set("service.api", "http");
    settings.set("service.ip", "127.0.0.1");
    settings.set("service.port", static_cast<int>(ntohs(address.sin_port)));
    settings.set("views.default_skin", "webconfig");
    cppcms::service service(settings);
    service.applications_pool().mount(cppcms::applications_factory<Site>(view, &content),
                                      cppcms::mount_point("(.*)", 1));
    std::thread runs([&service] { service.run(); });
    int const client = Connected(address);
    std::string const request = "GET /config/settings/firmware HTTP/1.0\r\n\r\n";
    EXPECT_EQ(::send(client, request.data(), request.size(), MSG_NOSIGNAL), request.size());
    std::string answer;
    char part[4096];
    for (ssize_t count; (count = ::recv(client, part, sizeof part, 0)) > 0;)
        answer.append(part, static_cast<std::size_t>(count));
    ::close(client);
    service.shutdown();
    runs.join();
    return answer;
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

TEST(MessageTest, ACssClassMakesAnyMessageCustomAndClearKeepsTheClass) {
    Message message = Message::OK("done", true);
    message.SetCssClass("note");
    EXPECT_EQ(message.GetResultClass(), Message::ResultClass::Custom);
    EXPECT_EQ(message.GetCssClass(), "note");

    Message failure = Message::Error("broken");
    failure.Clear();
    EXPECT_TRUE(failure.IsEmpty());
    EXPECT_EQ(failure.GetResultClass(), Message::ResultClass::Error);
}

TEST(MenuTest, ChildrenAreDeepCopies) {
    Menu top("Top");
    Menu child("Port  Forwarding", "/network/port_forwarding");
    child << Menu("Grandchild");
    top << child << Menu("Second");
    child.SetText("Changed");
    child.GetChildren().clear();

    ASSERT_EQ(top.GetChildren().size(), 2U);
    EXPECT_EQ(top.GetChildren()[0].GetText(), "Port  Forwarding");
    EXPECT_EQ(top.GetChildren()[0].Id(), "Port__Forwarding");
    EXPECT_EQ(top.GetChildren()[0].GetChildren().size(), 1U);

    top << top;
    EXPECT_EQ(top.GetChildren().size(), 2U);
}

TEST(NoticeTest, NamesAreOrderedWithoutRegardToCase) {
    std::set<data::OSSFile> const files{{"C", ""}, {"b", ""}, {"A", ""}};
    std::string names;
    for (auto const &file : files)
        names += file.name;
    EXPECT_EQ(names, "AbC");
}

TEST(ValidationTest, AddClassExtendsAClassAttributeAndDropsOthers) {
    struct {
        char const *before;
        char const *cssClass;
        char const *after;
    } const cases[] = {
        {"", "a", "class='a'"},
        {"class='a'", "b", "class='a b'"},
        {"id='x' class=\"a\" ", "b", "id='x' class=\"a b\" "},
        {"size='5'", "cppcms_error_msg", "class='cppcms_error_msg'"},
        {"class='a' title='t'", "b", "class='a' title='t b'"},  // up to the last quote
        {"size='5'", "", "size='5'"},
    };
    for (auto const &c : cases) {
        cppcms::widgets::text widget;
        widget.attributes_string(c.before);
        util::validation::AddClass(widget, c.cssClass);
        EXPECT_EQ(widget.attributes_string(), c.after);
    }
}

TEST(ValidationTest, TheLaterRuleReplacesTheMessage) {
    cppcms::widgets::text text;
    util::validation::NonEmpty(text);
    EXPECT_EQ(text.error_message().str(), "This field is required");
    util::validation::Length(text, 1, 64);
    EXPECT_EQ(text.error_message().str(), "Invalid length; minimum 1, maximum 64");
    util::validation::MinLength(text, 8);
    EXPECT_EQ(text.error_message().str(), "Invalid length; minimum 8");
    cppcms::widgets::file file;
    util::validation::Length(file, 1, 1000000);
    EXPECT_EQ(file.error_message().str(), "Invalid file length; minimum 1, maximum 1000000 bytes.");
}

TEST(ValidationTest, EveryInvalidWidgetIsMarkedInOnePass) {
    struct Form : public forms::Base {
        struct Part : public cppcms::form {
            widgets::IpAddress inner;
            Part() { add(inner); }
        } part;
        widgets::IpAddress first, second;
        Form() {
            add(part);
            add(first);
            add(second);
            part.inner.value("x");
            first.value("10.0.0.1");
            second.value("256.1.1.1");
        }
    } form;
    EXPECT_FALSE(form.validate());
    EXPECT_EQ(form.part.inner.attributes_string(), "class='cppcms_error_msg'");
    EXPECT_EQ(form.first.attributes_string(), "");
    EXPECT_EQ(form.second.attributes_string(), "class='cppcms_error_msg'");
}

TEST(IpAddressTest, TakesDottedNotationOnly) {
    std::pair<char const *, bool> const cases[] = {
        {"10.0.0.1", true},   {"255.255.255.255", true}, {"0.0.0.0", true},    {"01.2.3.4", true},
        {"256.1.1.1", false}, {"1.2.3", false},          {"001.2.3.4", false}, {"1.2.3.4.5", false},
        {" 1.2.3.4", false},  {"1.2.3.4\n", false},      {"", false},
    };
    for (auto const &[text, valid] : cases) {
        widgets::IpAddress address;
        address.value(text);
        EXPECT_EQ(address.validate(), valid) << text;
    }
    widgets::IpAddress optional;
    optional.SetAllowEmpty(true);
    optional.value("");
    EXPECT_TRUE(optional.validate());
    EXPECT_TRUE(optional.GetAllowEmpty());
}

TEST(SelectTest, AStoredValueThatIsNotOfferedSelectsNothing) {
    cppcms::widgets::select select;
    select.add("One", "1");
    select.add("Two", "2");
    forms::SelectByValue(select, "2");
    EXPECT_EQ(select.selected(), 1);
    forms::SelectByValue(select, "3");
    EXPECT_EQ(select.selected(), -1);
}

}  // namespace webconfig
