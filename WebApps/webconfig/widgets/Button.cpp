#include "WebApps/webconfig/widgets/Button.h"

#include <cppcms/util.h>

#include <ostream>

#include "WebApps/webconfig/util/Translate.h"

namespace webconfig::widgets {

void Button::value(std::string const &caption) {
    _caption = caption;
    submit::value(caption);
}

void Button::render_input(cppcms::form_context &context) {
    std::string const shown = util::Translate(_caption);
    if (shown == _caption) {
        submit::render_input(context);
    } else if (context.widget_part() == first_part) {
        context.out() << "<button type=\"submit\" ";
        render_attributes(context);
        context.out() << "value=\"" << cppcms::util::escape(_caption) << "\" ";
    } else {
        context.out() << '>' << cppcms::util::escape(shown) << "</button>";
    }
}

std::string ButtonMarkup(std::string const &attributes, std::string const &caption) {
    std::string const shown = util::Translate(caption);
    std::string const common =
        "type=\"submit\" " + attributes + " value=\"" + cppcms::util::escape(caption) + '"';
    return shown == caption ? "<input " + common + "/>"
                            : "<button " + common + '>' + cppcms::util::escape(shown) + "</button>";
}

}  // namespace webconfig::widgets
