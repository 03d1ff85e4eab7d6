# Files of more than 2 GiB and times after 2038, on boards of 32 bits too; WEBCONFIG_WIDE_TYPES is for plug-ins.
set(WEBCONFIG_WIDE_TYPES)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(WEBCONFIG_WIDE_TYPES _FILE_OFFSET_BITS=64 _TIME_BITS=64)
endif()
add_compile_definitions(${WEBCONFIG_WIDE_TYPES})
