// The body of a status call. What it holds goes back to the page (the call's id, a country code): as JSON on
// one line without control characters, and its texts, cleaned, as the same text.
#include <cppcms/json.h>

#include <algorithm>
#include <cassert>
#include <sstream>
#include <string>

#include "WebApps/webconfig/util/Utf8.h"

namespace {

void CheckText(std::string const &text) {
    std::string const clean = webconfig::util::CleanText(text);
    assert(webconfig::util::CleanText(clean) == clean);
    std::istringstream json('[' + cppcms::json::to_json(clean) + ']');
    cppcms::json::value read;
    assert(read.load(json, true));
    assert(read[0].str() == clean);
}

void CheckTexts(cppcms::json::value const &value) {
    if (value.type() == cppcms::json::is_string)
        CheckText(value.str());
    if (value.type() == cppcms::json::is_array)
        for (auto const &element : value.array())
            CheckTexts(element);
    if (value.type() == cppcms::json::is_object)
        for (auto const &member : value.object())
            CheckTexts(member.second);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size) {
    std::string const body(reinterpret_cast<char const *>(data), size);
    CheckText(body);
    std::istringstream input(body);
    cppcms::json::value value;
    if (!value.load(input, true))
        return 0;
    CheckTexts(value);
    std::string const answer = value.save();
    assert(std::none_of(answer.begin(), answer.end(), [](unsigned char c) { return c < 0x20; }));
    return 0;
}
