// A multipart body: its parts are the same wherever it is cut, and all their bytes are the body's.
#include <cassert>
#include <string>

#include "http/multipart_parser.h"

namespace {

using cppcms::impl::multipart_parser;

struct Recorder : multipart_parser::consumer {
    bool begin_part(cppcms::impl::part_header const &header) override {
        assert(!open);
        open = true;
        text += '<' + header.name + '|' + header.filename + '|' + header.content_type + '>';
        return header.has_content_type || header.content_type.empty();
    }
    bool part_data(std::string_view data) override {
        assert(open);
        size += data.size();
        text += data;
        return true;
    }
    bool end_part() override {
        assert(open);
        open = false;
        return true;
    }

    bool open = false;
    std::size_t size = 0;
    std::string text;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size) {
    using result = multipart_parser::result;
    std::string_view const body(reinterpret_cast<char const *>(data), size);
    Recorder whole;
    multipart_parser parser("B", whole);
    result const end = parser.feed(body);
    assert(end != result::refused && whole.size <= size);
    assert(end != result::complete || !whole.open);

    Recorder cut;
    multipart_parser again("B", cut);
    std::size_t const piece = size == 0 ? 1 : 1 + data[size / 2] % 7;
    result state = result::more;
    for (std::size_t at = 0; at < size && state != result::malformed; at += piece)
        state = again.feed(body.substr(at, piece));
    assert(state == end);
    assert(end == result::malformed || cut.text == whole.text);
    return 0;
}
