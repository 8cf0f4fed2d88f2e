# Options that make an error in memory end the program instead of corrupting it, and that leave an
# attacker nothing to write to or to jump to. guards.ProgramIsHardened checks the result.
#
# The sanitizers find more, and the checks of _FORTIFY_SOURCE would hide calls from them.

# Checks the bounds of the standard library's containers.
add_compile_definitions(_GLIBCXX_ASSERTIONS)

if(NOT VISTRANE_SANITIZE)
    include(CheckCXXCompilerFlag)
    foreach(option -fstack-protector-strong -fstack-clash-protection -fcf-protection)
        string(MAKE_C_IDENTIFIER "VISTRANE_HAS${option}" known)
        check_cxx_compiler_flag(${option} ${known})
        if(${known})
            add_compile_options(${option})
        endif()
    endforeach()

    # Has no effect without optimisation. Some compilers define another level themselves.
    add_compile_options("$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")

    # Not add_link_options, because the core may not have link options of its own.
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)
    foreach(kind EXE MODULE SHARED)
        string(APPEND CMAKE_${kind}_LINKER_FLAGS " -Wl,-z,relro,-z,now,-z,noexecstack")
    endforeach()
endif()
