# The plot library Qwt 6.1 for Qt 5: target Qwt::Qwt.
find_path(Qwt_INCLUDE_DIR qwt_plot.h PATH_SUFFIXES qwt qt5/qwt)
find_library(Qwt_LIBRARY NAMES qwt-qt5 qwt)
mark_as_advanced(Qwt_INCLUDE_DIR Qwt_LIBRARY)
if(Qwt_INCLUDE_DIR)
    file(STRINGS ${Qwt_INCLUDE_DIR}/qwt_global.h version REGEX "define QWT_VERSION_STR")
    string(REGEX REPLACE ".*\"(.*)\".*" "\\1" Qwt_VERSION "${version}")
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Qwt REQUIRED_VARS Qwt_LIBRARY Qwt_INCLUDE_DIR VERSION_VAR Qwt_VERSION)
if(Qwt_FOUND AND NOT TARGET Qwt::Qwt)
    find_package(Qt5 5.15 REQUIRED COMPONENTS Widgets PrintSupport)
    add_library(Qwt::Qwt UNKNOWN IMPORTED)
    set_target_properties(Qwt::Qwt PROPERTIES
        IMPORTED_LOCATION ${Qwt_LIBRARY}
        INTERFACE_COMPILE_DEFINITIONS QWT_DLL
        INTERFACE_INCLUDE_DIRECTORIES ${Qwt_INCLUDE_DIR}
        INTERFACE_LINK_LIBRARIES "Qt5::Widgets;Qt5::PrintSupport")
endif()
