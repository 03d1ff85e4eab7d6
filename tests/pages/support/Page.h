#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/pages/support/Browser.h"
#include "tests/pages/support/Device.h"
#include "tests/pages/support/Html.h"

namespace pages {

using Strings = std::vector<std::string>;
using device::none;
using device::Settings;

/// \a fields with \a changes: what they name is left out first, and added where it has a value.
Fields With(Fields fields, Fields const &changes);

/// The paths below the root of the page space, as the applications declare them.
Strings DeclaredPages();

/// In the place of commands: those of the page.
inline constexpr char usual[] = "(usual)";

/// What is true of a page in all its cases.
struct Page {
    std::string path;
    std::string folder;           // what the names of the settings begin with
    Settings settings;            // the parameters before each case
    Strings diagnoses = {};       // commands that each answer runs
    std::string success = saved;  // what a success says,
    Strings applies = {};         // which commands it runs,
    bool reboots = false;         // and whether it tells the operator to reboot
};

/// Something that is posted to a page, and all that comes of it.
struct Case {
    Settings before = {};                     // other settings
    Fields fields = {};                       // changes of the form's good values
    std::string refused = {};                 // the parameter that the store refuses to write
    std::string failure = {};                 // what a failure says, instead of the page's own success
    std::optional<std::string> success = {};  // another text; "" where there is no result box
    Strings errors = {};                      // at the fields
    Settings written = {};                    // what has changed in the whole store
    Strings commands = {usual};               // others than those of the page's own success
    bool reboot = false;                      // whether it tells the operator to reboot all the same
    Fields shown = {};                        // elements (see Html::Value) and what they show
    std::string tab = {};                     // the number of the open one
    std::string logged = {};                  // part of a line
};

/// A parameter that the store refuses to write, and what has been written before.
struct Stop {
    std::string refused;
    Settings written;
};

/// A value that a page refuses in one of its fields.
struct Bad {
    char const *field;
    std::string value;
    Strings errors;
};

/// What is said of a line end or another control character in the input of a label.
inline Strings NoControls(std::string const &label) {
    return {'"' + label + "\" must not have line ends or control characters"};
}

/// Tests of one page. Each case begins with the page's settings; the store is put back in the end.
class PageTest : public testing::Test {
  protected:
    explicit PageTest(Page page);

    /// Stores the page's settings, with changes.
    void Set(Settings const &changes = {}) const;
    /// What the page shows with these settings; no command but its diagnoses runs and nothing is written.
    Html Show(Settings const &changes = {}, Fields const &shown = {});
    /// Posts the good values of a form with the changes of a case and expects what the case says. "#ID" in
    /// the place of a field's name is the name that the page gave the input.
    Html Expect(Fields const &good, Case const &expected);
    /// The same of another way to ask, which \a what describes.
    Html ExpectAnswer(std::string const &what, std::function<Answer()> const &ask, Case const &expected);
    /// The same for many.
    void Run(Fields const &good, std::vector<Case> const &cases);
    void StopsAt(Fields const &good, std::vector<Stop> const &cases, Strings const &commands = {});
    void Refuses(Fields const &good, std::vector<Bad> const &cases);

    Page const page;
    device::KeptStore const store;
    Browser browser{device::address};

  private:
    Fields _Named(Fields fields);
};

}  // namespace pages
