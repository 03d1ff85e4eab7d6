#include <cppcms/cppcms_error.h>
#include <cppcms/json.h>
#include <cppcms/localization.h>
#include <cppcms/views_pool.h>
#include <gtest/gtest.h>

#include <sstream>

#include "tests/unit/framework/failure.h"
#include "views_check.h"

namespace views = cppcms::views;

namespace {

struct Record : cppcms::base_content {};
struct DerivedRecord : Record {};
struct OtherRecord : cppcms::base_content {};

struct Page : cppcms::base_view {
    Page(std::ostream &out, Record &) : base_view(out) {}
    void render() override { out() << "page"; }
};
struct NewPage : Page {
    using Page::Page;
    void render() override { out() << "new"; }
};

/// A skin that is registered while the object lives.
class Skin {
  public:
    explicit Skin(std::string const &name, bool is_new = false) {
        generator.name(name);
        generator.add_view<Page, Record>("Page");
        if (is_new) {
            generator.add_view<NewPage, Record>("Page");
            generator.add_view<NewPage, Record>("More", false);
        }
        views::pool::instance().add(generator);
    }
    ~Skin() { views::pool::instance().remove(generator); }

    views::generator generator;
};

/// What is rendered, or the error, which is the same one before and while rendering.
std::string rendered(std::string const &skin, std::string const &view, cppcms::base_content &&content) {
    std::ostringstream out;
    auto const before = failure([&] { cppcms::impl::check_view(skin, view, content); });
    auto const error = failure([&] { views::pool::instance().render(skin, view, out, content); });
    EXPECT_EQ(before, error);
    return error == "nothing thrown" ? out.str() : error;
}

TEST(Views, RenderContentOfTheirTypeAndTypesDerivedFromIt) {
    Skin const first("s");
    EXPECT_EQ(rendered("s", "Page", Record()), "page");
    EXPECT_EQ(rendered("s", "Page", DerivedRecord()), "page");
    EXPECT_EQ(rendered("x", "Page", Record()), "cppcms::views::pool: no such skin: x");
    EXPECT_EQ(rendered("s", "Page", OtherRecord()),
              "cppcms::views::generator: an attempt to use content of invalid type");
    {
        Skin const second("s", true);  // generators of one skin merge, and the later wins
        EXPECT_EQ(rendered("s", "Page", Record()), "new");
        EXPECT_EQ(rendered("s", "More", Record()), "new");
    }
    EXPECT_EQ(rendered("s", "Page", Record()), "page");
    EXPECT_EQ(rendered("s", "More", Record()),
              "cppcms::view::pool: no such view: More is registered for skin: s");
}

}  // namespace
