# Chooses who provides the web framework's API (cppcms 2): an installed copy, or ours in framework/.
# Afterwards the target webconfig::framework is there to link, and WEBCONFIG_TMPL_CC is the command
# that compiles templates.
set(WEBCONFIG_FRAMEWORK auto CACHE STRING "Provider of the cppcms 2 API: auto, bundled or system")
set_property(CACHE WEBCONFIG_FRAMEWORK PROPERTY STRINGS auto bundled system)

find_package(Python3 REQUIRED COMPONENTS Interpreter)

if(WEBCONFIG_FRAMEWORK MATCHES "^(auto|system)$")
    find_path(CPPCMS_INCLUDE_DIR cppcms/application.h)
    find_library(CPPCMS_LIBRARY cppcms)
    find_library(BOOSTER_LIBRARY booster)
    find_program(CPPCMS_TMPL_CC cppcms_tmpl_cc)
    # Version 2 is told from version 1 by a header that only version 2 has.
    find_file(CPPCMS_VERSION_2 cppcms/http_content_filter.h PATHS ${CPPCMS_INCLUDE_DIR} NO_DEFAULT_PATH)
    if(CPPCMS_INCLUDE_DIR AND CPPCMS_LIBRARY AND BOOSTER_LIBRARY AND CPPCMS_TMPL_CC AND CPPCMS_VERSION_2)
        set(WEBCONFIG_FRAMEWORK_PROVIDER system)
    endif()
elseif(NOT WEBCONFIG_FRAMEWORK STREQUAL bundled)
    message(FATAL_ERROR "WEBCONFIG_FRAMEWORK must be auto, bundled or system, not '${WEBCONFIG_FRAMEWORK}'")
endif()

if(WEBCONFIG_FRAMEWORK_PROVIDER STREQUAL system)
    add_library(webconfig_framework INTERFACE)
    target_include_directories(webconfig_framework SYSTEM INTERFACE ${CPPCMS_INCLUDE_DIR})
    target_link_libraries(webconfig_framework INTERFACE ${CPPCMS_LIBRARY} ${BOOSTER_LIBRARY} Threads::Threads)
    add_library(webconfig::framework ALIAS webconfig_framework)
    set(WEBCONFIG_TMPL_CC ${Python3_EXECUTABLE} ${CPPCMS_TMPL_CC})
    set(WEBCONFIG_TMPL_CC_SCRIPT ${CPPCMS_TMPL_CC})
    message(STATUS "Web framework: installed cppcms in ${CPPCMS_INCLUDE_DIR}")
elseif(WEBCONFIG_FRAMEWORK STREQUAL system)
    message(FATAL_ERROR "WEBCONFIG_FRAMEWORK=system needs an installed cppcms 2: its headers, libcppcms, "
                        "libbooster and cppcms_tmpl_cc (set CMAKE_PREFIX_PATH)")
else()
    set(WEBCONFIG_FRAMEWORK_PROVIDER bundled)
    add_subdirectory(framework)
    set(WEBCONFIG_TMPL_CC_SCRIPT ${CMAKE_SOURCE_DIR}/framework/tools/tmpl_cc.py)
    set(WEBCONFIG_TMPL_CC ${Python3_EXECUTABLE} ${WEBCONFIG_TMPL_CC_SCRIPT})
    message(STATUS "Web framework: bundled (framework/)")
endif()
