# What the compiler and the linker put in an attacker's way; what a target's compiler does not know is left out.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)

check_pie_supported()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
add_link_options(-Wl,-z,relro -Wl,-z,now)

if(NOT WEBCONFIG_SANITIZE)
    add_compile_options(-fstack-protector-strong)
    # A compiler may have a level of its own set already. All presets optimise: else there is nothing to check.
    add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -D_GLIBCXX_ASSERTIONS)
    check_cxx_compiler_flag(-fstack-clash-protection WEBCONFIG_STACK_CLASH)
    check_cxx_compiler_flag(-fcf-protection WEBCONFIG_CONTROL_FLOW)
    add_compile_options(
        $<$<BOOL:${WEBCONFIG_STACK_CLASH}>:-fstack-clash-protection>
        $<$<BOOL:${WEBCONFIG_CONTROL_FLOW}>:-fcf-protection>)
endif()
