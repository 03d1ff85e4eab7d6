# Compiles page templates to a C++ source.
#
#   webconfig_compile_templates(OUTPUT <variable> SKIN <skin> SOURCES <file>...)
#
# <variable> receives the path of the generated source, in the build tree. Files are relative to the
# current source folder and are compiled in the order given: base views first, and this is also the order
# in which the views are registered. List the source in an executable or OBJECT library of the calling
# folder: a static library would lose the registration, which nothing refers to.
function(webconfig_compile_templates)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "OUTPUT;SKIN" "SOURCES")
    foreach(required OUTPUT SKIN SOURCES)
        if(NOT arg_${required})
            message(FATAL_ERROR "webconfig_compile_templates needs ${required}")
        endif()
    endforeach()
    if(arg_UNPARSED_ARGUMENTS)
        message(FATAL_ERROR "webconfig_compile_templates does not know: ${arg_UNPARSED_ARGUMENTS}")
    endif()

    # The compiler writes the paths it is given into #line directives. Relative to the top of the
    # checkout, they do not depend on where the checkout is.
    set(templates)
    set(depends)
    foreach(file IN LISTS arg_SOURCES)
        cmake_path(ABSOLUTE_PATH file OUTPUT_VARIABLE absolute)
        cmake_path(RELATIVE_PATH absolute BASE_DIRECTORY ${PROJECT_SOURCE_DIR} OUTPUT_VARIABLE relative)
        list(APPEND depends ${absolute})
        list(APPEND templates ${relative})
    endforeach()

    set(generated ${CMAKE_CURRENT_BINARY_DIR}/${arg_SKIN}_skin.cpp)
    add_custom_command(
        OUTPUT ${generated}
        COMMAND ${WEBCONFIG_TMPL_CC} -s ${arg_SKIN} -o ${generated} ${templates}
        DEPENDS ${depends} ${WEBCONFIG_TMPL_CC_SCRIPT}
        WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
        COMMENT "Compiling the templates of skin ${arg_SKIN}"
        VERBATIM)
    # A template may ignore a parameter that its signature prescribes, or repeat a text for each item
    # without looking at the item.
    set_source_files_properties(${generated} PROPERTIES
        COMPILE_OPTIONS "-Wno-unused-parameter;-Wno-unused-variable")
    set(${arg_OUTPUT} ${generated} PARENT_SCOPE)
endfunction()
