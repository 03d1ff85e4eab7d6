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

}  // namespace pages
