# A module is a shared object that programs load at run time. Its path is relative to the program,
# so that a build folder and an installation can be moved. For this the build folder is laid out
# like an installation: programs in bin/, modules at the same relative path.
include(GNUInstallDirs)

set(VISTRANE_PROGRAMS ${PROJECT_BINARY_DIR}/bin)
# For example ../lib/vistrane.
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR}
           OUTPUT_VARIABLE VISTRANE_MODULES_FROM_PROGRAMS)
string(APPEND VISTRANE_MODULES_FROM_PROGRAMS /vistrane)

# vistrane_module(TARGET): builds and installs a module where the programs look for it.
function(vistrane_module target)
    set_target_properties(${target} PROPERTIES
        LIBRARY_OUTPUT_DIRECTORY ${VISTRANE_PROGRAMS}/${VISTRANE_MODULES_FROM_PROGRAMS})
    install(TARGETS ${target} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/vistrane)
endfunction()

# vistrane_loads_modules(PROGRAM...): puts the programs where they find the modules.
function(vistrane_loads_modules)
    set_target_properties(${ARGN} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${VISTRANE_PROGRAMS})
endfunction()
