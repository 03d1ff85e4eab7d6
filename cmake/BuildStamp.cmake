# WEBCONFIG_BUILD_STAMP: when the sources were made, as "Oct  8 202401:42:07" (date and time in UTC, no
# separator). From SOURCE_DATE_EPOCH, else the last commit, else now. The same sources give the same stamp.
set(epoch "$ENV{SOURCE_DATE_EPOCH}")
if(NOT epoch)
    execute_process(COMMAND git log -1 --format=%ct
        WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
        OUTPUT_VARIABLE epoch OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    # A new commit is a new stamp: configure again.
    if(EXISTS ${PROJECT_SOURCE_DIR}/.git/logs/HEAD)
        set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY
            CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/.git/logs/HEAD)
    endif()
endif()

set(outer_epoch "$ENV{SOURCE_DATE_EPOCH}")
set(ENV{SOURCE_DATE_EPOCH} "${epoch}")
string(TIMESTAMP WEBCONFIG_BUILD_STAMP "%b %d %Y%H:%M:%S" UTC)
set(ENV{SOURCE_DATE_EPOCH} "${outer_epoch}")
string(REGEX REPLACE " 0([1-9] )" "  \\1" WEBCONFIG_BUILD_STAMP "${WEBCONFIG_BUILD_STAMP}")

configure_file(${PROJECT_SOURCE_DIR}/WebApps/webconfig/apps/BuildStamp.h.in
    ${PROJECT_BINARY_DIR}/WebApps/webconfig/WebApps/webconfig/apps/BuildStamp.h @ONLY)
