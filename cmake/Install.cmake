# SPDX-License-Identifier: MIT
# What a user of the library gets: the library, its public headers, and the files by which CMake and pkg-config find
# both. The prefix may be moved afterwards. Two components: Toolkit_Runtime is what a program needs that was linked
# with the library, Toolkit_Development what it needs to be built.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(toolkit_cmake_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Toolkit)
install(
  TARGETS toolkit
  EXPORT ToolkitTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          COMPONENT Toolkit_Runtime
          NAMELINK_COMPONENT Toolkit_Development
  FILE_SET HEADERS
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT Toolkit_Development
  # For consumers whose CMake does not know file sets yet.
  INCLUDES
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
# The library looks for its parts in that folder beside itself.
install(
  TARGETS toolkit_icu toolkit_regex toolkit_net
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/toolkit
          COMPONENT Toolkit_Runtime)
install(
  FILES ${PROJECT_SOURCE_DIR}/gdb/toolkit_printers.py ${PROJECT_SOURCE_DIR}/packaging/tsan.supp
  DESTINATION ${CMAKE_INSTALL_DATADIR}/toolkit
  COMPONENT Toolkit_Development)
# gdb loads the printers by itself from its own folder, where the whole name of the library stands, or from beside the library,
# which a prefix that is moved takes along.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(toolkit_printers_folder ${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR})
else()
  set(toolkit_printers_folder ${CMAKE_INSTALL_LIBDIR})
endif()
install(
  FILES ${PROJECT_SOURCE_DIR}/gdb/toolkit_printers.py
  DESTINATION ${toolkit_printers_folder}
  COMPONENT Toolkit_Development
  RENAME libtoolkit.so.${PROJECT_VERSION}-gdb.py)
install(
  EXPORT ToolkitTargets
  NAMESPACE Toolkit::
  DESTINATION ${toolkit_cmake_folder}
  COMPONENT Toolkit_Development)

# The headers hold classes of wxWidgets by value: a consumer takes the release that the library was built with.
execute_process(
  COMMAND ${TOOLKIT_WX_CONFIG} --release
  OUTPUT_VARIABLE TOOLKIT_WX_RELEASE
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/ToolkitConfig.cmake.in ${PROJECT_BINARY_DIR}/cmake/ToolkitConfig.cmake
  INSTALL_DESTINATION ${toolkit_cmake_folder}
  NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/cmake/ToolkitConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(
  FILES ${PROJECT_BINARY_DIR}/cmake/ToolkitConfig.cmake ${PROJECT_BINARY_DIR}/cmake/ToolkitConfigVersion.cmake
        ${CMAKE_CURRENT_LIST_DIR}/ToolkitPlugin.cmake ${CMAKE_CURRENT_LIST_DIR}/ToolkitWx.cmake
  DESTINATION ${toolkit_cmake_folder}
  COMPONENT Toolkit_Development)

# toolkit.pc finds its prefix from where it lies itself, unless the folders were asked for by absolute paths.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(TOOLKIT_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
  set(TOOLKIT_PC_LIBDIR ${CMAKE_INSTALL_FULL_LIBDIR})
  set(TOOLKIT_PC_INCLUDEDIR ${CMAKE_INSTALL_FULL_INCLUDEDIR})
else()
  file(RELATIVE_PATH toolkit_pc_upwards /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" toolkit_pc_upwards "${toolkit_pc_upwards}")
  set(TOOLKIT_PC_PREFIX "\${pcfiledir}/${toolkit_pc_upwards}")
  set(TOOLKIT_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
  set(TOOLKIT_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
foreach(question CXXFLAGS LIBS)
  string(TOLOWER --${question} option)
  execute_process(
    COMMAND ${TOOLKIT_WX_CONFIG} ${option} base,net
    OUTPUT_VARIABLE TOOLKIT_WX_${question}
    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endforeach()
# Each library by the name that it has at run time, where it has one: that of its development files is not everywhere.
set(toolkit_pc_libs "")
separate_arguments(toolkit_wx_flags UNIX_COMMAND "${TOOLKIT_WX_LIBS}")
foreach(flag IN LISTS toolkit_wx_flags)
  if(flag MATCHES "^-l(wx.+)")
    find_library(toolkit_wx_file ${CMAKE_MATCH_1} NO_CACHE)
    set(toolkit_wx_soname "")
    if(toolkit_wx_file AND CMAKE_READELF)
      execute_process(COMMAND ${CMAKE_READELF} -d ${toolkit_wx_file} OUTPUT_VARIABLE toolkit_wx_dynamic ERROR_QUIET)
      string(REGEX MATCH "soname: \\[([^]]+)\\]" toolkit_wx_soname "${toolkit_wx_dynamic}")
    endif()
    if(toolkit_wx_soname)
      set(flag -l:${CMAKE_MATCH_1})
    endif()
    unset(toolkit_wx_file)
  endif()
  # As in CMake: a program does not load what it calls nothing of.
  if(flag MATCHES "^-l")
    set(flag -Wl,--push-state,--as-needed,${flag},--pop-state)
  endif()
  string(APPEND toolkit_pc_libs " ${flag}")
endforeach()
string(STRIP "${toolkit_pc_libs}" TOOLKIT_WX_LIBS)
configure_file(${CMAKE_CURRENT_LIST_DIR}/toolkit.pc.in ${PROJECT_BINARY_DIR}/cmake/toolkit.pc @ONLY)
install(
  FILES ${PROJECT_BINARY_DIR}/cmake/toolkit.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT Toolkit_Development)
