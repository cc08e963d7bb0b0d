# Compiler settings of all targets of the project.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)

# Programs are not linked again when only the code of a shared library has changed.
set(CMAKE_LINK_DEPENDS_NO_SHARED ON)

# Lets moc run before the libraries are built that a target is linked to.
set(CMAKE_AUTOGEN_ORIGIN_DEPENDS OFF)

# Use ccache if it is installed. It caches sources with precompiled headers only with CCACHE_SLOPPINESS.
find_program(SONDIXQT_CCACHE ccache DOC "Compiler cache; an empty value builds without")
if(PROJECT_IS_TOP_LEVEL AND SONDIXQT_CCACHE AND "${CMAKE_CXX_COMPILER_LAUNCHER}" MATCHES "^(.*ccache)?$")
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${SONDIXQT_CCACHE})
endif()

if(SONDIXQT_BUILD_FUZZERS)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "The fuzzers need clang's libFuzzer: configure with -DCMAKE_CXX_COMPILER=clang++")
    endif()
    set(SONDIXQT_SANITIZE fuzzer-no-link,address,undefined)
endif()

if(SONDIXQT_SANITIZE)
    add_compile_options(-fsanitize=${SONDIXQT_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${SONDIXQT_SANITIZE})
    # With the code for the sanitizers GCC falsely reports uninitialised parts of std::variant.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        add_compile_options(-Wno-maybe-uninitialized)
    endif()
endif()

# LD_LIBRARY_PATH must be able to select another sensor-access library at run time: it takes precedence over
# RUNPATH, but not over RPATH.
if(UNIX AND NOT APPLE)
    add_link_options(-Wl,--enable-new-dtags)
    set(CMAKE_INSTALL_RPATH "$ORIGIN" "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
endif()

# No prefix "lib": the simulator must have the DLL name of the closed library.
if(WIN32)
    set(CMAKE_SHARED_LIBRARY_PREFIX "")
    include(SondixQtWindows)
endif()

# sondixqt_warnings(<target>): enables the project's warnings. As part of another project the target is built
# without them, and warnings are not errors: other compilers have other warnings.
function(sondixqt_warnings target)
    if(MSVC)
        target_compile_options(${target} PRIVATE /utf-8)
        set(warnings /W4)
        set(no_errors /WX-)
    else()
        set(warnings -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
        # Qt's logging macros are called without their variadic argument.
        list(APPEND warnings $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments>)
        set(no_errors -Wno-error)
    endif()
    if(PROJECT_IS_TOP_LEVEL)
        target_compile_options(${target} PRIVATE ${warnings})
    else()
        target_compile_options(${target} PRIVATE ${no_errors})
        set_target_properties(${target} PROPERTIES COMPILE_WARNING_AS_ERROR OFF)
    endif()
    if(SONDIXQT_WARNINGS_AS_ERRORS)
        set_target_properties(${target} PROPERTIES COMPILE_WARNING_AS_ERROR ON)
    endif()
endfunction()

# Small groups are compiled again sooner after a change, large ones make a whole build cheaper.
if(NOT DEFINED CMAKE_UNITY_BUILD_BATCH_SIZE)
    set(CMAKE_UNITY_BUILD_BATCH_SIZE 9)
endif()

# sondixqt_join_sources(<target> [<source that is compiled alone>...]): compiles groups of sources together, because
# most of the time is spent in headers. Names in unnamed namespaces must be unique in the target. Sources that
# include headers of Windows are compiled alone: these define macros such as "near".
function(sondixqt_join_sources target)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON)
    if(ARGN)
        set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
    endif()
endfunction()

# sondixqt_qt_rules(<target>): enables moc and disables Qt's keywords, implicit string conversions and
# deprecated functions.
function(sondixqt_qt_rules target)
    set_target_properties(${target} PROPERTIES AUTOMOC ON)
    target_compile_definitions(${target} PRIVATE
        QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING
        QT_NO_CAST_FROM_BYTEARRAY QT_NO_FOREACH QT_DEPRECATED_WARNINGS QT_DISABLE_DEPRECATED_BEFORE=0x050F00)
    sondixqt_warnings(${target})
endfunction()
