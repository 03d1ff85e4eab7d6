#pragma once

#include <cppcms/view.h>

#include <map>
#include <string>
#include <vector>

namespace site::data {

struct Node {
    std::string text;
    std::string path;
    std::vector<Node> kids;

    std::string const &GetText() const { return text; }
    std::vector<Node> const &Kids() const { return kids; }
    std::string Url(cppcms::application &app) const { return path.empty() ? "" : app.mapper().root() + path; }
    std::string Id() const {
        std::string id = text;
        for (char &c : id)
            c = c == ' ' ? '_' : c;
        return id;
    }
};

struct Base : cppcms::base_content {
    bool alert = false;
    std::string here;
    std::vector<Node> menus;
};

struct Page : Base {
    std::string title;
    cppcms::form form;
    int selected_tab = 0;
    std::string status_url;
};

struct Lists : cppcms::base_content {
    std::vector<int> numbers;
    std::map<std::string, std::string> pairs;
    std::string text;
    bool flag = false;
};

struct Widgets : cppcms::base_content {
    cppcms::form form;
    cppcms::widgets::text text;
    cppcms::widgets::select select;
};

}  // namespace site::data
