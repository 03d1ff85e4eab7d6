#include <cppcms/cppcms_error.h>
#include <cppcms/http_file.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iostream>

#include "spool_buffer.h"

namespace cppcms::http {

struct file::content {
    impl::spool_buffer buffer;
    std::iostream stream{&buffer};
    bool remove = true;  // the file, with this object

    ~content() {
        if (remove && !buffer.path().empty())
            ::unlink(buffer.path().c_str());
    }

    bool copy_to(std::string const &path) {
        stream.clear();
        if (!stream.seekg(0))
            return false;
        std::ofstream target(path, std::ios::binary | std::ios::trunc);
        if (buffer.size() > 0)
            target << &buffer;
        target.close();
        stream.clear();
        stream.seekg(0);
        return target.good();
    }
};

file::file() : content_(std::make_unique<content>()) {}

file::~file() = default;

std::string file::name() const {
    return name_;
}

std::string file::mime() const {
    return mime_;
}

bool file::has_mime() const {
    return has_mime_;
}

std::string file::filename() const {
    return filename_;
}

void file::name(std::string const &name) {
    name_ = name;
}

void file::mime(std::string const &type) {
    mime_ = type;
    has_mime_ = true;
}

void file::filename(std::string const &name) {
    filename_ = name;
}

std::istream &file::data() {
    return content_->stream;
}

std::ostream &file::write_data() {
    return content_->stream;
}

long long file::size() {
    return content_->buffer.size();
}

void file::save_to(std::string const &path) {
    impl::spool_buffer &buffer = content_->buffer;
    bool const in_memory = buffer.path().empty();
    bool const movable = !in_memory && content_->remove && !buffer.is_closed();
    if (movable && std::rename(buffer.path().c_str(), path.c_str()) == 0)
        content_->remove = false;
    else if (!content_->copy_to(path))
        throw cppcms_error("Failed to save open file:" + path);
    if (!in_memory)
        buffer.close();
}

void file::output_file(std::string const &path, bool temporary) {
    if (!content_->buffer.use_file(path))
        throw cppcms_error("Failed to open file:" + path);
    content_->remove = temporary;
}

void file::make_permanent() {
    content_->remove = false;
}

void file::close() {
    content_->buffer.close();
}

void file::set_memory_limit(std::size_t bytes) {
    content_->buffer.set_memory_limit(bytes);
}

void file::set_temporary_directory(std::string const &directory) {
    content_->buffer.set_temporary_directory(directory);
}

}  // namespace cppcms::http
