#include <booster/backtrace.h>

#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>

#include <cstdlib>
#include <memory>

namespace booster {

namespace stack_trace {

namespace {

std::string demangled(char const *symbol) {
    int status = 0;
    std::unique_ptr<char, decltype(&std::free)> name(abi::__cxa_demangle(symbol, nullptr, nullptr, &status),
                                                     &std::free);
    return status == 0 && name ? name.get() : symbol;
}

}  // namespace

int trace(void **addresses, int size) {
    return ::backtrace(addresses, size);
}

std::string get_symbol(void *address) {
    std::ostringstream line;
    line << address << ": ";
    Dl_info info{};
    if (!dladdr(address, &info)) {
        line << "???";
        return line.str();
    }
    if (info.dli_sname)
        line << demangled(info.dli_sname);
    else
        line << "???";
    auto const start = static_cast<char *>(info.dli_sname ? info.dli_saddr : info.dli_fbase);
    line << " + 0x" << std::hex << (static_cast<char *>(address) - start);
    if (info.dli_fname)
        line << " in " << info.dli_fname;
    return line.str();
}

std::string get_symbols(void *const *addresses, int size) {
    std::ostringstream lines;
    write_symbols(addresses, size, lines);
    return lines.str();
}

void write_symbols(void *const *addresses, int size, std::ostream &out) {
    for (int i = 0; i < size; ++i)
        out << get_symbol(addresses[i]) << '\n';
}

}  // namespace stack_trace

backtrace::backtrace(std::size_t frames) : frames_(frames) {
    frames_.resize(static_cast<std::size_t>(stack_trace::trace(frames_.data(), static_cast<int>(frames))));
}

void *backtrace::return_address(unsigned n) const {
    return n < frames_.size() ? frames_[n] : nullptr;
}

void backtrace::trace(std::ostream &out) const {
    stack_trace::write_symbols(frames_.data(), static_cast<int>(frames_.size()), out);
}

std::string backtrace::trace() const {
    return stack_trace::get_symbols(frames_.data(), static_cast<int>(frames_.size()));
}

void backtrace::trace_line(unsigned n, std::ostream &out) const {
    if (n < frames_.size())
        out << stack_trace::get_symbol(frames_[n]);
}

std::string backtrace::trace_line(unsigned n) const {
    return n < frames_.size() ? stack_trace::get_symbol(frames_[n]) : std::string();
}

}  // namespace booster
