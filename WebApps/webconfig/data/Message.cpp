#include "WebApps/webconfig/data/Message.h"

#include <utility>

#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::data {

Message::Message(ResultClass resultClass, std::string text, bool persistent)
    : _resultClass(resultClass), _text(std::move(text)), _persistent(persistent) {}

Message Message::OK(std::string text, bool persistent) {
    return {ResultClass::Ok, std::move(text), persistent};
}

Message Message::Error(std::string text, bool persistent) {
    return {ResultClass::Error, std::move(text), persistent};
}

Message Message::Custom(std::string text, std::string cssClass, bool persistent) {
    Message message(ResultClass::Custom, std::move(text), persistent);
    message.SetCssClass(std::move(cssClass));
    return message;
}

Message Message::SaveOK() {
    return OK("Success: The form values were saved.");
}

Message Message::SaveError() {
    return Error("Save error: The form values were not saved.");
}

Message Message::ValidationError() {
    return Error("Invalid values: The form values were not saved.");
}

std::string Message::GetShownText() const {
    return util::Translate(_text);
}

void Message::SetMessage(std::string text) {
    _text = std::move(text);
}

void Message::SetCssClass(std::string cssClass) {
    _cssClass = std::move(cssClass);
    _resultClass = ResultClass::Custom;
}

}  // namespace webconfig::data
