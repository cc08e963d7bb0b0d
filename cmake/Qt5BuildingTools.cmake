# Qt's tools must run on the building computer: take them from any Qt 5.15 there.
foreach(tool moc rcc uic)
    if(NOT TARGET Qt5::${tool})
        find_program(SONDIXQT_QT_${tool} NAMES ${tool} ${tool}-qt5 HINTS /usr/lib/qt5/bin /usr/lib64/qt5/bin
            DOC "Qt's ${tool}, of Qt 5.15" REQUIRED NO_CMAKE_FIND_ROOT_PATH)
        add_executable(Qt5::${tool} IMPORTED)
        set_target_properties(Qt5::${tool} PROPERTIES IMPORTED_LOCATION ${SONDIXQT_QT_${tool}})
    endif()
endforeach()
if(NOT TARGET Qt5::qmake) # asked for by name only
    add_executable(Qt5::qmake IMPORTED)
endif()
