# Installation and the CMake package, usable from the build tree and from an installed prefix.
include(CMakePackageConfigHelpers)

set(SONDIXQT_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/SondixQt)

set(libraries SondixQt)
if(TARGET Sondix)
    list(APPEND libraries Sondix)
    install(DIRECTORY simulator/include/SondixSimulator DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    install(FILES docs/bench.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/SondixQt)
endif()
install(TARGETS ${libraries} EXPORT SondixQtTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(EXPORT SondixQtTargets NAMESPACE SondixQt:: DESTINATION ${SONDIXQT_CMAKE_DIR})
export(EXPORT SondixQtTargets NAMESPACE SondixQt:: FILE ${PROJECT_BINARY_DIR}/SondixQtTargets.cmake)

get_target_property(SONDIXQT_QT_LACKS Qt5::Gui INTERFACE_QT_DISABLED_FEATURES)
configure_package_config_file(cmake/SondixQtConfig.cmake.in ${PROJECT_BINARY_DIR}/SondixQtConfig.cmake
    INSTALL_DESTINATION ${SONDIXQT_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/SondixQtConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/SondixQtConfig.cmake ${PROJECT_BINARY_DIR}/SondixQtConfigVersion.cmake
    DESTINATION ${SONDIXQT_CMAKE_DIR})

if(WIN32 AND CMAKE_CROSSCOMPILING AND PROJECT_IS_TOP_LEVEL)
    include(SondixQtWindowsPackage)
endif()
