#include <cppcms/form.h>
#include <gtest/gtest.h>

#include "WebApps/webconfig/data/About.h"
#include "WebApps/webconfig/data/Menu.h"
#include "WebApps/webconfig/data/Message.h"
#include "WebApps/webconfig/forms/Base.h"
#include "WebApps/webconfig/forms/Select.h"
#include "WebApps/webconfig/forms/Validation.h"
#include "WebApps/webconfig/widgets/IpAddress.h"

namespace webconfig {

using data::Menu;
using data::Message;

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
