# The zip for users on Windows: beside what every installation has, all DLLs that the programs need, licence
# texts, import libraries for the sensor-access library, and the library's source, because C++ libraries of one
# compiler do not go with another.

foreach(dll IN LISTS SONDIXQT_QT_DLLS)
    install(FILES ${SONDIXQT_QT_FOLDER}/bin/${dll}.dll DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()
# Where Qt looks for them from wherever its DLLs lie: beside their folder.
foreach(plugin IN LISTS SONDIXQT_QT_PLUGINS)
    get_filename_component(kind ${plugin} DIRECTORY)
    install(FILES ${SONDIXQT_QT_FOLDER}/plugins/${plugin}.dll DESTINATION plugins/${kind})
endforeach()
install(FILES ${SONDIXQT_COMPILER_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR})

install(FILES $<TARGET_FILE:sondix_standalone> DESTINATION simulator)

include(SondixQtWindowsQt)
install(FILES cmake/toolchain-package.cmake DESTINATION . RENAME toolchain-windows.cmake)

# For MinGW as the build made it, for Microsoft's linker with its own kind of import library.
find_program(SONDIXQT_LLVM_DLLTOOL NAMES llvm-dlltool llvm-dlltool-14 REQUIRED)
set(library ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/Sondix.lib)
add_custom_command(OUTPUT ${library}
    COMMAND ${SONDIXQT_LLVM_DLLTOOL} -m i386:x86-64 -d ${PROJECT_SOURCE_DIR}/src/sondix/Sondix.def -l ${library}
    DEPENDS ${PROJECT_SOURCE_DIR}/src/sondix/Sondix.def
    COMMENT "Making the import library of Sondix.dll for Microsoft's linker" VERBATIM)
add_custom_target(sondix_imports_msvc ALL DEPENDS ${library})
install(FILES ${library} $<TARGET_FILE:sondix_imports> src/sondix/Sondix.def DESTINATION ${CMAKE_INSTALL_LIBDIR})

install(FILES CMakeLists.txt LICENSE DESTINATION source)
install(DIRECTORY cmake src DESTINATION source)
install(PROGRAMS tools/build_windows_qt.sh DESTINATION source/tools)

install(FILES docs/windows.md DESTINATION . RENAME README.md)
install(FILES LICENSE DESTINATION licenses RENAME SondixQt.txt)
install(DIRECTORY ${SONDIXQT_QT_FOLDER}/licenses/ DESTINATION licenses/Qt)
# Debian's account of the same source names what others have contributed to it, and the texts that it refers to.
install(FILES /usr/share/doc/libqt5core5a/copyright DESTINATION licenses/Qt RENAME parts-of-others.txt)
foreach(text Apache-2.0 GFDL-1.3 GPL-2 GPL-3 LGPL-2 LGPL-2.1 LGPL-3)
    get_filename_component(file /usr/share/common-licenses/${text} REALPATH)
    install(FILES ${file} DESTINATION licenses/common-licenses RENAME ${text}.txt)
endforeach()
foreach(package gcc-mingw-w64-x86-64-posix-runtime mingw-w64-common libz-mingw-w64-dev nlohmann-json3-dev
        libcli11-dev)
    install(FILES /usr/share/doc/${package}/copyright DESTINATION licenses RENAME ${package}.txt)
endforeach()

# The tests need not be built for it.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME SondixQt-${PROJECT_VERSION}-win64)
set(CPACK_STRIP_FILES ON)
include(CPack)
