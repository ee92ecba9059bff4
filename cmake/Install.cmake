# cmake --install: headers, libraries, scenetool, the CMake package libVideo and the pkg-config file libVideo.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/libVideo)

# One export set for each namespace.
install(TARGETS Common EXPORT veskTargets FILE_SET HEADERS)
install(TARGETS libMath EXPORT libMathTargets FILE_SET HEADERS)
install(TARGETS libVideo EXPORT libVideoTargets FILE_SET HEADERS)
install(EXPORT veskTargets NAMESPACE vesk:: DESTINATION ${package_dir})
install(EXPORT libMathTargets NAMESPACE libMath:: DESTINATION ${package_dir})
install(EXPORT libVideoTargets NAMESPACE libVideo:: DESTINATION ${package_dir})

configure_package_config_file(cmake/libVideoConfig.cmake.in ${PROJECT_BINARY_DIR}/libVideoConfig.cmake
    INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/libVideoConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/libVideoConfig.cmake ${PROJECT_BINARY_DIR}/libVideoConfigVersion.cmake
    DESTINATION ${package_dir})

configure_file(cmake/libVideo.pc.in ${PROJECT_BINARY_DIR}/libVideo.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/libVideo.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(TARGET scenetool)
    install(TARGETS scenetool)
endif()
