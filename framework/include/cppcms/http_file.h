#pragma once

#include <booster/noncopyable.h>

#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string>

namespace cppcms::http {

/// An uploaded file. Small content stays in memory, larger content in a temporary file that is removed
/// with this object.
class file : public booster::noncopyable {
  public:
    file();
    ~file();

    /// Name of the form field.
    std::string name() const;
    /// Media type without parameters, in lower case.
    std::string mime() const;
    bool has_mime() const;
    /// The file's name as the client gave it, whatever that is.
    std::string filename() const;

    void name(std::string const &name);
    void mime(std::string const &type);
    void filename(std::string const &name);

    /// The content, positioned at its start when the request is served.
    std::istream &data();
    /// Appends to the content. The stream fails when there is no room.
    std::ostream &write_data();
    /// Size of the content in bytes.
    long long size();

    /// Stores the content under \a path, replacing what is there. Content in a temporary file is moved
    /// there, and is then no longer readable here. Throws cppcms_error.
    void save_to(std::string const &path);

    /// Keeps the content in the file \a path from now on; it is removed with this object if \a temporary.
    /// To be called before anything is written. Throws cppcms_error.
    void output_file(std::string const &path, bool temporary = false);
    /// Keeps the file of the content when this object dies.
    void make_permanent();
    void close();

    /// Most bytes that are held in memory.
    void set_memory_limit(std::size_t bytes);
    /// Where temporary files go; by default what TEMP or TMP name, else /tmp.
    void set_temporary_directory(std::string const &directory);

  private:
    struct content;
    std::unique_ptr<content> content_;
    std::string name_;
    std::string mime_;
    std::string filename_;
    bool has_mime_ = false;
};

}  // namespace cppcms::http
