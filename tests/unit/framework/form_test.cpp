#include <booster/regex.h>
#include <cppcms/form.h>
#include <cppcms/http_file.h>
#include <cppcms/json.h>
#include <cppcms/service.h>
#include <gtest/gtest.h>

#include <functional>
#include <sstream>

#include "tests/unit/framework/fake_request.h"

namespace widgets = cppcms::widgets;
using cppcms::form_context;

namespace {

/// The control of a widget, with '@' where the attributes string goes.
std::string Control(widgets::base_widget &widget, form_context::html_type html = form_context::as_html) {
    std::ostringstream out;
    form_context context(out, html);
    context.widget_part(form_context::first_part);
    widget.render_input(context);
    out << '@';
    context.widget_part(form_context::second_part);
    widget.render_input(context);
    return out.str();
}

std::string Whole(cppcms::base_form &element, form_context::html_list_type list) {
    std::ostringstream out;
    form_context context(out, form_context::as_html, list);
    element.render(context);
    return out.str();
}

/// A widget named n with the id i, after \a prepare.
template <typename Widget>
std::string Written(std::function<void(Widget &)> prepare,
                    form_context::html_type html = form_context::as_html) {
    Widget widget;
    widget.name("n");
    widget.id("i");
    prepare(widget);
    return Control(widget, html);
}

TEST(FormWriting, TextLikeInputs) {
    using widgets::text;
    struct {
        std::function<void(text &)> prepare;
        char const *html;
    } const cases[] = {
        {[](text &) {}, R"(<input type="text" id="i" name="n" @ >)"},
        {[](text &t) { t.value("a<b>\"'&"); },
         R"(<input type="text" id="i" name="n"  value="a&lt;b&gt;&quot;&#39;&amp;"@ >)"},
        {[](text &t) {
             t.value("v");
             t.size(5);
             t.limits(1, 10);
         },
         R"(<input type="text" id="i" name="n" size="5" maxlength="10"  value="v"@ >)"},
        {[](text &t) {
             t.value("v");
             t.size(5);
             t.disabled(true);
             t.readonly(true);
         },
         R"(<input type="text" id="i" name="n" disabled size="5" readonly="readonly"  value="v"@ >)"},
        {[](text &t) {
             t.limits(0, 9);
             t.validate_charset(false);
             t.id("");
         },
         R"(<input type="text" name="n" @ >)"},
    };
    for (auto const &c : cases)
        EXPECT_EQ(Written<text>(c.prepare), c.html);
    EXPECT_EQ(Written<text>([](text &t) { t.disabled(true); }, form_context::as_xhtml),
              R"(<input type="text" id="i" name="n" disabled="disabled" @ />)");
    EXPECT_EQ(Written<widgets::password>([](auto &p) { p.value("x"); }),
              R"(<input type="password" id="i" name="n"  value="x"@ >)");
    EXPECT_EQ(Written<widgets::hidden>([](auto &h) { h.value("x"); }),
              R"(<input type="hidden" id="i" name="n"  value="x"@ >)");
    EXPECT_EQ(Written<widgets::file>([](auto &f) { f.limits(1, 2); }),
              R"(<input type="file" id="i" name="n" @ >)");
    EXPECT_EQ(Written<widgets::submit>([](auto &s) { s.value("Sa<ve"); }),
              R"(<input type="submit" id="i" name="n" value="Sa&lt;ve" @ >)");
    EXPECT_EQ(Written<widgets::submit>([](auto &) {}),
              R"(<input type="submit" id="i" name="n" value="" @ >)");
}

TEST(FormWriting, NumbersAndCheckBoxes) {
    using cppcms::form_flags;
    EXPECT_EQ(Written<widgets::numeric<int>>([](auto &n) { n.range(1, 2); }),
              R"(<input type="text" id="i" name="n" value="" @ >)");
    EXPECT_EQ(Written<widgets::numeric<int>>([](auto &n) {
                  n.value(5432);
                  n.disabled(true);
                  n.readonly(true);
              }),
              R"(<input type="text" id="i" name="n" disabled value="5432" @ >)");
    EXPECT_EQ(Written<widgets::checkbox>([](auto &) {}),
              R"(<input type="checkbox" id="i" name="n" value="y" @ >)");
    auto const check = [](widgets::checkbox &c) {
        c.value(true);
        c.identification("yes");
    };
    EXPECT_EQ(Written<widgets::checkbox>(check),
              R"(<input type="checkbox" id="i" name="n"  checked value="yes" @ >)");
    EXPECT_EQ(Written<widgets::checkbox>(check, form_flags::as_xhtml),
              R"(<input type="checkbox" id="i" name="n"  checked="checked" value="yes" @ />)");
}

TEST(FormWriting, Selections) {
    using cppcms::form_flags;
    auto const fill = [](widgets::select &s) {
        s.add("A & B", "a");
        s.add(cppcms::locale::translate("B"), "b<");
        s.add("C");
        s.selected(1);
    };
    EXPECT_EQ(Written<widgets::select>([](auto &) {}), "<select id=\"i\" name=\"n\" @ >\n</select>");
    EXPECT_EQ(Written<widgets::select>(fill),
              "<select id=\"i\" name=\"n\" @ >\n<option value=\"a\" >A &amp; B</option>\n"
              "<option value=\"b&lt;\" selected >B</option>\n<option value=\"2\" >C</option>\n</select>");

    auto const fill_multiple = [](widgets::select_multiple &s) {
        s.id("");
        s.rows(3);
        s.add("A", std::string("a"), true);
        s.add("B");
    };
    EXPECT_EQ(Written<widgets::select_multiple>(fill_multiple),
              "<select multiple  size=\"3\" name=\"n\" @ >\n<option value=\"a\" selected >A</option>\n"
              "<option value=\"1\" >B</option>\n</select>");
    EXPECT_EQ(
        Written<widgets::select_multiple>(fill_multiple, form_flags::as_xhtml),
        "<select multiple=\"multiple\"  size=\"3\" name=\"n\" @ >\n"
        "<option value=\"a\" selected=\"selected\" >A</option>\n<option value=\"1\" >B</option>\n</select>");

    auto const fill_radio = [](widgets::radio &r) {
        r.add("A", "a");
        r.add("B", "b");
        r.selected_id("a");
    };
    EXPECT_EQ(Written<widgets::radio>(fill_radio),
              "<div class=\"cppcms_radio\" id=\"i\" @ >\n"
              "<input type=\"radio\" value=\"a\" name=\"n\" checked > A<br>\n"
              "<input type=\"radio\" value=\"b\" name=\"n\" > B<br>\n</div>");
    EXPECT_EQ(Written<widgets::radio>([&](widgets::radio &r) {
                  fill_radio(r);
                  r.vertical(false);
                  r.disabled(true);
              }),
              "<div class=\"cppcms_radio\" id=\"i\" @ >\n"
              "<input type=\"radio\" value=\"a\" name=\"n\" checked disabled > A\n"
              "<input type=\"radio\" value=\"b\" name=\"n\" disabled > B\n</div>");
}

TEST(FormWriting, TextAreas) {
    auto const size = [](widgets::textarea &t) {
        t.rows(3);
        t.cols(4);
        t.limits(0, 5);
    };
    EXPECT_EQ(Written<widgets::textarea>(size),
              R"(<textarea id="i" name="n" rows="3" cols="4" @></textarea>)");
    EXPECT_EQ(Written<widgets::textarea>([&](widgets::textarea &t) {
                  size(t);
                  t.value("<a>\n");
              }),
              "<textarea id=\"i\" name=\"n\" rows=\"3\" cols=\"4\" @>&lt;a&gt;\n</textarea>");
}

TEST(FormWriting, WholeWidgetsInEachListType) {
    std::string const label = R"(<label for="i">M&lt;s&gt;g</label>)";
    std::string const field =
        R"(<span class="cppcms_form_input"><input type="text" id="i" name="n"  value="v"class='x' ></span>)"
        R"(<span class="cppcms_form_help">H&lt;</span>)";
    std::string const error = R"(<span class="cppcms_form_error">E&lt;r</span> )";
    struct {
        form_context::html_list_type list;
        std::string valid;
        std::string invalid;
    } const cases[] = {
        {form_context::as_p, "<p>" + label + "&nbsp;" + field + "</p>\n",
         "<p>" + label + "&nbsp;" + error + field + "</p>\n"},
        {form_context::as_table, "<tr><th>" + label + "</th><td>&nbsp;" + field + "</td></tr>\n",
         "<tr><th>" + label + "</th><td>" + error + field + "</td></tr>\n"},
        {form_context::as_ul, "<li>" + label + "&nbsp;" + field + "</li>\n",
         "<li>" + label + "&nbsp;" + error + field + "</li>\n"},
        {form_context::as_dl, "<dt>" + label + "</dt><dd>" + field + "</dd>\n",
         "<dt>" + label + "</dt><dd>" + error + field + "</dd>\n"},
        {form_context::as_space, label + "&nbsp;" + field + "\n", label + "&nbsp;" + error + field + "\n"},
    };
    for (auto const &c : cases) {
        widgets::text text;
        text.name("n");
        text.id("i");
        text.message("M<s>g");
        text.help("H<");
        text.error_message("E<r");
        text.value("v");
        text.attributes_string("class='x'");
        EXPECT_EQ(Whole(text, c.list), c.valid);
        text.valid(false);
        EXPECT_EQ(Whole(text, c.list), c.invalid);
    }
}

TEST(FormWriting, PartsOfAWidgetThatAreNotThere) {
    std::string const field = R"(<span class="cppcms_form_input"><input type="file" name="n"  ></span>)";
    widgets::file file;
    file.name("n");
    EXPECT_EQ(Whole(file, form_context::as_table), "<tr><th>&nbsp;</th><td>&nbsp;" + field + "</td></tr>\n");
    EXPECT_EQ(Whole(file, form_context::as_dl), "<dt></dt><dd>" + field + "</dd>\n");
    file.message("Msg");
    EXPECT_EQ(Whole(file, form_context::as_p), "<p>Msg&nbsp;" + field + "</p>\n");
    file.valid(false);
    EXPECT_EQ(Whole(file, form_context::as_p),
              "<p>Msg&nbsp;<span class=\"cppcms_form_error\">*</span> " + field + "</p>\n");

    widgets::hidden hidden;
    hidden.name("h");
    hidden.value("x");
    hidden.message("not shown");
    hidden.attributes_string("a='b'");
    EXPECT_EQ(Whole(hidden, form_context::as_p), R"(<input type="hidden" name="h"  value="x"a='b' >)");

    EXPECT_THROW(form_context().out(), cppcms::cppcms_error);
}

TEST(FormWriting, NamesAreNumberedThroughTheOutermostForm) {
    cppcms::form outer, inner, empty;
    widgets::text first, named, last, alone;
    auto *const owned = new widgets::submit;
    named.name("named");
    outer.add(first);
    outer.add(inner);
    outer.add(empty);
    inner.add(named);
    inner.attach(owned);
    outer.add(last);

    EXPECT_EQ(last.name(), "");
    Control(last);
    EXPECT_EQ(first.name(), "_1");
    EXPECT_EQ(named.name(), "named");
    EXPECT_EQ(owned->name(), "_3");
    EXPECT_EQ(last.name(), "_4");
    EXPECT_EQ(Control(alone), R"(<input type="text" name="_1" @ >)");
    last.name("other");
    EXPECT_EQ(Control(last), R"(<input type="text" name="other" @ >)");

    std::string walked;
    for (auto &widget : outer)
        walked += widget.name() + ' ';
    EXPECT_EQ(walked, "_1 named _3 other ");
    EXPECT_EQ(empty.begin(), empty.end());
    EXPECT_EQ(inner.parent(), &outer);
}

/// Loads widgets and forms from requests.
class FormLoading : public testing::Test {
  protected:
    static cppcms::json::value Settings(std::string const &locale) {
        cppcms::json::value settings;
        settings.set("logging.stderr", false);
        settings.set("localization.locales", std::vector<std::string>{locale});
        return settings;
    }

    void Load(cppcms::base_form &element, std::string const &fields) {
        FakeRequest request(service, {.body = fields});
        element.load(request.context());
    }

    /// Loads n from the value as a client would send it; returns whether it is valid then.
    template <typename Widget>
    bool Accepts(Widget &widget, std::string const &value) {
        widget.name("n");
        Load(widget, "n=" + cppcms::util::urlencode(value));
        return widget.validate();
    }

    cppcms::service service{Settings("en_US.UTF-8")};
};

TEST_F(FormLoading, TextIsSetEvenWhenItsFieldIsMissing) {
    widgets::text text;
    text.name("n");
    Load(text, "other=1");
    EXPECT_TRUE(text.set());
    EXPECT_EQ(text.value(), "");
    EXPECT_TRUE(text.validate());
    text.non_empty();
    EXPECT_FALSE(text.validate());
    EXPECT_FALSE(text.valid());
    text.limits(0, 5);  // the last call counts; the text stays invalid until the next load
    EXPECT_FALSE(text.validate());
    Load(text, "n=first&n=second");
    EXPECT_EQ(text.value(), "first");
    EXPECT_TRUE(text.validate());
    text.valid(false);
    text.clear();
    EXPECT_FALSE(text.set() || text.valid());
}

TEST_F(FormLoading, TextLengthIsCountedInCodePoints) {
    widgets::text text;
    text.limits(1, 3);
    EXPECT_TRUE(Accepts(text, "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"));
    EXPECT_FALSE(Accepts(text, "1234"));
    EXPECT_FALSE(Accepts(text, ""));
    text.validate_charset(false);
    EXPECT_FALSE(Accepts(text, "\xC3\xA9\xC3\xA9"));
    EXPECT_TRUE(Accepts(text, "\xFF\x01"));
}

TEST_F(FormLoading, TextMustBeWellFormedWithoutControlCharacters) {
    struct {
        std::string text;
        bool valid;
    } const cases[] = {
        {"\t\r\n", true}, {"\xC2\xA0", true},  {"\x01", false},         {std::string(1, 0), false},
        {"\x7F", false},  {"\xC2\x80", false}, {"\xC2\x9F", false},     {"\xFF", false},
        {"\xC3", false},  {"\xC0\xAF", false}, {"\xED\xA0\x80", false}, {"\xF4\x90\x80\x80", false},
    };
    widgets::textarea area;
    for (auto const &c : cases)
        EXPECT_EQ(Accepts(area, c.text), c.valid) << cppcms::util::urlencode(c.text);
}

TEST_F(FormLoading, OtherEncodingsHaveTheirOwnRules) {
    cppcms::service ascii{Settings("C")};
    cppcms::service latin{Settings("en_US.ISO8859-1")};
    struct {
        char const *fields;
        bool valid_ascii;
        bool valid_latin;
    } const cases[] = {{"n=abc%09", true, true},
                       {"n=%e9%e9", false, true},
                       {"n=%7f", false, false},
                       {"n=%85", false, false}};
    for (auto const &c : cases) {
        widgets::text text;
        text.name("n");
        text.limits(0, 4);
        text.load(FakeRequest(ascii, {.body = c.fields}).context());
        EXPECT_EQ(text.validate(), c.valid_ascii) << c.fields;
        text.load(FakeRequest(latin, {.body = c.fields}).context());
        EXPECT_EQ(text.validate(), c.valid_latin) << c.fields;
    }
}

TEST_F(FormLoading, ExpressionsMatchTheWholeText) {
    widgets::regex_field field(std::string("a|ab"));
    EXPECT_TRUE(Accepts(field, "ab"));
    EXPECT_FALSE(Accepts(field, "abc"));
    EXPECT_FALSE(Accepts(field, "a\n"));
    field.clear();
    field.valid(true);
    EXPECT_FALSE(field.validate());

    widgets::email email;
    EXPECT_TRUE(Accepts(email, "a@b"));
    EXPECT_FALSE(Accepts(email, "a@b@c"));
}

TEST_F(FormLoading, PasswordsAreComparedAndEmptied) {
    struct {
        char const *fields;
        bool valid;
    } const cases[] = {
        {"a=secret&b=secret", true}, {"a=secret&b=other", false}, {"a=s&b=s", false}, {"b=secret", false}};
    for (auto const &c : cases) {
        widgets::password first, second;
        first.name("a");
        second.name("b");
        second.limits(2, -1);
        second.check_equal(first);
        Load(first, c.fields);
        Load(second, c.fields);
        EXPECT_EQ(second.validate(), c.valid) << c.fields;
        EXPECT_EQ(second.value(), c.valid ? "secret" : "") << c.fields;
    }
}

TEST_F(FormLoading, Numbers) {
    struct {
        char const *text;
        bool set;
        bool valid;
        unsigned value;
    } const cases[] = {
        {"", false, true, 0},
        {"17", true, true, 17},
        {"+3", true, true, 3},
        {" 4", true, true, 4},
        {"4 ", false, false, 0},
        {"-5", true, true, 4294967291},
        {"1.5x", false, false, 0},
        {"x", false, false, 0},
        {"4294967296", false, false, 0},
        {"4294967295", true, true, 4294967295},
    };
    for (auto const &c : cases) {
        widgets::numeric<unsigned> number;
        EXPECT_EQ(Accepts(number, c.text), c.valid) << c.text;
        EXPECT_EQ(number.set(), c.set) << c.text;
        if (number.set()) {
            EXPECT_EQ(number.value(), c.value);
        }
    }
    widgets::numeric<int> limited;
    limited.range(-1, 5);
    EXPECT_TRUE(Accepts(limited, "-1"));
    EXPECT_TRUE(Accepts(limited, "5"));
    EXPECT_FALSE(Accepts(limited, "6"));
    EXPECT_FALSE(Accepts(limited, "-2"));
    EXPECT_FALSE(Accepts(limited, ""));
    EXPECT_FALSE(Accepts(limited, "<1"));
    EXPECT_EQ(Control(limited), R"(<input type="text" name="n" value="&lt;1" @ >)");
    limited.clear();
    EXPECT_EQ(Control(limited), R"(<input type="text" name="n" value="" @ >)");
    widgets::numeric<double> real;
    EXPECT_TRUE(Accepts(real, "1e3"));
    EXPECT_EQ(real.value(), 1000);
}

TEST_F(FormLoading, ChecksAndButtons) {
    widgets::checkbox box;
    box.name("n");
    EXPECT_TRUE(box.set());
    Load(box, "n=x&n=y");
    EXPECT_TRUE(box.value());
    box.clear();
    EXPECT_TRUE(box.value() && !box.set());
    Load(box, "n=on");
    EXPECT_FALSE(box.value());

    widgets::submit button;
    button.name("n");
    Load(button, "n=");
    EXPECT_TRUE(button.value());
    Load(button, "m=");
    EXPECT_FALSE(button.value());
}

TEST_F(FormLoading, SelectionsTakeExactlyOneKnownId) {
    struct {
        char const *fields;
        int selected;
    } const cases[] = {{"n=b", 1}, {"n=", 2}, {"n=c", -1}, {"", -1}, {"n=a&n=b", -1}, {"n=a&n=a", -1}};
    for (auto const &c : cases) {
        widgets::radio choice;
        choice.name("n");
        choice.add("A", "a");
        choice.add("B", "b");
        choice.add("empty", "");
        choice.selected(0);
        choice.non_empty();
        Load(choice, c.fields);
        EXPECT_EQ(choice.selected(), c.selected) << c.fields;
        EXPECT_EQ(choice.validate(), c.selected >= 0) << c.fields;
        choice.clear();
        EXPECT_EQ(choice.selected(), 0);
        EXPECT_TRUE(choice.validate() && choice.set());
    }

    widgets::select_multiple multiple;
    multiple.name("n");
    multiple.add("A", std::string("a"));
    multiple.add("B", std::string("b"), true);
    multiple.add("C", std::string("c"));
    multiple.at_most(2);
    Load(multiple, "n=a&n=c&n=x");
    EXPECT_EQ(multiple.selected_ids(), (std::set<std::string>{"a", "c"}));
    EXPECT_TRUE(multiple.validate());
    Load(multiple, "n=a&n=b&n=c");
    EXPECT_FALSE(multiple.validate());
    multiple.clear();
    EXPECT_EQ(multiple.selected_ids(), std::set<std::string>{"b"});
}

TEST_F(FormLoading, AGetTakesTheQuery) {
    widgets::text text;
    text.name("n");
    text.load(FakeRequest(service, {.method = "GET", .query = "n=query", .body = "n=body"}).context());
    EXPECT_EQ(text.value(), "query");
}

TEST_F(FormLoading, Files) {
    auto const upload = [&](widgets::file &file, std::string const &filename, std::string const &content) {
        FakeRequest request(
            service, {.content_type = "multipart/form-data; boundary=B",
                      .body = "--B\r\nContent-Disposition: form-data; name=\"n\"; filename=\"" + filename +
                              "\"\r\nContent-Type: image/png\r\n\r\n" + content + "\r\n--B--\r\n"});
        file.name("n");
        file.load(request.context());
        return file.validate();
    };
    widgets::file file;
    file.non_empty();
    EXPECT_TRUE(upload(file, "", ""));  // what a browser sends where no file was chosen
    EXPECT_EQ(file.value()->size(), 0);
    file.limits(1, 4);
    EXPECT_FALSE(upload(file, "", ""));
    EXPECT_FALSE(upload(file, "a.png", "12345"));
    EXPECT_TRUE(upload(file, "a.png", "1234"));
    EXPECT_FALSE(upload(file, "\xFF.png", "1"));
    EXPECT_TRUE(file.set());

    file.filename(booster::regex(".*\\.png"));
    EXPECT_FALSE(upload(file, "a.png.exe", "1"));
    file.mime("image/gif");
    EXPECT_FALSE(upload(file, "a.png", "1"));
    file.mime(booster::regex("image/.*"));
    EXPECT_TRUE(upload(file, "a.png", "1"));
    file.add_valid_magic("12");
    file.add_valid_magic("abc");
    EXPECT_FALSE(upload(file, "a.png", "1"));
    EXPECT_FALSE(upload(file, "a.png", "abd"));
    EXPECT_TRUE(upload(file, "a.png", "abcd"));
    std::string content;
    EXPECT_TRUE(file.value()->data() >> content);
    EXPECT_EQ(content, "abcd");

    Load(file, "n=text");
    EXPECT_FALSE(file.set());
    EXPECT_FALSE(file.validate());
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
    Load(whole, "_1=&_2=x&_3=");
    EXPECT_EQ(second.value(), "x");
    EXPECT_FALSE(whole.validate());
    EXPECT_FALSE(first.valid() || third.valid());
    EXPECT_TRUE(second.valid());
    whole.clear();
    EXPECT_FALSE(first.set() || second.set() || third.set());
    Load(whole, "_1=1&_3=3");
    EXPECT_TRUE(whole.validate());
}

TEST(FormValues, SelectionsCheckWhatIsSelected) {
    widgets::select select;
    select.add("none", "");
    select.add("A", "a");
    EXPECT_EQ(select.selected(), -1);
    EXPECT_EQ(select.selected_id(), "");
    select.selected_id("a");
    EXPECT_EQ(select.selected(), 1);
    select.selected_id("");  // no selection, although there is an element with this id
    EXPECT_EQ(select.selected(), -1);
    select.non_empty();
    EXPECT_FALSE(select.validate());
    select.selected(0);
    EXPECT_TRUE(select.validate());
    EXPECT_THROW(select.selected(2), cppcms::cppcms_error);
    EXPECT_THROW(select.selected_id("b"), cppcms::cppcms_error);

    widgets::select_multiple multiple;
    multiple.add("A", "a");  // two literals: a selected element with the id "0"
    multiple.add("B", std::string("b"));
    EXPECT_EQ(multiple.selected_ids(), std::set<std::string>{"0"});
    EXPECT_EQ(multiple.selected_map(), (std::vector<bool>{true, false}));
    multiple.at_least(2);
    EXPECT_FALSE(multiple.validate());
}

TEST(FormValues, AreThereOnlyWhenSet) {
    widgets::text text;
    widgets::numeric<int> number;
    widgets::file file;
    EXPECT_THROW(text.value(), cppcms::cppcms_error);
    EXPECT_THROW(number.value(), cppcms::cppcms_error);
    EXPECT_THROW(file.value(), cppcms::cppcms_error);
    text.value("");
    number.value(3);
    EXPECT_EQ(text.value(), "");
    EXPECT_EQ(number.value(), 3);
    text.clear();
    number.clear();
    EXPECT_FALSE(text.set() || number.set());

    EXPECT_FALSE(text.has_message());
    text.message("");
    EXPECT_TRUE(text.has_message());

    widgets::regex_field without_expression;
    without_expression.value("x");
    EXPECT_THROW(without_expression.validate(), booster::regex_error);
}

}  // namespace
