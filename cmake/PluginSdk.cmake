# The component "plugin-sdk" of the installation: what a plug-in is built with, outside this tree.
#
#   cmake --install BUILD --component plugin-sdk --prefix FOLDER
#
# docs/plugins.md tells how it is used.
include(CMakePackageConfigHelpers)
set(package webconfig-plugin)
set(package_folder lib/cmake/${package})

foreach(header
        plugin.h
        apps/Base.h
        data/Base.h
        data/BaseTabbed.h
        data/ChangedSetting.h
        data/Menu.h
        data/Message.h
        data/TrialNotice.h
        forms/Base.h
        util/Branding.h
        util/Log.h
        util/Prm.h
        widgets/Button.h)
    cmake_path(GET header PARENT_PATH folder)
    install(FILES WebApps/webconfig/${header}
        DESTINATION include/${package}/WebApps/webconfig/${folder} COMPONENT plugin-sdk)
endforeach()
if(WEBCONFIG_FRAMEWORK_PROVIDER STREQUAL bundled)
    install(DIRECTORY framework/include/ DESTINATION include/${package} COMPONENT plugin-sdk)
endif()
# Ours or the maker's: the header that the process itself is built with.
install(DIRECTORY $<TARGET_PROPERTY:webconfig::prm,INTERFACE_INCLUDE_DIRECTORIES>/prm
    DESTINATION include/${package} COMPONENT plugin-sdk)

install(FILES
    WebApps/webconfig/views/Base.tmpl
    WebApps/webconfig/views/BaseForm.tmpl
    WebApps/webconfig/views/BaseFormTabbed.tmpl
    WebApps/webconfig/views/BaseTabbed.tmpl
    DESTINATION share/${package}/views COMPONENT plugin-sdk)
if(WEBCONFIG_FRAMEWORK_PROVIDER STREQUAL bundled)
    install(PROGRAMS ${WEBCONFIG_TMPL_CC_SCRIPT} DESTINATION share/${package} COMPONENT plugin-sdk)
endif()

configure_package_config_file(cmake/${package}-config.cmake.in ${package}-config.cmake
    INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${package}-config-version.cmake COMPATIBILITY ExactVersion)
install(FILES
    cmake/Templates.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/${package}-config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/${package}-config-version.cmake
    DESTINATION ${package_folder} COMPONENT plugin-sdk)
