#pragma once

#include <libxml/HTMLparser.h>
#include <libxml/xpath.h>

#include <memory>
#include <string>
#include <vector>

namespace pages {

/// The box of a page's result message: any, and the two kinds of it.
inline constexpr char anyMessage[] = "//div[contains(@class,'form_result_msg')]";
inline constexpr char successMessage[] =
    "//div[contains(@class,'success') and contains(@class,'form_result_msg')]";
inline constexpr char failureMessage[] =
    "//div[contains(@class,'failure') and contains(@class,'form_result_msg')]";
/// Its texts, and those of refused inputs.
inline constexpr char saved[] = "Success: The form values were saved.";
inline constexpr char notSaved[] = "Save error: The form values were not saved.";
inline constexpr char invalid[] = "Invalid values: The form values were not saved.";
inline constexpr char fieldErrors[] = "//span[@class='cppcms_error_msg']";

/// A page as its parsed elements, asked by XPath.
class Html {
  public:
    explicit Html(std::string const &text);

    /// The text of every node that \a path selects: an element's whole content, or an attribute's value.
    std::vector<std::string> All(std::string const &path) const;
    /// The only one; fails the test where there is none, or more than one.
    std::string One(std::string const &path) const;
    /// What the element with this id, or at this path, holds: the value of an input, "y" or "" of a checkbox,
    /// the chosen values of a list, the text of another element.
    std::string Value(std::string const &element) const;
    std::size_t Count(std::string const &path) const { return All(path).size(); }

  private:
    std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> _document;
};

}  // namespace pages
