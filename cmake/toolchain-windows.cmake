# Cross-building for 64-bit Windows with Debian's compiler (g++-mingw-w64-x86-64-posix).

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Qt 5.15 for this compiler; tools/prepare_windows.sh puts it there.
set(SONDIXQT_WINDOWS_QT ${CMAKE_CURRENT_LIST_DIR}/../build/qt5-win64 CACHE PATH "Qt 5.15 for 64-bit Windows")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SONDIXQT_WINDOWS_QT)
get_filename_component(qt ${SONDIXQT_WINDOWS_QT} REALPATH)
list(APPEND CMAKE_PREFIX_PATH ${qt})

# Qwt 6.1 for the explorer, which is left out without it.
set(SONDIXQT_WINDOWS_QWT ${CMAKE_CURRENT_LIST_DIR}/../build/qwt-win64 CACHE PATH "Qwt 6.1 for 64-bit Windows")
get_filename_component(qwt ${SONDIXQT_WINDOWS_QWT} REALPATH)
list(APPEND CMAKE_PREFIX_PATH ${qwt})

# Use only programs of the building machine, no libraries or headers.
list(APPEND CMAKE_FIND_ROOT_PATH ${CMAKE_PREFIX_PATH} /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
