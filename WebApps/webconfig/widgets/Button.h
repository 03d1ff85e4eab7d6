#pragma once

#include <cppcms/form.h>

#include <string>

namespace webconfig::widgets {

/// A button that sends one value, by which handlers and scripts know it, whatever language its caption is in.
class Button : public cppcms::widgets::submit {
  public:
    using submit::value;
    /// Sets what it sends, and shows in English.
    void value(std::string const &caption);

    void render_input(cppcms::form_context &context) override;

  private:
    std::string _caption;
};

/// The markup of a button like that which belongs to no form's class. \a attributes are written as they are.
std::string ButtonMarkup(std::string const &attributes, std::string const &caption);

}  // namespace webconfig::widgets
