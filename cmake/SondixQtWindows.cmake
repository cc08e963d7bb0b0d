# For Windows only: import libraries from .def files and, when cross-building, header-only libraries of the
# building machine, the DLLs beside the programs, and Wine.

# sondixqt_import_library(<target> <def> <dll>): an import library for a DLL that need not exist, made from
# the list of its exports.
function(sondixqt_import_library target def dll)
    get_filename_component(def ${def} ABSOLUTE)
    get_filename_component(name ${dll} NAME_WE)
    # A separate folder: the simulator's import library may have the same name.
    set(folder ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/imports)
    set(library ${folder}/${CMAKE_STATIC_LIBRARY_PREFIX}${name}${CMAKE_STATIC_LIBRARY_SUFFIX})
    if(MSVC)
        set(command ${CMAKE_AR} /NOLOGO /MACHINE:X64 /DEF:${def} /NAME:${dll} /OUT:${library})
    else()
        set(command ${CMAKE_DLLTOOL} --input-def ${def} --dllname ${dll} --output-lib ${library})
    endif()
    file(MAKE_DIRECTORY ${folder})
    add_custom_command(OUTPUT ${library} COMMAND ${command} DEPENDS ${def}
        COMMENT "Making the import library of ${dll}" VERBATIM)
    add_custom_target(${target}_file DEPENDS ${library})
    add_library(${target} STATIC IMPORTED GLOBAL)
    set_target_properties(${target} PROPERTIES IMPORTED_LOCATION ${library})
    add_dependencies(${target} ${target}_file)
endfunction()

# Strip the symbols: Wine and Windows read a whole DLL before they start a program.
if(MINGW)
    add_link_options($<$<CONFIG:Release>:-s>)
endif()

if(NOT CMAKE_CROSSCOMPILING OR NOT PROJECT_IS_TOP_LEVEL)
    return()
endif()

# sondixqt_host_headers(<package> <target> <folder>): lets find_package(<package>) find a header-only library in
# the building machine's /usr/include. A link to its folder keeps the other headers there out of the include path.
function(sondixqt_host_headers package target folder)
    find_path(SONDIXQT_HOST_INCLUDE ${folder} PATHS /usr/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    find_path(SONDIXQT_HOST_CMAKE ${package} PATHS /usr/share/cmake NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    mark_as_advanced(SONDIXQT_HOST_INCLUDE SONDIXQT_HOST_CMAKE)
    set(include ${CMAKE_BINARY_DIR}/host-include)
    file(MAKE_DIRECTORY ${include})
    file(CREATE_LINK ${SONDIXQT_HOST_INCLUDE}/${folder} ${include}/${folder} SYMBOLIC)
    set(redirect ${CMAKE_FIND_PACKAGE_REDIRECTS_DIR}/${package})
    configure_file(${SONDIXQT_HOST_CMAKE}/${package}/${package}ConfigVersion.cmake
        ${redirect}ConfigVersion.cmake COPYONLY)
    file(WRITE ${redirect}Config.cmake
        "if(NOT TARGET ${target})\n"
        "    add_library(${target} INTERFACE IMPORTED)\n"
        "    set_target_properties(${target} PROPERTIES INTERFACE_INCLUDE_DIRECTORIES ${include})\n"
        "endif()\n")
endfunction()
sondixqt_host_headers(nlohmann_json nlohmann_json::nlohmann_json nlohmann)
sondixqt_host_headers(CLI11 CLI11::CLI11 CLI)

# sondixqt_compiler_dlls(<variable>): copies the DLLs of the compiler's runtime beside the programs and lists them.
function(sondixqt_compiler_dlls variable)
    set(dlls)
    foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
        execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
            OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
        if(NOT IS_ABSOLUTE ${path})
            find_file(SONDIXQT_${name} ${name} PATHS /usr/x86_64-w64-mingw32 PATH_SUFFIXES lib bin REQUIRED)
            mark_as_advanced(SONDIXQT_${name})
            set(path ${SONDIXQT_${name}})
        endif()
        # The DLLs in Debian's packages contain debugging information.
        get_filename_component(file ${path} NAME)
        set(stripped ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${file})
        if(NOT EXISTS ${stripped} OR ${path} IS_NEWER_THAN ${stripped})
            file(MAKE_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
            execute_process(COMMAND ${CMAKE_STRIP} -o ${stripped} ${path} COMMAND_ERROR_IS_FATAL ANY)
        endif()
        list(APPEND dlls ${stripped})
    endforeach()
    set(${variable} ${dlls} PARENT_SCOPE)
endfunction()

set(SONDIXQT_QT_DLLS Qt5Core Qt5Gui Qt5Widgets Qt5Network Qt5PrintSupport Qt5Test)
set(SONDIXQT_QT_PLUGINS platforms/qwindows platforms/qoffscreen styles/qwindowsvistastyle)
get_filename_component(SONDIXQT_QT_FOLDER ${SONDIXQT_WINDOWS_QT} REALPATH)
sondixqt_compiler_dlls(SONDIXQT_COMPILER_DLLS)
set(SONDIXQT_QWT_DLL)
get_filename_component(SONDIXQT_QWT_FOLDER ${SONDIXQT_WINDOWS_QWT} REALPATH)
if(EXISTS ${SONDIXQT_QWT_FOLDER}/bin/libqwt.dll)
    set(SONDIXQT_QWT_DLL ${SONDIXQT_QWT_FOLDER}/bin/libqwt.dll)
    file(COPY ${SONDIXQT_QWT_DLL} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
endif()

# Windows looks for DLLs in the program's folder.
foreach(dll IN LISTS SONDIXQT_QT_DLLS)
    file(COPY ${SONDIXQT_QT_FOLDER}/bin/${dll}.dll DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
endforeach()
foreach(plugin IN LISTS SONDIXQT_QT_PLUGINS)
    get_filename_component(kind ${plugin} DIRECTORY)
    file(COPY ${SONDIXQT_QT_FOLDER}/plugins/${plugin}.dll DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${kind})
endforeach()

set(CMAKE_CROSSCOMPILING_EMULATOR ${PROJECT_SOURCE_DIR}/tools/wine.sh ${CMAKE_BINARY_DIR}/wine)
