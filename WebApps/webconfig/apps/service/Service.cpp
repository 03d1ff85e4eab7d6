#include "WebApps/webconfig/apps/Service.h"

#include <cppcms/url_dispatcher.h>
#include <cppcms/url_mapper.h>

#include <utility>

namespace webconfig::apps {

Service::Service(cppcms::service &service, std::string appVolumeName)
    : Base(service, std::move(appVolumeName)) {
    mapper().assign("/");
    mapper().assign("assemblysn", "/assemblysn");
    for (char const *path : {"/?", "", "/assemblysn"})
        dispatcher().assign(path, &Service::SerialNumberHandler, this);
}

}  // namespace webconfig::apps
