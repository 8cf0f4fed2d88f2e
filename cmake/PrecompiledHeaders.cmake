# Precompiles the headers that nearly every source includes, which take half of the compile time of
# most sources. Sources must still include what they use: the preset tidy, which clang-tidy reads, has none.
#
# A precompiled header requires the same options and macros in all sources that use it.

set(standard_headers <algorithm> <atomic> <chrono> <cstdint> <functional> <map> <memory> <mutex>
                     <optional> <string> <string_view> <utility> <variant> <vector>)
set(qt_headers <QtCore/QObject> <QtCore/QPointer> <QtCore/QString> <QtCore/QTimer>
               <QtGui/QMouseEvent> <QtGui/QPainter> <QtWidgets/QApplication>
               <QtWidgets/QLabel> <QtWidgets/QMainWindow> <QtWidgets/QPushButton>)

# vistrane_precompile(FIRST [OTHER...] HEADERS HEADER...): compiles the headers with the first
# target and uses them in all targets.
function(vistrane_precompile first)
    cmake_parse_arguments(arg "" "" "HEADERS" ${ARGN})
    target_precompile_headers(${first} PRIVATE ${arg_HEADERS})
    foreach(target IN LISTS arg_UNPARSED_ARGUMENTS)
        target_precompile_headers(${target} REUSE_FROM ${first})
    endforeach()
endfunction()

set(standard_users vistrane_core vistrane_sim)
if(NOT VISTRANE_CORE_ONLY)
    list(APPEND standard_users vistrane_icu vistrane_console vistrane_pictures vistrane_cameras
                               vistrane_commandline)
    # These two define _FILE_OFFSET_BITS.
    vistrane_precompile(vistrane_posix vistrane_movies HEADERS ${standard_headers})
    vistrane_precompile(vistrane_qt_menus vistrane_qt_system vistrane_qt_controls vistrane_window
                        HEADERS ${standard_headers} ${qt_headers})
endif()
vistrane_precompile(vistrane_interfaces ${standard_users} HEADERS ${standard_headers})
