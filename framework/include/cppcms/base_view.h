#pragma once

#include <booster/noncopyable.h>
#include <cppcms/base_content.h>

#include <ostream>
#include <string>

#define CPPCMS_TYPEOF(expression) auto

namespace cppcms {

/// Base of all views: writes a record to a stream, which must outlive it.
class base_view : public booster::noncopyable {
  public:
    virtual void render() {}
    virtual ~base_view() = default;

  protected:
    base_view(std::ostream &out) : out_(out) {}
    std::ostream &out() { return out_; }

  private:
    std::ostream &out_;
};

/// Messages written to a stream are translated by the catalogue of a domain while the scope lives.
/// A negative id changes nothing.
class translation_domain_scope : public booster::noncopyable {
  public:
    translation_domain_scope(std::ostream &out, int id);
    translation_domain_scope(std::ostream &out, std::string const &domain);
    ~translation_domain_scope();

    /// Id of a domain in the stream's locale, -1 for an unknown one; std::bad_cast where the locale was
    /// not made by a generator.
    static int domain_id(std::ostream &out, std::string const &domain);

  private:
    std::ostream &out_;
    int previous_id_ = -1;
};

}  // namespace cppcms
