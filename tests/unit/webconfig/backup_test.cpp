#include "WebApps/webconfig/settings/Backup.h"

#include <gtest/gtest.h>

namespace webconfig::settings {

namespace {

/// A reading as text, its line ends as "|"; or why there is none.
std::string Read(std::string const &text) {
    std::string result;
    try {
        for (auto const &[format, parameters] : ReadBackup(text)) {
            result += format == BackupFormat::Page ? "page" : "export";
            for (auto const &[key, value] : parameters)
                result += ' ' + key + '=' + value.text + ':' + std::to_string(static_cast<int>(value.type));
            result += ';';
        }
    } catch (prm::ParameterFileError const &error) {
        result = error.what();
    }
    std::replace(result.begin(), result.end(), '\n', '|');
    return result;
}

}  // namespace

TEST(Backup, IsReadWhereThereIsOneWayAndNamesTheLineElse) {
    std::string const doubtful = "it may begin a parameter, or go on with the value before it";
    std::string const behind =
        "its key does not come behind the one before it, so it may be a part of that value";
    std::string const number = "its value is no number of its type";
    std::string many;
    for (int i = 100000; i <= 110000; ++i)
        many += '"' + std::to_string(i) + "\",\"\", s\n";
    std::pair<std::string, std::string> const cases[] = {
        {"\"a\",\"007\", i\n\"b\",\"0.50\", f\n\"c\",\"x\", s\n", "page a=7:0 b=0.5:1 c=x:2;"},
        {"\"a\",\"\", s", "page a=:2;"},
        {"\"a\",\"2,\"Field\"\", s\n\"b\",\"\",\"\", s\n", "page a=2,\"Field\":2 b=\",\":2;"},
        {"\"a\",\"x\", s\", s\n", "page a=x\", s:2;"},
        {"\"a\",\"x\n\ny\", s\nz\n\"\", s\n\"b\",\"\", s\n", "page a=x||y\", s|z|\":2 b=:2;"},
        {"\"a\",\"1\", s\r\n", "export a=1:2;"},
        // What may be a damaged line, or a key that no backup has, is not taken for a part of a value.
        {"\"a\",\"x\n\"b\",\"y\", s\n", "line 2: " + doubtful},
        {"\"a\",\"x\", s\n\"b\"c\",\"y\", s\n", "line 2: " + doubtful},
        {"\"b\",\"x\", s\n\"a\",\"y\"z\", s\n", "line 2: " + behind},
        {"\"a\",\"x\"\n\"a\",\"y\", s\n", "line 2: " + doubtful},
        {"\"a\",\"x\n", "line 1: its value has no end"},
        {"\"a\",\"\"\", s\n\"b\",\"x\n", "line 2: its value has no end"},
        {"\"a\",\"x\", s\n\"b\",\"x\", i\n", "line 2: " + number},
        {"\"a\",\"\"\", s\n\"b\",\"1\", s\n1\", i\n", "line 2: " + number},
        {"\"a\",\"\"\", s\n\"b\",\"99999999999\", i\n", "line 2: " + number},
        {"\"/a\",\"\"\", s\n", "line 1: no parameter begins here"},
        {"garbage\n", "line 1: no parameter begins here"},
        {"# nothing\n", "line 1: there are no parameters in it"},
        {"", "line 1: there are no parameters in it"},
        // Both formats read what has no escapes; which one it is matters where it has.
        {"# export\n\"/b\",\"\\n\", s\n\"b\",\"\\\"\", file 0600\n\"a\",\"1\",i\n", "export a=1:0 b=\":4;"},
        {"\"a\",\"D\\robert\", s\n", "page a=D\\robert:2;export a=D\robert:2;"},
        {"\"a\",\"D\\qu\", s\n", "page a=D\\qu:2;"},
        {many, "line 10001: these are too many parameters"},
    };
    for (auto const &[text, expected] : cases)
        EXPECT_EQ(Read(text), expected) << text.substr(0, 200);
}

}  // namespace webconfig::settings
