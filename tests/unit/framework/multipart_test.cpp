#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "http/multipart_parser.h"

namespace {

using cppcms::impl::multipart_parser;
using cppcms::impl::part_header;
using Result = multipart_parser::result;

/// Writes down what the parser delivers: `name|filename|type:content;` for each part.
class Recorder : public multipart_parser::consumer {
  public:
    bool begin_part(part_header const &header) override {
        text += header.name + '|' + header.filename + '|' + header.content_type +
                (header.has_content_type ? "!" : "") + ':';
        return true;
    }
    bool part_data(std::string_view data) override {
        text += data;
        return true;
    }
    bool end_part() override {
        text += ';';
        return true;
    }

    std::string text;
};

Result Parse(std::vector<std::string_view> const &pieces, Recorder &parts) {
    multipart_parser parser("B", parts);
    auto state = Result::more;
    for (auto const piece : pieces) {
        state = parser.feed(piece);
        if (state == Result::malformed || state == Result::refused)
            break;
    }
    return state;
}

std::string const two_parts =
    "--B\r\nContent-Disposition: form-data; name=\"a\"\r\n\r\none\r\ntwo\r\n--\r--B\r\n\r\n--B\r\n"
    "content-type: TEXT/Plain; charset=utf-8\r\ncontent-disposition: form-data; name=f; "
    "filename=\"C:\\x \\\"q\\\".bin\"\r\n\r\n\r\r\n-\r\n--\r\n--C\r\n--B--\r\n";
std::string const two_parts_read =
    "a||:one\r\ntwo\r\n--\r--B\r\n;f|C:x \"q\".bin|text/plain!:\r\r\n-\r\n--\r\n--C;";

TEST(MultipartParser, GivesTheSamePartsWhereverTheBodyIsCut) {
    for (std::size_t first = 0; first <= two_parts.size(); ++first)
        for (std::size_t second = first; second <= two_parts.size(); second += 7) {
            Recorder parts;
            std::string_view const body(two_parts);
            ASSERT_EQ(Parse({body.substr(0, first), body.substr(first, second - first), body.substr(second)},
                            parts),
                      Result::complete)
                << first << ' ' << second;
            ASSERT_EQ(parts.text, two_parts_read) << first << ' ' << second;
        }
}

TEST(MultipartParser, NeverCompletesABodyThatIsCutShort) {
    for (std::size_t size = 0; size < two_parts.size(); ++size) {
        Recorder parts;
        EXPECT_EQ(Parse({std::string_view(two_parts).substr(0, size)}, parts), Result::more) << size;
    }
}

TEST(MultipartParser, RefusesMalformedBodies) {
    std::string const disposition = "Content-Disposition: form-data; name=\"a\"";
    std::string const head = "--B\r\n" + disposition + "\r\n\r\n";
    std::pair<char const *, std::string> const cases[] = {
        {"preamble", "x" + head + "v\r\n--B--\r\n"},
        {"empty line first", "\r\n" + head + "v\r\n--B--\r\n"},
        {"other boundary", "--C\r\n"},
        {"text behind the boundary", "--B x\r\n"},
        {"one dash", "--B-\r\n"},
        {"data after the end", head + "v\r\n--B--\r\nx"},
        {"another part after the end", head + "v\r\n--B--\r\n" + head},
        {"end without CR", head + "v\r\n--B--\n"},
        {"no headers", "--B\r\n\r\nv\r\n--B--\r\n"},
        {"no colon", "--B\r\nnonsense\r\n\r\n"},
        {"empty header name", "--B\r\n: x\r\n\r\n"},
        {"no disposition", "--B\r\nContent-Type: text/plain\r\n\r\n"},
        {"two dispositions", "--B\r\n" + disposition + "\r\n" + disposition + "\r\n\r\n"},
        {"not form-data", "--B\r\nContent-Disposition: attachment; name=\"a\"\r\n\r\n"},
        {"no name", "--B\r\nContent-Disposition: form-data; filename=\"a\"\r\n\r\n"},
        {"open quote", "--B\r\nContent-Disposition: form-data; name=\"a\r\n\r\n"},
        {"rubbish behind the name", "--B\r\nContent-Disposition: form-data; name=\"a\" b\r\n\r\n"},
        {"endless headers", "--B\r\nX: " + std::string(multipart_parser::max_header_size, 'x')},
    };
    for (auto const &[problem, body] : cases) {
        Recorder parts;
        EXPECT_EQ(Parse({body}, parts), Result::malformed) << problem;
    }
}

TEST(MultipartParser, RefusesUnusableBoundaries) {
    for (std::string const &boundary :
         {std::string(), std::string("a\rb"), std::string("a\0b", 3), std::string(300, 'x')}) {
        Recorder parts;
        multipart_parser parser(boundary, parts);
        EXPECT_EQ(parser.feed("--" + boundary + "\r\n"), Result::malformed) << boundary;
    }
}

}  // namespace
