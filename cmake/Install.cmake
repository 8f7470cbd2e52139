# Libraries, headers, the CMake package and the pkg-config files.
include(CMakePackageConfigHelpers)

install(TARGETS tlxcrypto tlxpki EXPORT tlxpkiTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tlxpki)
configure_package_config_file(cmake/tlxpkiConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/tlxpkiConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/tlxpkiConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tlxpkiConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/tlxpkiConfigVersion.cmake
        DESTINATION ${package_dir})
install(EXPORT tlxpkiTargets NAMESPACE tlxpki:: DESTINATION ${package_dir})

# The .pc files find the prefix from their own place, so that an installed tree can be moved.
file(RELATIVE_PATH tlx_pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(name IN ITEMS tlxcrypto tlxpki)
    configure_file(cmake/${name}.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
