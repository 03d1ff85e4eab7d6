# Compile and link options of everything that is built here. Source paths are mapped to be relative to
# the checkout, so that a binary does not depend on the folder it was built in.
find_package(Threads REQUIRED)

add_compile_options(-Wall -Wextra -Wpedantic -Werror)
# So that ccache hashes a precompiled header instead of all that is in it.
add_compile_options(-fpch-preprocess)
add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}/= -ffile-prefix-map=${CMAKE_BINARY_DIR}/=)

if(WEBCONFIG_SANITIZE)
    add_compile_options(-fsanitize=${WEBCONFIG_SANITIZE} -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${WEBCONFIG_SANITIZE})
    if(WEBCONFIG_SANITIZE STREQUAL thread)
        add_compile_options(-Wno-tsan)  # Asio, which the tests use, has fences that this sanitizer does not see
    endif()
else()
    add_compile_options(-ffunction-sections -fdata-sections)
    add_link_options(-Wl,--gc-sections -Wl,--as-needed)
endif()
