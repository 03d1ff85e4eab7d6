#pragma once

#include <libxml/HTMLparser.h>
#include <libxml/xpath.h>

#include <memory>
#include <string>
#include <vector>

namespace pages {

/// A page as its parsed elements, asked by XPath.
class Html {
  public:
    explicit Html(std::string const &text);

    /// The text of every node that \a path selects: an element's whole content, or an attribute's value.
    std::vector<std::string> All(std::string const &path) const;
    /// The only one; fails the test where there is none, or more than one.
    std::string One(std::string const &path) const;
    std::size_t Count(std::string const &path) const { return All(path).size(); }

  private:
    std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> _document;
};

}  // namespace pages
