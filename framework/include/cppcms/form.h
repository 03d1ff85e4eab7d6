#pragma once

#include <booster/noncopyable.h>
#include <booster/perl_regex.h>
#include <booster/shared_ptr.h>
#include <cppcms/cppcms_error.h>
#include <cppcms/http_context.h>
#include <cppcms/http_request.h>
#include <cppcms/http_response.h>
#include <cppcms/localization.h>
#include <cppcms/util.h>

#include <cstddef>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace cppcms {

namespace http {
class file;
}

namespace widgets {
class base_widget;
}

/// How forms are written.
struct form_flags {
    typedef enum { as_html = 0, as_xhtml = 1 } html_type;
    /// A control is written in two parts; its attributes string stands between them.
    typedef enum { first_part = 0, second_part = 1 } widget_part_type;
};

/// Where and how a form is written.
class form_context : public form_flags {
  public:
    form_context() = default;
    form_context(std::ostream &out, html_type html = as_html) : html_(html), out_(&out) {}

    void html(html_type type) { html_ = type; }
    void widget_part(widget_part_type part) { part_ = part; }
    void out(std::ostream &out) { out_ = &out; }

    html_type html() const { return html_; }
    widget_part_type widget_part() const { return part_; }
    /// cppcms_error where no stream was given.
    std::ostream &out() const;

  private:
    html_type html_ = as_html;
    widget_part_type part_ = first_part;
    std::ostream *out_ = nullptr;
};

/// What forms and widgets have in common.
class base_form : public form_flags {
  public:
    /// Takes the values that the request carries.
    virtual void load(http::context &context) = 0;
    /// Whether the loaded values are acceptable.
    virtual bool validate() = 0;
    virtual void clear() = 0;
    virtual void parent(base_form *form) = 0;
    virtual base_form *parent() = 0;
    virtual ~base_form() = default;
};

/// A list of widgets and sub-forms. load(), validate() and clear() go through it in order.
class form : public booster::noncopyable, public base_form {
  public:
    class iterator;

    void load(http::context &context) override;
    /// Validates all elements, also after one that is not valid.
    bool validate() override;
    void clear() override;
    void parent(base_form *form) override { parent_ = form; }
    base_form *parent() override { return parent_; }

    /// Adds an element, which must outlive this form.
    void add(form &sub_form);
    void add(widgets::base_widget &widget);
    /// Adds an element and owns it.
    void attach(form *sub_form);
    void attach(widgets::base_widget *widget);
    [[deprecated("use add()")]] form &operator+(form &sub_form);
    [[deprecated("use add()")]] form &operator+(widgets::base_widget &widget);

    iterator begin();
    iterator end();

  private:
    using element = std::variant<form *, widgets::base_widget *>;
    static base_form &base(element const &element);

    base_form *parent_ = nullptr;
    std::vector<element> elements_;
    std::vector<std::unique_ptr<base_form>> owned_;
};

/// Walks the widgets of a form, those of sub-forms at the sub-form's place.
class form::iterator {
  public:
    using iterator_category = std::input_iterator_tag;
    using value_type = widgets::base_widget;
    using difference_type = std::ptrdiff_t;
    using pointer = widgets::base_widget *;
    using reference = widgets::base_widget &;

    /// The end of any form.
    iterator() = default;

    reference operator*() const;
    pointer operator->() const { return &**this; }
    iterator &operator++();
    iterator operator++(int);
    bool operator==(iterator const &) const = default;

  private:
    friend class form;
    explicit iterator(form &whole);
    void settle();

    /// Forms from the outermost to the one the widget is in, each with the place of the current element.
    std::vector<std::pair<form *, std::size_t>> path_;
};

namespace widgets {

namespace details {

/// The first value that was sent under a name, a null pointer where there is none.
std::string const *first_value(http::context &context, std::string const &name);

/// A text shown to the user: as it is, or a message translated when it is written.
class caption {
  public:
    caption() = default;
    caption(std::string const &text) : text_(text) {}
    caption(locale::message const &message) : text_(message) {}

    friend std::ostream &operator<<(std::ostream &out, caption const &caption) {
        std::visit([&](auto const &text) { out << text; }, caption.text_);
        return out;
    }

  private:
    std::variant<std::string, locale::message> text_;
};

}  // namespace details

/// A control of a form with the texts around it. It does not own its form.
class base_widget : public booster::noncopyable, public base_form {
  public:
    base_widget() = default;

    /// Whether there is a value.
    bool set() { return set_; }
    void set(bool is_set) { set_ = is_set; }
    /// Result of the last load or validation, true before any.
    bool valid() { return valid_; }
    void valid(bool is_valid) { valid_ = is_valid; }
    bool disabled() { return disabled_; }
    void disabled(bool is_disabled) { disabled_ = is_disabled; }
    bool readonly() { return readonly_; }
    void readonly(bool is_readonly) { readonly_ = is_readonly; }

    /// Id and name are written as they are. A widget without a name gets `_N`, N its place in the
    /// outermost form, when a widget of that form is first loaded or written.
    std::string id() { return id_; }
    void id(std::string const &id) { id_ = id; }
    std::string name() { return name_; }
    void name(std::string const &name) { name_ = name; }
    /// More attributes, written as they are and without a blank before them.
    std::string attributes_string() { return attributes_; }
    void attributes_string(std::string const &attributes) { attributes_ = attributes; }

    bool has_message() { return message_.has_value(); }
    bool has_error_message() { return error_message_.has_value(); }
    bool has_help() { return help_.has_value(); }
    locale::message message() { return message_.value_or(locale::message()); }
    locale::message error_message() { return error_message_.value_or(locale::message()); }
    locale::message help() { return help_.value_or(locale::message()); }
    void message(std::string const &text) { message_.emplace(text); }
    void message(locale::message const &text) { message_ = text; }
    void error_message(std::string const &text) { error_message_.emplace(text); }
    void error_message(locale::message const &text) { error_message_ = text; }
    void help(std::string const &text) { help_.emplace(text); }
    void help(locale::message const &text) { help_ = text; }

    /// Writes one part of the control.
    virtual void render_input(form_context &context) = 0;
    /// Forgets that there is a value; valid() stays.
    void clear() override;
    bool validate() override;
    /// Writes the attributes of the control's first part.
    virtual void render_attributes(form_context &context);
    void parent(base_form *form) override { parent_ = form; }
    base_form *parent() override { return parent_; }

    /// To be called first by each load().
    void pre_load(http::context &context);

  protected:
    void auto_generate(form_context *context = nullptr);

  private:
    void number(unsigned place);

    base_form *parent_ = nullptr;
    std::string id_;
    std::string name_;
    std::string attributes_;
    std::optional<locale::message> message_;
    std::optional<locale::message> error_message_;
    std::optional<locale::message> help_;
    bool set_ = false;
    bool valid_ = true;
    bool disabled_ = false;
    bool readonly_ = false;
    bool numbered_ = false;
};

/// A widget whose value is text.
class base_text : virtual public base_widget {
  public:
    /// cppcms_error where there is no value.
    std::string value();
    void value(std::string const &text);

    /// Least and greatest length in code points, -1 for no upper limit. Counted when the text is loaded.
    void limits(int min, int max);
    /// limits(1, -1).
    void non_empty();
    /// Whether the text must be valid in the request's encoding (default). If not, limits count bytes.
    void validate_charset(bool on) { validate_charset_ = on; }

    void load(http::context &context) override;
    bool validate() override;
    void clear() override;

  private:
    friend class text;
    friend class textarea;
    /// For rendering: the text, set or not.
    std::string text_;
    int low_ = 0;
    int high_ = -1;
    std::size_t length_ = 0;
    bool validate_charset_ = true;
};

/// A widget that is one `<input>` element.
class base_html_input : virtual public base_widget {
  public:
    base_html_input(std::string const &type) : type_(type) {}
    void render_input(form_context &context) override;

  protected:
    /// Writes the attributes that carry the value.
    virtual void render_value(form_context &context) = 0;

  private:
    std::string type_;
};

class text : public base_html_input, public base_text {
  public:
    text() : text("text") {}

    /// Width of the control in characters, -1 for none.
    void size(int characters) { size_ = characters; }

    void render_attributes(form_context &context) override;

  protected:
    text(std::string const &type) : base_html_input(type) {}
    void render_value(form_context &context) override;

  private:
    int size_ = -1;
};

/// A field that is not shown.
class hidden : public text {
  public:
    hidden() : text("hidden") {}
};

class password : public text {
  public:
    password() : text("password") {}
    /// Validation also demands the same value as \a other, which must be validated before.
    void check_equal(password &other) { other_ = &other; }
    bool validate() override;

  private:
    password *other_ = nullptr;
};

class textarea : public base_text {
  public:
    // Size of the control in characters, -1 for none.
    void rows(int n) { rows_ = n; }
    void cols(int n) { cols_ = n; }

    void render_input(form_context &context) override;

  private:
    int rows_ = -1;
    int cols_ = -1;
};

/// A text that must match an expression as a whole.
class regex_field : public text {
  public:
    regex_field() = default;
    regex_field(booster::regex const &expression) : expression_(expression) {}
    regex_field(std::string const &expression) : expression_(expression) {}

    void regex(booster::regex const &expression) { expression_ = expression; }
    /// Throws booster::regex_error where no expression was given.
    bool validate() override;

  private:
    booster::regex expression_;
};

class email : public regex_field {
  public:
    email();
};

/// A number, in the format of the request's locale. An empty field is no value, but valid unless required.
template <typename T>
class numeric : public base_html_input {
  public:
    numeric() : base_html_input("text") {}

    void non_empty() { non_empty_ = true; }
    // Limits; each makes the field required.
    void low(T limit) {
        low_ = limit;
        non_empty();
    }
    void high(T limit) {
        high_ = limit;
        non_empty();
    }
    void range(T low_limit, T high_limit) {
        low(low_limit);
        high(high_limit);
    }

    /// cppcms_error where there is no value.
    T value() {
        if (!set())
            throw cppcms_error("Value not loaded");
        return value_;
    }
    void value(T number) {
        value_ = number;
        set(true);
    }

    void load(http::context &context) override {
        pre_load(context);
        set(false);
        valid(true);
        loaded_.clear();
        auto const *sent = details::first_value(context, name());
        if (!sent || sent->empty())
            return;
        loaded_ = *sent;
        std::istringstream in(loaded_);
        in.imbue(context.locale());
        if (in >> value_ && in.peek() == std::char_traits<char>::eof())
            set(true);
        else
            valid(false);
    }
    bool validate() override {
        if (!valid())
            return false;
        valid(set() ? !(low_ && value_ < *low_) && !(high_ && value_ > *high_) : !non_empty_);
        return valid();
    }
    void clear() override {
        base_html_input::clear();
        loaded_.clear();
    }

  protected:
    void render_value(form_context &context) override {
        context.out() << "value=\"";
        if (set())
            context.out() << value_;
        else
            context.out() << util::escape(loaded_);
        context.out() << "\" ";
    }

  private:
    T value_{};
    std::string loaded_;
    std::optional<T> low_;
    std::optional<T> high_;
    bool non_empty_ = false;
};

class checkbox : public base_html_input {
  public:
    checkbox();

    /// The value that is sent when the box is checked; "y" by default.
    void identification(std::string const &value) { identification_ = value; }

    bool value() { return checked_; }
    void value(bool checked) { checked_ = checked; }

    void load(http::context &context) override;

  protected:
    void render_value(form_context &context) override;

  private:
    std::string identification_ = "y";
    bool checked_ = false;
};

/// A button that sends the form.
class submit : public base_html_input {
  public:
    submit();

    /// Whether this button sent the form.
    bool value() { return pressed_; }
    /// Sets the caption.
    void value(std::string const &caption) { caption_ = caption; }
    void value(locale::message const &caption) { caption_ = caption; }

    void load(http::context &context) override;

  protected:
    void render_value(form_context &context) override;

  private:
    details::caption caption_;
    bool pressed_ = false;
};

/// A choice of at most one of several elements. An element without an id gets its index.
class select_base : public base_widget {
  public:
    void add(std::string const &text);
    void add(std::string const &text, std::string const &id);
    void add(locale::message const &text);
    void add(locale::message const &text, std::string const &id);

    /// Index of the selected element, -1 for none.
    int selected() { return selected_; }
    /// Id of the selected element, "" for none.
    std::string selected_id();
    // Selects an element, which is also what clear() selects again. A negative index and the id "" select
    // none; cppcms_error for an index or id that does not exist.
    void selected(int index);
    void selected_id(std::string const &id);

    /// Demands a selection.
    void non_empty() { non_empty_ = true; }

    void load(http::context &context) override;
    bool validate() override;
    void clear() override;

  private:
    friend class select;
    friend class radio;

    struct element {
        std::string id;
        details::caption text;
    };
    int find(std::string const &id) const;

    std::vector<element> elements_;
    int selected_ = -1;
    int default_selected_ = -1;
    bool non_empty_ = false;
};

/// A drop-down list.
class select : public select_base {
  public:
    void render_input(form_context &context) override;
};

/// Radio buttons.
class radio : public select_base {
  public:
    /// One button a line (default).
    void vertical(bool on) { vertical_ = on; }

    void render_input(form_context &context) override;

  private:
    bool vertical_ = true;
};

/// A list of which several elements may be selected. An element without an id gets its index.
class select_multiple : public base_widget {
  public:
    // Two literals as arguments mean a text and \a selected: give an id as std::string.
    void add(std::string const &text, bool selected = false);
    void add(std::string const &text, std::string const &id, bool selected = false);
    void add(locale::message const &text, bool selected = false);
    void add(locale::message const &text, std::string const &id, bool selected = false);

    /// For each element, whether it is selected.
    std::vector<bool> selected_map();
    std::set<std::string> selected_ids();

    void at_least(unsigned n) { at_least_ = n; }
    void at_most(unsigned n) { at_most_ = n; }
    void non_empty() { at_least(1); }
    /// Visible lines of the control, 0 for the browser's own choice.
    void rows(unsigned n) { rows_ = n; }

    void load(http::context &context) override;
    bool validate() override;
    void clear() override;
    void render_input(form_context &context) override;

  private:
    struct element {
        std::string id;
        details::caption text;
        bool selected;
        bool selected_by_default;
    };
    void add(details::caption const &text, std::string const &id, bool selected);

    std::vector<element> elements_;
    unsigned at_least_ = 0;
    unsigned at_most_ = std::numeric_limits<unsigned>::max();
    unsigned rows_ = 0;
};

/// An uploaded file. A browser sends an empty file where the operator chose none: demand a least size.
class file : public base_html_input {
  public:
    file();

    void non_empty() { non_empty_ = true; }
    /// Least and greatest size in bytes, -1 for no limit. Checked only where a file was sent.
    void limits(int min, int max);
    /// What the file name must match as a whole.
    void filename(booster::regex const &expression) { filename_ = expression; }
    // The media type, exactly or as an expression; each call replaces the last one.
    void mime(std::string const &type) { mime_ = type; }
    void mime(booster::regex const &expression) { mime_ = expression; }
    /// Bytes the file may begin with; with several calls any of them.
    void add_valid_magic(std::string const &bytes) { magic_.push_back(bytes); }

    /// cppcms_error where no file was sent.
    booster::shared_ptr<http::file> value();

    void load(http::context &context) override;
    bool validate() override;

  protected:
    void render_value(form_context &context) override;

  private:
    bool has_valid_size() const;
    bool has_valid_type() const;
    bool has_valid_magic() const;

    booster::shared_ptr<http::file> file_;
    booster::regex filename_;
    std::variant<std::monostate, std::string, booster::regex> mime_;
    std::vector<std::string> magic_;
    int min_size_ = -1;
    int max_size_ = -1;
    bool non_empty_ = false;
};

}  // namespace widgets

}  // namespace cppcms
