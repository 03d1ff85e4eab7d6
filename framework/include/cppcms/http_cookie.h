#pragma once

#include <ctime>
#include <iosfwd>
#include <optional>
#include <string>

namespace cppcms::http {

/// A cookie, as received or to be set.
class cookie {
  public:
    cookie() = default;
    cookie(std::string const &name, std::string const &value) : name_(name), value_(value) {}
    cookie(std::string const &name, std::string const &value, std::string const &path,
           std::string const &domain = "", std::string const &comment = "")
        : name_(name), value_(value), path_(path), domain_(domain), comment_(comment) {}

    std::string name() const { return name_; }
    std::string value() const { return value_; }
    std::string path() const { return path_; }
    std::string domain() const { return domain_; }
    std::string comment() const { return comment_; }
    bool secure() const { return secure_; }
    bool httponly() const { return httponly_; }
    bool empty() const { return name_.empty() && value_.empty(); }

    void name(std::string const &name) { name_ = name; }
    void value(std::string const &value) { value_ = value; }
    void path(std::string const &path) { path_ = path; }
    void domain(std::string const &domain) { domain_ = domain; }
    void comment(std::string const &comment) { comment_ = comment; }
    /// When the cookie is to be forgotten.
    void expires(std::time_t when) { expires_ = when; }
    /// Seconds after which the cookie is to be forgotten.
    void max_age(unsigned seconds) { max_age_ = seconds; }
    /// Forget the cookie with the browser's end.
    void browser_age() {
        expires_.reset();
        max_age_.reset();
    }
    void secure(bool on) { secure_ = on; }
    void httponly(bool on) { httponly_ = on; }

  private:
    friend std::ostream &operator<<(std::ostream &out, cookie const &c);

    std::string name_;
    std::string value_;
    std::string path_;
    std::string domain_;
    std::string comment_;
    std::optional<std::time_t> expires_;
    std::optional<unsigned> max_age_;
    bool secure_ = false;
    bool httponly_ = false;
};

/// Writes the header line that sets the cookie.
std::ostream &operator<<(std::ostream &out, cookie const &c);

}  // namespace cppcms::http
