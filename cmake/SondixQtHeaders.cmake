# The build tree offers the same include paths as an installed copy: <SondixQt/sensorinfo.h> and, as in Qt,
# <SondixQt/SensorInfo>.

set(SONDIXQT_INCLUDE_DIR ${PROJECT_BINARY_DIR}/include)
set(SONDIXQT_FORWARDING_DIR ${PROJECT_BINARY_DIR}/forwarding)

# sondixqt_public_header(<header> [<forwarding name>...]): makes a header public and installs it.
function(sondixqt_public_header header)
    get_filename_component(name ${header} NAME)
    file(CONFIGURE OUTPUT ${SONDIXQT_INCLUDE_DIR}/SondixQt/${name}
         CONTENT "#include \"${CMAKE_CURRENT_SOURCE_DIR}/${header}\"\n" @ONLY)
    install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/SondixQt)
    foreach(forwarding IN LISTS ARGN)
        foreach(directory ${SONDIXQT_FORWARDING_DIR} ${SONDIXQT_INCLUDE_DIR}/SondixQt)
            file(CONFIGURE OUTPUT ${directory}/${forwarding} CONTENT "#include <SondixQt/${name}>\n" @ONLY)
        endforeach()
        install(FILES ${SONDIXQT_FORWARDING_DIR}/${forwarding} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/SondixQt)
    endforeach()
    set_property(GLOBAL APPEND PROPERTY SONDIXQT_PUBLIC_HEADERS ${name})
endfunction()

# sondixqt_umbrella_header(): <SondixQt/SondixQt>, which includes all public headers added before this call.
function(sondixqt_umbrella_header)
    get_property(headers GLOBAL PROPERTY SONDIXQT_PUBLIC_HEADERS)
    list(TRANSFORM headers REPLACE "(.+)" "#include <SondixQt/\\1>")
    list(JOIN headers "\n" content)
    foreach(directory ${SONDIXQT_FORWARDING_DIR} ${SONDIXQT_INCLUDE_DIR}/SondixQt)
        file(CONFIGURE OUTPUT ${directory}/SondixQt CONTENT "${content}\n" @ONLY)
    endforeach()
    install(FILES ${SONDIXQT_FORWARDING_DIR}/SondixQt DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/SondixQt)
endfunction()
