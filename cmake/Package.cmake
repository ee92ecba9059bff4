# Settings for cpack, which makes one Debian package from each component. The preset "package" sets the paths below /usr
# that a package needs.
if(NOT LIBVIDEO_DEBIAN_PACKAGES)
    return()
endif()

# Without these programs, cpack fails or makes packages without dependencies.
find_program(LIBVIDEO_FILE_PROGRAM file)
find_program(LIBVIDEO_SHLIBDEPS_PROGRAM dpkg-shlibdeps)
mark_as_advanced(LIBVIDEO_FILE_PROGRAM LIBVIDEO_SHLIBDEPS_PROGRAM)
if(NOT LIBVIDEO_FILE_PROGRAM OR NOT LIBVIDEO_SHLIBDEPS_PROGRAM)
    message(FATAL_ERROR "cpack needs file and dpkg-shlibdeps: install the packages file and dpkg-dev")
endif()

set(runtime_package libvideo${PROJECT_VERSION_MAJOR})
set(development_package libvideo-dev)
set(tools_package scenetool)

# The changelogs of the packages and of the project.
set(debian ${PROJECT_SOURCE_DIR}/cmake/debian)
file(STRINGS ${debian}/changelog newest LIMIT_COUNT 1)
if(NOT newest MATCHES "^libvideo \\(${PROJECT_VERSION}-1\\)")
    message(FATAL_ERROR "cmake/debian/changelog has no entry for ${PROJECT_VERSION}")
endif()
execute_process(COMMAND gzip -9nc ${debian}/changelog OUTPUT_FILE ${PROJECT_BINARY_DIR}/changelog.Debian.gz
    COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/CHANGELOG.md OUTPUT_FILE ${PROJECT_BINARY_DIR}/changelog.gz
    COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${debian}/changelog ${PROJECT_SOURCE_DIR}/CHANGELOG.md)
foreach(component runtime development tools)
    install(FILES ${debian}/copyright ${PROJECT_BINARY_DIR}/changelog.Debian.gz ${PROJECT_BINARY_DIR}/changelog.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${${component}_package} COMPONENT ${component})
    string(TOUPPER ${component} upper)
    set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${${component}_package})
    set(CPACK_DEBIAN_${upper}_FILE_NAME DEB-DEFAULT)
endforeach()

# Tells Debian which package programs need that link the libraries, and makes the dynamic linker update its cache.
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/debian/shlibs CONTENT
    "libCommon @PROJECT_VERSION_MAJOR@ @runtime_package@ (>= @PROJECT_VERSION@)
libVideo @PROJECT_VERSION_MAJOR@ @runtime_package@ (>= @PROJECT_VERSION@)
libPrepare @PROJECT_VERSION_MAJOR@ @runtime_package@ (>= @PROJECT_VERSION@)
" @ONLY)
file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${PROJECT_BINARY_DIR}/debian/shlibs ${PROJECT_BINARY_DIR}/debian/triggers)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_PACKAGE_VENDOR libVideo)
set(CPACK_PACKAGE_CONTACT "${LIBVIDEO_PACKAGE_CONTACT}")
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE libvideo)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/foundation ${PROJECT_BINARY_DIR}/libVideo
    ${PROJECT_BINARY_DIR}/libPrepare)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON) # of the same version

# cpack would put any other summary in front of all three descriptions.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${CMAKE_PROJECT_NAME} built using CMake")
set(what_it_does "Turns a COLLADA 1.4.1 document into an object graph that is ready to
draw: nodes with transforms and animations, meshes as packed vertex
streams with index buffers, materials, cameras and lights.
")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "scene graph of COLLADA documents for renderers
${what_it_does}
This package contains the shared libraries.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "scene graph of COLLADA documents - development files
${what_it_does}
This package contains the headers, the packages for CMake and pkg-config,
the pretty-printers for gdb, and the guides.")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "shows what a COLLADA document holds
Loads a COLLADA 1.4.1 document as the libVideo scene graph does, and
shows its node tree with transforms, animations, meshes, materials,
cameras and lights, for people or as JSON. Draws it into picture files
and in a window, where it was built with OpenGL.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libcollada-dom-dev, pkg-config")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "gdb")
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "libegl1, libgl1-mesa-dri")

include(CPack)
