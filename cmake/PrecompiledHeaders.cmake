# Headers that most sources of a target read anyway, parsed once. A target says which of these sets it takes:
#
#   webconfig_precompile(TARGET standard|application|test)
#
# Sources still include what they use: lint builds without (CMAKE_DISABLE_PRECOMPILE_HEADERS).
set(webconfig_headers_standard
    <algorithm> <array> <chrono> <filesystem> <fstream> <functional> <map> <memory> <mutex> <optional> <sstream>
    <string> <string_view> <thread> <utility> <vector>)
set(webconfig_headers_application
    ${webconfig_headers_standard}
    <booster/log.h> <cppcms/application.h> <cppcms/form.h> <cppcms/http_context.h> <cppcms/http_request.h>
    <cppcms/http_response.h> <cppcms/json.h> <cppcms/service.h> <cppcms/url_dispatcher.h> <cppcms/url_mapper.h>)
set(webconfig_headers_test ${webconfig_headers_standard} <gtest/gtest.h>)

function(webconfig_precompile target set)
    target_precompile_headers(${target} PRIVATE ${webconfig_headers_${set}})
endfunction()
