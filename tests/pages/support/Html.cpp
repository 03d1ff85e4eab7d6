#include "tests/pages/support/Html.h"

#include <gtest/gtest.h>
#include <libxml/xpathInternals.h>

namespace pages {

namespace {

std::string Content(xmlNode *node) {
    std::unique_ptr<xmlChar, decltype(xmlFree)> text(xmlNodeGetContent(node), xmlFree);
    return text ? reinterpret_cast<char const *>(text.get()) : "";
}

}  // namespace

Html::Html(std::string const &text)
    : _document(htmlReadMemory(text.data(), static_cast<int>(text.size()), "page", "UTF-8",
                               HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET),
                &xmlFreeDoc) {}

std::vector<std::string> Html::All(std::string const &path) const {
    std::vector<std::string> texts;
    if (!_document)
        return texts;
    std::unique_ptr<xmlXPathContext, decltype(&xmlXPathFreeContext)> context(
        xmlXPathNewContext(_document.get()), &xmlXPathFreeContext);
    std::unique_ptr<xmlXPathObject, decltype(&xmlXPathFreeObject)> found(
        xmlXPathEvalExpression(reinterpret_cast<xmlChar const *>(path.c_str()), context.get()),
        &xmlXPathFreeObject);
    if (!found) {
        ADD_FAILURE() << "not an XPath: " << path;
        return texts;
    }
    for (int i = 0; found->nodesetval && i < found->nodesetval->nodeNr; ++i)
        texts.push_back(Content(found->nodesetval->nodeTab[i]));
    return texts;
}

std::string Html::One(std::string const &path) const {
    auto const texts = All(path);
    EXPECT_EQ(texts.size(), 1U) << path;
    return texts.empty() ? "" : texts.front();
}

std::string Html::Value(std::string const &element) const {
    std::string const path = element.starts_with('/') ? element : "//*[@id='" + element + "']";
    EXPECT_EQ(Count(path), 1U) << path;
    if (Count(path + "[@type='checkbox']"))
        return Count(path + "[@checked]") ? "y" : "";
    std::string value;
    for (auto const &part : All(path + "[self::input]/@value | " + path + "/option[@selected]/@value | " +
                                path + "[not(self::input or self::select)]"))
        value += (value.empty() ? "" : " ") + part;
    return value;
}

}  // namespace pages
