# The zip for users on Windows: in addition to the files of every installation it has all DLLs that the programs
# need, licence texts, import libraries for the sensor-access library, and the library's source, because a C++
# library cannot be used with another compiler.

foreach(dll IN LISTS SONDIXQT_QT_DLLS)
    install(FILES ${SONDIXQT_QT_FOLDER}/bin/${dll}.dll DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()
# Qt looks for plug-ins in the folder "plugins" beside the folder of its DLLs, but for programs in that folder only if a
# file tells it to.
file(WRITE ${CMAKE_BINARY_DIR}/qt.conf "[Paths]\nPrefix = ..\n")
install(FILES ${CMAKE_BINARY_DIR}/qt.conf DESTINATION ${CMAKE_INSTALL_BINDIR})
foreach(plugin IN LISTS SONDIXQT_QT_PLUGINS)
    get_filename_component(kind ${plugin} DIRECTORY)
    install(FILES ${SONDIXQT_QT_FOLDER}/plugins/${plugin}.dll DESTINATION plugins/${kind})
endforeach()
install(FILES ${SONDIXQT_COMPILER_DLLS} ${SONDIXQT_QWT_DLL} DESTINATION ${CMAKE_INSTALL_BINDIR})

install(FILES $<TARGET_FILE:sondix_standalone> DESTINATION simulator)

include(SondixQtWindowsQt)
install(FILES cmake/toolchain-package.cmake DESTINATION . RENAME toolchain-windows.cmake)

# The build has made the import library for MinGW; Microsoft's linker needs another format.
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
if(SONDIXQT_QWT_DLL)
    install(DIRECTORY ${SONDIXQT_QWT_FOLDER}/licenses/ DESTINATION licenses/Qwt)
endif()
# Debian's copyright file for the same source lists its third-party parts; add the licence texts that it refers to.
install(FILES /usr/share/doc/libqt5core5a/copyright DESTINATION licenses/Qt RENAME parts-of-others.txt)
foreach(text Apache-2.0 GFDL-1.3 GPL-2 GPL-3 LGPL-2 LGPL-2.1 LGPL-3)
    get_filename_component(file /usr/share/common-licenses/${text} REALPATH)
    install(FILES ${file} DESTINATION licenses/common-licenses RENAME ${text}.txt)
endforeach()
foreach(package gcc-mingw-w64-x86-64-posix-runtime mingw-w64-common libz-mingw-w64-dev nlohmann-json3-dev
        libcli11-dev)
    install(FILES /usr/share/doc/${package}/copyright DESTINATION licenses RENAME ${package}.txt)
endforeach()

# Without this, making the package would build the tests, too.
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)
set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_FILE_NAME SondixQt-${PROJECT_VERSION}-win64)
set(CPACK_STRIP_FILES ON)
include(CPack)
