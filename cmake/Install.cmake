# What is installed, by component: Runtime (the shared libraries), Development
# (headers, CMake package, pkg-config files, the platform check's sources),
# Samples (the sample host), Documentation.

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/Vaskel)
set(installed_targets vaskel)
if(VASKEL_EMBEDDED)
    list(APPEND installed_targets vaskel_embedded)
endif()

install(TARGETS ${installed_targets} EXPORT VaskelTargets
        LIBRARY COMPONENT Runtime NAMELINK_COMPONENT Development
        INCLUDES DESTINATION ${VASKEL_INSTALL_INCLUDEDIR})
install(EXPORT VaskelTargets NAMESPACE Vaskel:: DESTINATION ${package_dir}
        COMPONENT Development)

install(DIRECTORY include/ DESTINATION ${VASKEL_INSTALL_INCLUDEDIR} COMPONENT Development
        FILES_MATCHING PATTERN "*.h")
install(DIRECTORY platform DESTINATION ${VASKEL_INSTALL_INCLUDEDIR} COMPONENT Development
        FILES_MATCHING PATTERN "*.h")
if(VASKEL_EMBEDDED)
    file(GLOB embedded_headers ${PROJECT_SOURCE_DIR}/embedded/*.h)
    install(FILES ${embedded_headers} DESTINATION ${VASKEL_INSTALL_INCLUDEDIR}/embedded
            COMPONENT Development)
endif()

configure_package_config_file(cmake/VaskelConfig.cmake.in VaskelConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(VaskelConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VaskelConfig.cmake
              ${PROJECT_BINARY_DIR}/VaskelConfigVersion.cmake
        DESTINATION ${package_dir} COMPONENT Development)

# Relative to the .pc file, so that an installed tree can be moved.
file(RELATIVE_PATH VASKEL_PC_INCLUDEDIR ${CMAKE_INSTALL_FULL_LIBDIR}
     ${CMAKE_INSTALL_PREFIX}/${VASKEL_INSTALL_INCLUDEDIR})
foreach(pc vaskel vaskel-embedded)
    configure_file(cmake/${pc}.pc.in ${pc}.pc @ONLY)
    if(pc STREQUAL vaskel OR VASKEL_EMBEDDED)
        install(FILES ${PROJECT_BINARY_DIR}/${pc}.pc
                DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT Development)
    endif()
endforeach()

install(DIRECTORY samples/example DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Documentation)
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT Documentation)
install(DIRECTORY tests/platform_check DESTINATION ${CMAKE_INSTALL_DATADIR}/vaskel
        COMPONENT Development)
