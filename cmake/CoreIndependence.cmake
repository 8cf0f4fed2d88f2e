# The core must move to another system unchanged, so it links nothing: it reaches the system through
# the interfaces under platform/. Configuring fails if a library gets into its link properties.

# vistrane_require_independence(TARGET [ALLOWED...]): ends the configuration if TARGET has a link
# property other than the targets in ALLOWED, an include folder other than the tree's root, or a
# source from outside CORE_FOLDERS. Call it after all folders have been added.
function(vistrane_require_independence target)
    set(allowed ${ARGN})
    foreach(property LINK_LIBRARIES INTERFACE_LINK_LIBRARIES INTERFACE_LINK_LIBRARIES_DIRECT
                     LINK_OPTIONS INTERFACE_LINK_OPTIONS LINK_DIRECTORIES
                     INTERFACE_LINK_DIRECTORIES LINK_DEPENDS INTERFACE_LINK_DEPENDS LINK_FLAGS
                     STATIC_LIBRARY_OPTIONS STATIC_LIBRARY_FLAGS)
        get_target_property(values ${target} ${property})
        if(NOT values)
            continue()
        endif()
        foreach(value IN LISTS values)
            # Sanitizers are set for the whole tree and come with the compiler.
            if(value MATCHES "^-f(no-)?sanitize")
                continue()
            endif()
            string(REGEX REPLACE "^\\$<LINK_ONLY:(.*)>$" "\\1" name "${value}")
            if(NOT name IN_LIST allowed)
                message(FATAL_ERROR "${target} must link nothing, but its ${property} has "
                                    "'${value}'. What the core needs of a library or a system "
                                    "belongs behind an interface under platform/.")
            endif()
        endforeach()
    endforeach()

    foreach(property INCLUDE_DIRECTORIES INTERFACE_INCLUDE_DIRECTORIES)
        get_target_property(values ${target} ${property})
        if(NOT values)
            continue()
        endif()
        foreach(value IN LISTS values)
            if(NOT value STREQUAL PROJECT_SOURCE_DIR)
                message(FATAL_ERROR "${target} must include from the root of the tree only, but "
                                    "its ${property} has '${value}'.")
            endif()
        endforeach()
    endforeach()
endfunction()

# vistrane_require_sources_in(TARGET FOLDER...): ends the configuration if TARGET compiles a source
# that does not lie in one of the folders of the tree.
function(vistrane_require_sources_in target)
    get_target_property(sources ${target} SOURCES)
    get_target_property(base ${target} SOURCE_DIR)
    if(NOT sources)
        return()
    endif()
    foreach(source IN LISTS sources)
        cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY ${base} NORMALIZE OUTPUT_VARIABLE path)
        cmake_path(RELATIVE_PATH path BASE_DIRECTORY ${PROJECT_SOURCE_DIR})
        string(REGEX REPLACE "/.*" "" folder "${path}")
        if(NOT folder IN_LIST ARGN)
            message(FATAL_ERROR "${target} must be made of the folders ${ARGN} only, but it "
                                "compiles '${source}'.")
        endif()
    endforeach()
endfunction()
