# Installs three components: the libraries (runtime), what is needed to build programs with them (development), and
# scenetool (tools). The installed files find each other relative to their own location.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/libVideo)

# One export set for each namespace.
foreach(target_and_set vesk_Common:vesk libMath:libMath libVideo:libVideo libPrepare:libPrepare)
    string(REPLACE ":" ";" target_and_set ${target_and_set})
    list(GET target_and_set 0 target)
    list(GET target_and_set 1 set)
    install(TARGETS ${target} EXPORT ${set}Targets
        LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
        FILE_SET HEADERS COMPONENT development)
    install(EXPORT ${set}Targets NAMESPACE ${set}:: DESTINATION ${package_dir} COMPONENT development)
endforeach()

configure_package_config_file(cmake/libVideoConfig.cmake.in ${PROJECT_BINARY_DIR}/libVideoConfig.cmake
    INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/libVideoConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/libVideoConfig.cmake ${PROJECT_BINARY_DIR}/libVideoConfigVersion.cmake
    DESTINATION ${package_dir} COMPONENT development)

# pkgconfig_file(NAME DESCRIPTION REQUIRES CFLAGS LIBS): a relocatable file for pkg-config.
file(RELATIVE_PATH pc_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pc_prefix "${pc_prefix}")
function(pkgconfig_file pc_name pc_description pc_requires pc_cflags pc_libs)
    configure_file(cmake/pkgconfig.pc.in ${PROJECT_BINARY_DIR}/${pc_name}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${pc_name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT development)
endfunction()
pkgconfig_file(vesk-common "Text, containers, handles and logging" "" "" "-lCommon")
pkgconfig_file(libMath "Matrices and vectors" "vesk-common" "-ffp-contract=off" "")
pkgconfig_file(libVideo "${PROJECT_DESCRIPTION}" "libMath, vesk-common, collada-dom-141" "-DNO_BOOST" "-lVideo")

pkgconfig_file(libPrepare "Rewrites COLLADA documents so that libVideo delivers them whole" "" "" "-lPrepare")

# gdb finds the printers by the path of the library, or a user sources them.
set(printers foundation/gdb/vesk_printers.py)
install(FILES ${printers} DESTINATION ${CMAKE_INSTALL_DATADIR}/libVideo/gdb COMPONENT development)
string(REGEX REPLACE "^/" "" library_folder ${CMAKE_INSTALL_FULL_LIBDIR})
install(FILES ${printers} DESTINATION ${CMAKE_INSTALL_DATADIR}/gdb/auto-load/${library_folder}
    RENAME libCommon.so.${PROJECT_VERSION}-gdb.py COMPONENT development)

# Debian requires documentation in a folder named after the package, with a copyright and a changelog of its own.
set(documentation_dir ${CMAKE_INSTALL_DOCDIR})
if(LIBVIDEO_DEBIAN_PACKAGES)
    set(documentation_dir ${CMAKE_INSTALL_DATADIR}/doc/libvideo-dev)
else()
    install(FILES LICENSE CHANGELOG.md DESTINATION ${documentation_dir} COMPONENT runtime)
endif()
install(FILES README.md DESTINATION ${documentation_dir} COMPONENT development)
install(DIRECTORY docs/ DESTINATION ${documentation_dir}/docs COMPONENT development
    FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.png" PATTERN "*.dae" PATTERN "*.schema.json" PATTERN "*.cpp" PATTERN "Snakefile")
install(FILES examples/draw.cpp examples/host.cpp examples/logging.cpp DESTINATION ${documentation_dir}/examples
    COMPONENT development)

if(TARGET scenetool)
    install(TARGETS scenetool COMPONENT tools)
    set(manual_page ${PROJECT_BINARY_DIR}/scenetool.1.gz)
    set(manual_template ${PROJECT_SOURCE_DIR}/tools/scenetool/scenetool.1.in)
    add_custom_command(OUTPUT ${manual_page}
        COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:scenetool> -DTEMPLATE=${manual_template}
            -DVERSION=${PROJECT_VERSION} -DPAGE=${manual_page} -P ${PROJECT_SOURCE_DIR}/cmake/ManualPage.cmake
        DEPENDS scenetool ${manual_template} cmake/ManualPage.cmake
        VERBATIM)
    add_custom_target(manual ALL DEPENDS ${manual_page})
    install(FILES ${manual_page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
    install(FILES tools/scenetool/completions/scenetool
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
    install(FILES tools/scenetool/completions/_scenetool
        DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT tools)
    install(FILES tools/scenetool/completions/scenetool.fish
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tools)
endif()
