#include "tests/pages/support/Page.h"

#include <filesystem>
#include <optional>
#include <regex>
#include <utility>

#include "WebApps/webconfig/settings/Catalogue.h"

namespace pages {

namespace {

constexpr char rebootFlag[] = "/tmp/webconfig_reboot_flag";

Settings Below(std::string const &folder, Settings const &settings) {
    Settings whole;
    for (auto const &[name, value] : settings)
        whole[folder + name] = value;
    return whole;
}

}  // namespace

Fields With(Fields fields, Fields const &changes) {
    for (auto const &change : changes)
        std::erase_if(fields, [&](auto const &field) { return field.first == change.first; });
    for (auto const &change : changes) {
        if (change.second != none)
            fields.push_back(change);
    }
    return fields;
}

Strings DeclaredPages() {
    Strings pages = {"/", "/service/assemblysn", "/regulatory/wifi"};
    std::pair<char const *, char const *> const tables[] = {{"/settings/", "settings/Pages.h"},
                                                            {"/network/", "network/Network.cpp"}};
    std::regex const row("\\{\"([a-z0-9_]+)\", &");
    for (auto const &[folder, file] : tables) {
        std::string const text = device::ReadFile(std::string(APPLICATIONS) + file);
        for (std::sregex_iterator match(text.begin(), text.end(), row), end; match != end; ++match)
            pages.push_back(folder + (*match)[1].str());
    }
    EXPECT_GE(pages.size(), 18U) << "the tables have another form";
    return pages;
}

Fields PageTest::_Named(Fields fields) {
    Html const html(browser.Get(page.path).body);
    for (auto &[name, value] : fields) {
        if (name.starts_with('#'))
            name = html.One("//*[@id='" + name.substr(1) + "']/@name");
    }
    device::TakeCommands();
    return fields;
}

PageTest::PageTest(Page thePage) : page(std::move(thePage)) {
    std::filesystem::remove(rebootFlag);
    Set();
}

void PageTest::Set(Settings const &changes) const {
    Settings all = changes;
    all.insert(page.settings.begin(), page.settings.end());
    store.Set(Below(page.folder, all));
    device::TakeCommands();
}

Html PageTest::Show(Settings const &changes, Fields const &shown) {
    SCOPED_TRACE(page.path + " with " + testing::PrintToString(changes));
    Set(changes);
    Settings const before = device::KeptStore::All();
    Answer const answer = browser.Get(page.path);
    EXPECT_EQ(answer.status, 200);
    Html html(answer.body);
    EXPECT_EQ(html.All(anyMessage), Strings());
    for (auto const &[element, value] : shown)
        EXPECT_EQ(html.Value(element), value) << element;
    EXPECT_EQ(device::KeptStore::Changes(before), Settings());
    EXPECT_EQ(device::TakeCommands(), page.diagnoses);
    return html;
}

Html PageTest::Expect(Fields const &good, Case const &expected) {
    Fields const fields = _Named(With(good, expected.fields));
    return ExpectAnswer(
        testing::PrintToString(fields), [&] { return browser.Post(page.path, fields); }, expected);
}

Html PageTest::ExpectAnswer(std::string const &what, std::function<Answer()> const &ask,
                            Case const &expected) {
    SCOPED_TRACE(page.path + " with " + testing::PrintToString(expected.before) + ", posted " + what +
                 ", refused '" + expected.refused + '\'');
    Set(expected.before);
    Settings const before = device::KeptStore::All();
    device::Log const log;
    std::optional<device::RefusedKey> refused;
    if (!expected.refused.empty())
        refused.emplace(page.folder + expected.refused);
    Answer const answer = ask();
    EXPECT_EQ(answer.status, 200);
    Html html(answer.body);
    bool const success = expected.failure.empty();
    bool const own = success && !expected.success;
    std::string const text = success ? expected.success.value_or(page.success) : expected.failure;
    EXPECT_EQ(html.All(anyMessage), text.empty() ? Strings() : Strings{text});
    EXPECT_EQ(html.Count(failureMessage), success ? 0U : 1U);
    EXPECT_EQ(html.All(fieldErrors), expected.errors);
    Settings const changes = device::KeptStore::Changes(before);
    EXPECT_EQ(changes, device::Exported(Below(page.folder, expected.written)));
    for (auto const &[key, value] : changes)
        EXPECT_TRUE(value == none || webconfig::settings::Find(key))
            << key << " is not in the table of settings";
    Strings commands = expected.commands;
    if (commands == Strings{usual})
        commands = own ? page.applies : Strings();
    commands.insert(commands.end(), page.diagnoses.begin(), page.diagnoses.end());
    EXPECT_EQ(device::TakeCommands(), commands);
    bool const reboot = expected.reboot || (own && page.reboots);
    EXPECT_EQ(std::filesystem::remove(rebootFlag), reboot);
    EXPECT_EQ(html.Count("//div[@id='alertsBox']/a[@href='/config/settings/reboot']"), reboot ? 1U : 0U);
    for (auto const &[element, value] : expected.shown)
        EXPECT_EQ(html.Value(element), value) << element;
    if (!expected.tab.empty()) {
        EXPECT_NE(answer.body.find("selected: " + expected.tab), std::string::npos) << expected.tab;
    }
    EXPECT_TRUE(log.Has(expected.logged)) << expected.logged;
    return html;
}

void PageTest::Run(Fields const &good, std::vector<Case> const &cases) {
    for (auto const &each : cases)
        Expect(good, each);
}

void PageTest::StopsAt(Fields const &good, std::vector<Stop> const &cases, Strings const &commands) {
    for (auto const &[refused, written] : cases)
        Expect(good, {.refused = refused, .failure = notSaved, .written = written, .commands = commands});
}

void PageTest::Refuses(Fields const &good, std::vector<Bad> const &cases) {
    for (auto const &bad : cases)
        Expect(good, {.fields = {{bad.field, bad.value}}, .failure = invalid, .errors = bad.errors});
}

}  // namespace pages
