#pragma once

#include <string>

namespace webconfig::data {

/// The one result message of a page.
class Message {
  public:
    /// How the message box looks: not at all, as a success, as a failure, or by the css class.
    enum class ResultClass { None = 0, Ok = 1, Error = 2, Custom = 3 };

    Message() = default;
    Message(ResultClass resultClass, std::string text, bool persistent);
    Message(Message const &) = default;
    Message(Message &&) = default;
    Message &operator=(Message const &) = default;
    Message &operator=(Message &&) = default;
    virtual ~Message() = default;

    static Message OK(std::string text, bool persistent = false);
    static Message Error(std::string text, bool persistent = false);
    static Message Custom(std::string text, std::string cssClass, bool persistent = false);

    static Message SaveOK();
    static Message SaveError();
    static Message ValidationError();

    ResultClass GetResultClass() const { return _resultClass; }
    void SetResult(ResultClass resultClass) { _resultClass = resultClass; }

    std::string const &GetText() const { return _text; }
    /// The text in the language of the page.
    std::string GetShownText() const;
    void SetMessage(std::string text);

    /// A persistent message stays on the page; others are cleared by the page's script.
    bool IsPersistent() const { return _persistent; }
    void SetPersistent(bool persistent) { _persistent = persistent; }

    std::string const &GetCssClass() const { return _cssClass; }
    /// Makes the message a custom one, whatever it was.
    void SetCssClass(std::string cssClass);

    /// Whether the text is empty; the result class is not looked at.
    bool IsEmpty() const { return _text.empty(); }
    /// Empties the text only: the box stays, with its result class.
    void Clear() { _text.clear(); }

  private:
    ResultClass _resultClass = ResultClass::None;
    std::string _text;
    bool _persistent = false;
    std::string _cssClass;
};

}  // namespace webconfig::data
