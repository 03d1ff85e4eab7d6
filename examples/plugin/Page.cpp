#include "Page.h"

#include <cppcms/json.h>
#include <cppcms/url_dispatcher.h>
#include <cppcms/url_mapper.h>

#include "Content.h"

namespace traffic_plugin {

Page::Page(cppcms::service &service) : webconfig::apps::Base(service, "traffic") {
    dispatcher().assign("/interfaces", &Page::Interfaces, this);
    mapper().assign("interfaces", "/interfaces");
}

void Page::Interfaces() {
    Content content;
    Prepare(content);
    content.title = "Interface Traffic";
    content.status_url = '/' + settings().get<std::string>("webconfig.root.async") + "/traffic";
    render("traffic", "Traffic", content);
}

}  // namespace traffic_plugin
