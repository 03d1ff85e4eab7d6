#pragma once

#include <cppcms/view.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace site::data {

struct Node {
    std::string text;
    std::vector<Node> kids;
};

struct Lists : cppcms::base_content {
    std::vector<int> numbers;
    std::map<std::string, std::string> pairs;
    std::string text;
    bool flag = false;
};

struct Expressions : Lists {
    std::string marked(cppcms::filters::streamable const &shown) {
        std::ostringstream out;
        out << '!' << shown << '!';
        return out.str();
    }
    static std::string entry(std::string const &key) { return key; }

    int number = 5;
    std::string x = "member";
    std::string const *pointer = nullptr;
    std::vector<Node> rows;
};

struct Widgets : cppcms::base_content {
    cppcms::form form;
    cppcms::widgets::text text;
    cppcms::widgets::select select;
};

struct Texts : cppcms::base_content {
    std::string name = "a&b";
    booster::locale::message text = booster::locale::translate("<Cancel>");
    std::vector<int> numbers{0, 1, 1234};
    cppcms::widgets::submit button;
};

}  // namespace site::data
