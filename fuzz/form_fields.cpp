// Fields as a browser sends them in a query or a body: written again, they are read as the same fields.
#include <cppcms/util.h>

#include <cassert>
#include <string>

#include "http/form_decoder.h"

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size) {
    using namespace cppcms::impl;
    form_fields fields;
    form_result const result = decode_form({reinterpret_cast<char const *>(data), size}, fields);
    assert(result != form_result::too_many);  // it would take more bytes
    std::string text;
    for (auto const &[name, value] : fields) {
        assert(name.size() + value.size() < size);
        // A name that decodes to nothing cannot be written.
        if (!name.empty())
            text += cppcms::util::urlencode(name) + '=' + cppcms::util::urlencode(value) + '&';
    }
    fields.erase("");
    form_fields again;
    assert(decode_form(text, again) == form_result::complete);
    assert(again == fields);
    return 0;
}
