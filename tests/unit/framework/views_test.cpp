#include <cppcms/cppcms_error.h>
#include <cppcms/json.h>
#include <cppcms/localization.h>
#include <cppcms/views_pool.h>

#include <gtest/gtest.h>

#include <sstream>

#include "views_check.h"

namespace views = cppcms::views;

namespace {

struct Record : cppcms::base_content {
    std::string text = "text";
};
struct DerivedRecord : Record {};
struct OtherRecord : cppcms::base_content {};

struct Page : cppcms::base_view {
    Page(std::ostream &out, Record &content) : base_view(out), content(content) {}
    void render() override { out() << "page:" << content.text; }
    Record &content;
};
struct NewPage : Page {
    using Page::Page;
    void render() override { out() << "new:" << content.text; }
};

/// A skin that is registered while the object lives.
class Skin {
  public:
    explicit Skin(std::string const &name) {
        generator.name(name);
        generator.add_view<Page, Record>("Page");
        generator.add_view<Page, Record>("Unsafe", false);
        views::pool::instance().add(generator);
    }
    ~Skin() { views::pool::instance().remove(generator); }

    views::generator generator;
};

std::string rendered(std::string const &skin, std::string const &view, cppcms::base_content &&content) {
    std::ostringstream out;
    views::pool::instance().render(skin, view, out, content);
    return out.str();
}

/// The text of the error that \a call throws.
template <typename Call>
std::string failure(Call call) {
    try {
        call();
    } catch (cppcms::cppcms_error const &error) {
        return error.what();
    }
    return "nothing thrown";
}

TEST(Views, RenderContentOfTheirTypeAndTypesDerivedFromIt) {
    Skin const skin("s");
    EXPECT_EQ(rendered("s", "Page", Record()), "page:text");
    EXPECT_EQ(rendered("s", "Page", DerivedRecord()), "page:text");
    EXPECT_EQ(rendered("s", "Unsafe", Record()), "page:text");
}

TEST(Views, ErrorsAreTheSameBeforeAndWhileRendering) {
    Skin const skin("s");
    struct {
        char const *skin;
        char const *view;
        char const *error;
    } const cases[] = {
        {"x", "Page", "cppcms::views::pool: no such skin: x"},
        {"s", "Nope", "cppcms::view::pool: no such view: Nope is registered for skin: s"},
        {"s", "Page", "cppcms::views::generator: an attempt to use content of invalid type"},
    };
    for (auto const &c : cases) {
        OtherRecord other;
        EXPECT_EQ(failure([&] { rendered(c.skin, c.view, OtherRecord()); }), c.error);
        EXPECT_EQ(failure([&] { cppcms::impl::check_view(c.skin, c.view, other); }), c.error);
    }
    DerivedRecord good;
    EXPECT_NO_THROW(cppcms::impl::check_view("s", "Page", good));
}

TEST(Views, GeneratorsOfOneSkinMergeAndTheLaterWins) {
    Skin const first("s");
    {
        Skin second("s");
        second.generator.add_view<NewPage, Record>("Page");
        second.generator.add_view<NewPage, Record>("More");
        EXPECT_EQ(rendered("s", "Page", Record()), "new:text");
        EXPECT_EQ(rendered("s", "More", Record()), "new:text");
    }
    EXPECT_EQ(rendered("s", "Page", Record()), "page:text");
    EXPECT_THROW(rendered("s", "More", Record()), cppcms::cppcms_error);
}

TEST(Views, DefaultSkinIsConfiguredOrTheOnlyOne) {
    auto const default_skin = [](cppcms::json::value const &settings) {
        return views::manager(settings).default_skin();
    };
    cppcms::json::value chosen, listed, broken;
    chosen.set("views.default_skin", "chosen");
    listed.set("views.skins", std::vector<std::string>{"first", "second"});
    broken = listed;
    listed.set("views.paths", std::vector<std::string>{"."});

    EXPECT_EQ(default_skin({}), "");
    Skin const only("only");
    EXPECT_EQ(default_skin({}), "only");
    EXPECT_EQ(default_skin(chosen), "chosen");
    EXPECT_EQ(default_skin(listed), "first");
    EXPECT_THROW(default_skin(broken), cppcms::cppcms_error);
    Skin const another("another");
    EXPECT_EQ(default_skin({}), "");

    std::ostringstream out;
    Record record;
    views::manager manager{cppcms::json::value()};
    EXPECT_EQ(failure([&] { manager.render(manager.default_skin(), "Page", out, record); }),
              "No default skin was detected, please define one in views.default_skin.");
}

TEST(Views, ALockGivesTheViewItself) {
    Skin const skin("s");
    std::ostringstream out;
    Record record;
    views::view_lock lock("s", "Page", out, record);
    EXPECT_EQ(&lock.use_view<Page>().content, &record);
    EXPECT_THROW(lock.use_view<NewPage>(), std::bad_cast);
    lock.view().render();
    EXPECT_EQ(out.str(), "page:text");
}

TEST(Views, ContentHasAnApplicationOnlyWhileOneIsLent) {
    Record record, lender;
    EXPECT_EQ(failure([&] { record.app(); }),
              "cppcms::base_content: an attempt to access content's application that wasn't assigned");
    auto &app = reinterpret_cast<cppcms::application &>(lender);  // never used as one
    lender.app(app);
    {
        cppcms::base_content::app_guard const guard(record, lender);
        EXPECT_EQ(&record.app(), &app);
        cppcms::base_content::app_guard const inner(record, lender);
    }
    EXPECT_FALSE(record.has_app());
    cppcms::base_content::app_guard const nothing_to_lend(record, record);
    EXPECT_FALSE(record.has_app());
}

TEST(Views, TranslationDomainIsRestored) {
    std::ostringstream out;
    auto &format = booster::locale::ios_info::get(out);
    format.domain_id(3);
    {
        cppcms::translation_domain_scope const outer(out, 5);
        EXPECT_EQ(format.domain_id(), 5);
        cppcms::translation_domain_scope const none(out, -1);
        EXPECT_EQ(format.domain_id(), 5);
    }
    EXPECT_EQ(format.domain_id(), 3);
    EXPECT_THROW(cppcms::translation_domain_scope(out, "pages"), std::bad_cast);
    out.imbue(booster::locale::generator()("en_US.UTF-8"));
    EXPECT_EQ(cppcms::translation_domain_scope::domain_id(out, "pages"), -1);
}

}  // namespace
