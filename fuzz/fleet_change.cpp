// A message that a broker delivers to a device of a fleet: read, or refused. What is read can be told on, and
// what it wants is JSON that the service reads again.
#include <cassert>
#include <string_view>

#include "fleet/Messages.h"

extern "C" int LLVMFuzzerTestOneInput(unsigned char const *data, std::size_t size) {
    try {
        fleet::Change const change = fleet::ReadChange({reinterpret_cast<char const *>(data), size});
        assert(fleet::IsId(change.id));
        assert(!change.who.empty() &&
               change.who.find_first_of(std::string_view("\0\r\n\t\x1b", 5)) == change.who.npos);
        std::string const patch = cppcms::json::value(change.patch).save();
        cppcms::json::value again;
        char const *begin = patch.data();
        assert(again.load(begin, patch.data() + patch.size(), true));
        assert(again.object() == change.patch);
    } catch (fleet::Malformed const &malformed) {
        assert(malformed.Id().empty() || fleet::IsId(malformed.Id()));
    }
    return 0;
}
