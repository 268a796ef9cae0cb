# SPDX-License-Identifier: MIT
# The Debian packages: libtoolkit<soversion> with the library, libtoolkit<soversion>-dbgsym with its debug symbols, libtoolkit-dev
# with what a program is built with, libtoolkit-doc with the reference and the guide, where Doxygen is installed. Made in the preset
# "package" by cpack, in build/package/packages; the prefix must be /usr, since that alone gives the folders of the distribution.
set(toolkit_debian ${PROJECT_SOURCE_DIR}/packaging/debian)
set(toolkit_runtime libtoolkit${PROJECT_VERSION_MAJOR})
set(toolkit_revision 1)

# Each package brings its copyright and its changes. gzip leaves out name and time, so that the file is always the same.
set(toolkit_docs ${PROJECT_BINARY_DIR}/packaging)
file(MAKE_DIRECTORY ${toolkit_docs})
function(toolkit_package_text text name)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${text})
  execute_process(COMMAND gzip -9nc ${text} OUTPUT_FILE ${toolkit_docs}/${name}.gz COMMAND_ERROR_IS_FATAL ANY)
endfunction()
toolkit_package_text(${toolkit_debian}/changelog changelog.Debian)
toolkit_package_text(${PROJECT_SOURCE_DIR}/CHANGELOG.md changelog)

function(toolkit_package_files package component)
  install(
    FILES ${toolkit_debian}/copyright ${toolkit_docs}/changelog.Debian.gz ${toolkit_docs}/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package}
    COMPONENT ${component})
  install(
    FILES ${toolkit_debian}/${package}.lintian-overrides
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides
    COMPONENT ${component}
    RENAME ${package})
endfunction()
toolkit_package_files(${toolkit_runtime} Toolkit_Runtime)
toolkit_package_files(${toolkit_runtime}-dbgsym Toolkit_Symbols)
toolkit_package_files(libtoolkit-dev Toolkit_Development)

# The symbols lie where every debugger looks for them, by the number that the linker gave each library.
find_program(TOOLKIT_READELF readelf REQUIRED)
mark_as_advanced(TOOLKIT_READELF)
foreach(library toolkit toolkit_icu toolkit_regex toolkit_net)
  set(toolkit_symbols ${toolkit_docs}/${library}.debug)
  install(
    CODE "
      execute_process(COMMAND ${CMAKE_OBJCOPY} --only-keep-debug --compress-debug-sections \"$<TARGET_FILE:${library}>\"
                              \"${toolkit_symbols}\" COMMAND_ERROR_IS_FATAL ANY)
      execute_process(COMMAND ${TOOLKIT_READELF} -n \"${toolkit_symbols}\" OUTPUT_VARIABLE notes COMMAND_ERROR_IS_FATAL ANY)
      string(REGEX MATCH \"Build ID: (..)([0-9a-f]+)\" found \"\${notes}\")
      file(INSTALL \"${toolkit_symbols}\" DESTINATION \"\${CMAKE_INSTALL_PREFIX}/lib/debug/.build-id/\${CMAKE_MATCH_1}\"
           PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ RENAME \"\${CMAKE_MATCH_2}.debug\")"
    COMPONENT Toolkit_Symbols)
endforeach()

# The reference is built with everything else.
find_program(TOOLKIT_DOXYGEN doxygen)
mark_as_advanced(TOOLKIT_DOXYGEN)
set(toolkit_components Toolkit_Runtime Toolkit_Symbols Toolkit_Development)
if(TOOLKIT_DOXYGEN)
  add_custom_target(toolkit_reference ALL COMMAND ${PROJECT_SOURCE_DIR}/scripts/docs ${PROJECT_BINARY_DIR} VERBATIM)
  toolkit_package_files(libtoolkit-doc Toolkit_Documentation)
  install(
    DIRECTORY ${PROJECT_BINARY_DIR}/docs/html
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/libtoolkit-doc
    COMPONENT Toolkit_Documentation)
  list(APPEND toolkit_components Toolkit_Documentation)
else()
  message(STATUS "The package libtoolkit-doc is left out: it needs doxygen")
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_COMPONENTS_ALL ${toolkit_components})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_PACKAGE_CONTACT "The maintainers of Toolkit <maintainers@toolkit.invalid>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_SOURCE toolkit)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${toolkit_revision})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(toolkit_about
    "Toolkit gives a desktop application and its plug-ins one set of services:
a logger, threads, text encodings, files, settings, ZIP archives, regular
expressions, and the folders of the application.")

set(CPACK_DEBIAN_TOOLKIT_RUNTIME_PACKAGE_NAME ${toolkit_runtime})
set(CPACK_DEBIAN_TOOLKIT_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_TOOLKIT_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TOOLKIT_RUNTIME_PACKAGE_CONTROL_EXTRA ${toolkit_debian}/triggers)
# A program asks for the version that it was linked with, or a later one.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_COMPONENT_TOOLKIT_RUNTIME_DESCRIPTION "${toolkit_about}")

set(CPACK_DEBIAN_TOOLKIT_SYMBOLS_PACKAGE_NAME ${toolkit_runtime}-dbgsym)
set(CPACK_DEBIAN_TOOLKIT_SYMBOLS_PACKAGE_SECTION debug)
set(CPACK_DEBIAN_TOOLKIT_SYMBOLS_PACKAGE_DEPENDS "${toolkit_runtime} (= ${PROJECT_VERSION}-${toolkit_revision})")
set(CPACK_COMPONENT_TOOLKIT_SYMBOLS_DESCRIPTION
    "${toolkit_about}
.
This package holds the debug symbols of ${toolkit_runtime}.")

# New code needs no header of wxWidgets; the classic headers do. Its base libraries are developed with the package of the whole of
# it; there is none for them alone.
set(CPACK_DEBIAN_TOOLKIT_DEVELOPMENT_PACKAGE_NAME libtoolkit-dev)
set(CPACK_DEBIAN_TOOLKIT_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TOOLKIT_DEVELOPMENT_PACKAGE_DEPENDS
    "${toolkit_runtime} (= ${PROJECT_VERSION}-${toolkit_revision})")
set(CPACK_DEBIAN_TOOLKIT_DEVELOPMENT_PACKAGE_RECOMMENDS libwxgtk3.2-dev)
set(CPACK_COMPONENT_TOOLKIT_DEVELOPMENT_DESCRIPTION
    "${toolkit_about}
.
This package holds the headers and what CMake and pkg-config need.")

set(CPACK_DEBIAN_TOOLKIT_DOCUMENTATION_PACKAGE_NAME libtoolkit-doc)
set(CPACK_DEBIAN_TOOLKIT_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_TOOLKIT_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_COMPONENT_TOOLKIT_DOCUMENTATION_DESCRIPTION
    "${toolkit_about}
.
This package holds the reference and the guide, to be read in a browser.")

include(CPack)
