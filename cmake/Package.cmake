# What "cmake --install" puts down: libraries, headers, programs, and the files by which other projects find them.

include(CMakePackageConfigHelpers)

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/LumoraViewport)

install(DIRECTORY src/ DESTINATION ${LUMORA_INCLUDES} FILES_MATCHING PATTERN "*.h" PATTERN "*.def"
    PATTERN "abi" EXCLUDE PATTERN "import" EXCLUDE PATTERN "hosts/qt" EXCLUDE
    PATTERN "ramp" EXCLUDE PATTERN "reference" EXCLUDE PATTERN "rgb" EXCLUDE)
install(FILES src/automation/abi/DispatchObject.h DESTINATION ${LUMORA_INCLUDES}/automation/abi)
install(FILES include/LumoraViewport.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(libraries lumora-core lumora-automation)
set(pkgconfigs LumoraViewport)
if(LUMORA_SETTINGS)
    list(APPEND libraries lumora-settings)
endif()
if(LUMORA_IMPORT)
    list(APPEND libraries lumora-import)
    list(APPEND pkgconfigs LumoraViewportImport)
    install(FILES src/import/Import.h DESTINATION ${LUMORA_INCLUDES}/import)
    install(TARGETS lumora-import-worker)
endif()
install(TARGETS ${libraries} EXPORT LumoraViewportTargets)
install(EXPORT LumoraViewportTargets NAMESPACE LumoraViewport:: DESTINATION ${package})

# The module finds the library two folders up.
set(LUMORA_PYTHON_FOLDER ${CMAKE_INSTALL_LIBDIR}/python3/dist-packages)
install(FILES examples/python-host/lumora.py DESTINATION ${LUMORA_PYTHON_FOLDER})

if(LUMORA_APPS)
    set(programs lumora-render)
    if(LUMORA_VIEWER)
        list(APPEND programs lumora-viewer)
    endif()
    file(RELATIVE_PATH libraries ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(${programs} PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries}")
    install(TARGETS ${programs})
endif()

if(LUMORA_QT)
    list(APPEND pkgconfigs LumoraViewportQt)
    install(FILES src/hosts/qt/FormMistakes.h src/hosts/qt/ViewportWidget.h
        $<TARGET_PROPERTY:lumora-qt,GENERATED_HEADER> DESTINATION ${LUMORA_INCLUDES}/hosts/qt)
    install(TARGETS lumora-qt EXPORT LumoraViewportQtTargets)
    install(EXPORT LumoraViewportQtTargets NAMESPACE LumoraViewport:: DESTINATION ${package})
endif()
if(LUMORA_DESIGNER)
    set(LUMORA_PLUGINS ${CMAKE_INSTALL_LIBDIR}/qt6/plugins CACHE STRING "Where Qt looks for plugins, below the prefix")
    file(RELATIVE_PATH libraries ${CMAKE_INSTALL_PREFIX}/${LUMORA_PLUGINS}/designer ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(lumora-designer-plugin PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries}")
    install(TARGETS lumora-designer-plugin DESTINATION ${LUMORA_PLUGINS}/designer)
endif()

configure_package_config_file(cmake/LumoraViewportConfig.cmake.in ${CMAKE_BINARY_DIR}/LumoraViewportConfig.cmake
    INSTALL_DESTINATION ${package})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/LumoraViewportConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/LumoraViewportConfig.cmake ${CMAKE_BINARY_DIR}/LumoraViewportConfigVersion.cmake
    DESTINATION ${package})

# pkg-config finds its files below the prefix that they were installed to, wherever that is.
file(RELATIVE_PATH LUMORA_PREFIX_FROM_PC ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(name ${pkgconfigs})
    configure_file(cmake/${name}.pc.in ${CMAKE_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${CMAKE_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
