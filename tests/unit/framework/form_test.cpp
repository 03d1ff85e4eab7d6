#include <booster/regex.h>
#include <cppcms/form.h>
#include <cppcms/http_file.h>
#include <cppcms/json.h>
#include <cppcms/service.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>
#include <sstream>

#include "tests/unit/framework/fake_request.h"

namespace widgets = cppcms::widgets;
using cppcms::form_context;

namespace {

/// The control of a widget, with '@' where the attributes string goes.
std::string Control(widgets::base_widget &widget, form_context::html_type html = form_context::as_html) {
    std::ostringstream out;
    form_context context(out, html);
    widget.render_input(context);
    out << '@';
    context.widget_part(form_context::second_part);
    widget.render_input(context);
    return out.str() + '\n';
}

TEST(FormWriting, Controls) {
    cppcms::form form, part;
    widgets::text plain, full;
    widgets::password password;
    widgets::file file;
    widgets::numeric<int> noNumber, number;
    widgets::checkbox off, on;
    widgets::textarea area;
    widgets::select select;
    widgets::select_multiple multiple;
    widgets::radio vertical, horizontal;
    form.add(plain);
    form.add(part);
    for (auto *widget : std::initializer_list<widgets::base_widget *>{
             &full, &password, &file, &noNumber, &number, &off, &on, &area, &select, &multiple})
        part.add(*widget);
    form.add(vertical);
    form.add(horizontal);
    auto *const submit = new widgets::submit;
    form.attach(submit);

    full.name("full");
    full.id("i");
    full.value("a<b>\"'&");
    full.size(5);
    full.limits(1, 10);
    full.disabled(true);
    full.readonly(true);
    password.value("x");
    number.value(5432);
    on.value(true);
    on.identification("yes");
    area.rows(3);
    area.cols(4);
    area.value("<a>");
    select.add("A & B", "a");
    select.add(cppcms::locale::translate("B"), "b<");
    select.add("C");
    select.selected(1);
    multiple.rows(3);
    multiple.add("A", std::string("a"), true);
    multiple.add("B");
    for (auto *radio : {&vertical, &horizontal}) {
        radio->id("r");
        radio->add("A", "a");
        radio->add("B", "b");
        radio->selected_id("a");
    }
    horizontal.vertical(false);
    horizontal.disabled(true);
    submit->value("Sa<ve");

    std::string controls;
    for (auto &widget : form)
        controls += Control(widget);
    EXPECT_EQ(controls, R"(<input type="text" name="_1" @ >
<input type="text" id="i" name="full" disabled size="5" maxlength="10" readonly="readonly"  value="a&lt;b&gt;&quot;&#39;&amp;"@ >
<input type="password" name="_3"  value="x"@ >
<input type="file" name="_4" @ >
<input type="text" name="_5" value="" @ >
<input type="text" name="_6" value="5432" @ >
<input type="checkbox" name="_7" value="y" @ >
<input type="checkbox" name="_8"  checked value="yes" @ >
<textarea name="_9" rows="3" cols="4" @>&lt;a&gt;</textarea>
<select name="_10" @ >
<option value="a" >A &amp; B</option>
<option value="b&lt;" selected >B</option>
<option value="2" >C</option>
</select>
<select multiple  size="3" name="_11" @ >
<option value="a" selected >A</option>
<option value="1" >B</option>
</select>
<div class="cppcms_radio" id="r" @ >
<input type="radio" value="a" name="_12" checked > A<br>
<input type="radio" value="b" name="_12" > B<br>
</div>
<div class="cppcms_radio" id="r" @ >
<input type="radio" value="a" name="_13" checked disabled > A
<input type="radio" value="b" name="_13" disabled > B
</div>
<input type="submit" name="_14" value="Sa&lt;ve" @ >
)");
    EXPECT_EQ(Control(on, form_context::as_xhtml),
              "<input type=\"checkbox\" name=\"_8\"  checked=\"checked\" value=\"yes\" @ />\n");
}

/// Loads widgets and forms from requests.
class FormLoading : public testing::Test {
  protected:
    void Load(cppcms::base_form &element, std::string const &fields) {
        element.load(FakeRequest(service, {.body = fields}).context());
    }

    /// Loads n from the value as a client would send it; returns whether it is valid then.
    bool Accepts(widgets::base_widget &widget, std::string const &value) {
        widget.name("n");
        Load(widget, "n=" + cppcms::util::urlencode(value));
        return widget.validate();
    }

    cppcms::service service{QuietSettings("en_US.UTF-8")};
};

TEST_F(FormLoading, AMissingFieldIsAnEmptyTextAndOfSeveralTheFirstCounts) {
    widgets::text text;
    text.name("n");
    text.value("old");
    Load(text, "other=1");
    EXPECT_EQ(text.value(), "");
    EXPECT_TRUE(text.validate());
    text.non_empty();
    EXPECT_FALSE(text.validate());
    Load(text, "n=first&n=second");
    EXPECT_EQ(text.value(), "first");
    EXPECT_TRUE(text.validate());
}

TEST_F(FormLoading, TextsAreCountedAndCheckedInTheEncodingOfTheRequest) {
    widgets::text text;
    text.limits(1, 3);
    EXPECT_TRUE(Accepts(text, "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"));
    EXPECT_FALSE(Accepts(text, "1234") || Accepts(text, ""));
    text.validate_charset(false);
    EXPECT_FALSE(Accepts(text, "\xC3\xA9\xC3\xA9"));
    EXPECT_TRUE(Accepts(text, "\xFF\x01"));

    cppcms::service ascii{QuietSettings("C")};
    cppcms::service latin{QuietSettings("en_US.ISO8859-1")};
    std::pair<char const *, char const *> const cases[] = {
        {"n=%09%0d%0a~", "UAL"}, {"n=%01", ""},     {"n=%7f", ""},       {"n=%c2%a0", "UL"},
        {"n=%c2%80", ""},        {"n=%c2%9f", ""},  {"n=%e9%e9", "L"},   {"n=%85", ""},
        {"n=%c3", "L"},          {"n=%c0%af", "L"}, {"n=%ed%a0%80", ""}, {"n=%f4%90%80%80", ""},
        {"n=%00", ""},           {"n=%e9%e9", "L"}, {"n=%e2%82", ""},    {"n=%ff", "L"}};
    for (auto const &[fields, valid_in] : cases) {
        std::string valid;
        for (auto const &[name, provider] : {std::pair('U', &service), {'A', &ascii}, {'L', &latin}}) {
            widgets::textarea area;
            area.name("n");
            area.load(FakeRequest(*provider, {.body = fields}).context());
            if (area.validate())
                valid += name;
        }
        EXPECT_EQ(valid, valid_in) << fields;
    }
}

TEST_F(FormLoading, Numbers) {
    std::tuple<char const *, bool, std::optional<unsigned>> const cases[] = {
        {"", true, {}},      {"17", true, 17},         {" +3", true, 3},
        {"4 ", false, {}},   {"-5", true, 4294967291}, {"4294967295", true, 4294967295},
        {"1.5x", false, {}}, {"4294967296", false, {}}};
    for (auto const &[text, valid, value] : cases) {
        widgets::numeric<unsigned> number;
        EXPECT_EQ(Accepts(number, text), valid) << text;
        EXPECT_EQ(number.set() ? std::optional(number.value()) : std::nullopt, value) << text;
    }
    widgets::numeric<double> limited;
    limited.range(-1, 5);
    EXPECT_TRUE(Accepts(limited, "-1") && Accepts(limited, "5e0"));
    EXPECT_FALSE(Accepts(limited, "6") || Accepts(limited, "-2") || Accepts(limited, ""));
}

TEST_F(FormLoading, SelectionsTakeExactlyOneKnownId) {
    widgets::radio choice;
    choice.name("n");
    choice.add("A", "a");
    choice.add("B", "b");
    choice.add("empty", "");
    choice.selected(0);
    choice.non_empty();
    std::pair<char const *, int> const cases[] = {{"n=b", 1}, {"n=", 2},       {"n=c", -1},
                                                  {"", -1},   {"n=a&n=b", -1}, {"n=a&n=a", -1}};
    for (auto const &[fields, selected] : cases) {
        Load(choice, fields);
        EXPECT_EQ(choice.selected(), selected) << fields;
        EXPECT_EQ(choice.validate(), selected >= 0) << fields;
        choice.clear();
        EXPECT_EQ(choice.selected(), 0);
        EXPECT_TRUE(choice.validate() && choice.set());
    }
}

TEST_F(FormLoading, Files) {
    widgets::file file;
    file.name("n");
    auto const upload = [&](std::string const &filename, std::string const &content) {
        FakeRequest request(
            service, {.content_type = "multipart/form-data; boundary=B",
                      .body = "--B\r\nContent-Disposition: form-data; name=\"n\"; filename=\"" + filename +
                              "\"\r\nContent-Type: image/png\r\n\r\n" + content + "\r\n--B--\r\n"});
        file.load(request.context());
        return file.validate();
    };
    file.non_empty();
    EXPECT_TRUE(upload("", "")) << "what a browser sends where no file was chosen";
    EXPECT_EQ(file.value()->size(), 0);
    file.limits(1, 4);
    EXPECT_FALSE(upload("", "") || upload("a.png", "12345") || upload("\xFF.png", "1"));
    EXPECT_TRUE(upload("a.png", "1234"));
    file.filename(booster::regex(".*\\.png"));
    EXPECT_FALSE(upload("a.png.exe", "1"));
    file.mime("image/gif");
    EXPECT_FALSE(upload("a.png", "1"));
    file.mime(booster::regex("image/.*"));
    EXPECT_TRUE(upload("a.png", "1"));
    file.add_valid_magic("12");
    file.add_valid_magic("abc");
    EXPECT_FALSE(upload("a.png", "1") || upload("a.png", "abd"));
    EXPECT_TRUE(upload("a.png", "abcd"));
    std::string content;
    EXPECT_TRUE(file.value()->data() >> content);
    EXPECT_EQ(content, "abcd") << "read from its beginning";
    Load(file, "n=text");
    EXPECT_FALSE(file.set() || file.validate());
}

TEST_F(FormLoading, AFormValidatesAllItsElements) {
    cppcms::form whole, part;
    widgets::text first, second, third;
    whole.add(first);
    whole.add(part);
    part.add(second);
    whole.add(third);
    first.non_empty();
    third.non_empty();
    FakeRequest get(service, {.method = "GET", .query = "_1=&_2=x&_3=", .body = "_1=1&_2=body&_3=3"});
    whole.load(get.context());
    EXPECT_EQ(second.value(), "x");
    EXPECT_FALSE(whole.validate());
    EXPECT_FALSE(first.valid() || third.valid());
    EXPECT_TRUE(second.valid());
    Load(whole, "_1=1&_3=3");
    EXPECT_TRUE(whole.validate());
}

}  // namespace
