# For cross-building for 64-bit Windows with -DCMAKE_TOOLCHAIN_FILE=<this file>. Needs only this folder, Debian's
# compiler (g++-mingw-w64-x86-64-posix) and Debian's Qt tools (qtbase5-dev-tools).

set(SONDIXQT_WINDOWS_QT ${CMAKE_CURRENT_LIST_DIR}/qt CACHE PATH "Qt 5.15 for 64-bit Windows")
list(APPEND CMAKE_PREFIX_PATH ${CMAKE_CURRENT_LIST_DIR})
include(${CMAKE_CURRENT_LIST_DIR}/source/cmake/toolchain-windows.cmake)
