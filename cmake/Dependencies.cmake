# SPDX-License-Identifier: MIT
# What the library stands on, as imported targets:
#   Toolkit::wx      wxWidgets base and net (never its graphical libraries); a consumer needs it too
#   Toolkit::wx_gui  the graphical ones on top, for the example with a window; missing where they are not installed
#   Toolkit::pcre2   PCRE2's 8-bit library
#   Toolkit::pcre    PCRE's, where TOOLKIT_REGEX names it for the classic regular expressions
#   Toolkit::icu     ICU's locale data and date patterns
#   Toolkit::zlib    zlib, which wxWidgets' base stands on as well
include(${CMAKE_CURRENT_LIST_DIR}/ToolkitWx.cmake)
toolkit_import_wx(Toolkit::wx base,net "")
if(TOOLKIT_WX_ERROR)
  message(FATAL_ERROR "${TOOLKIT_WX_ERROR}; './check --no-install' prints the packages that are needed")
endif()
# A project around this one links its targets from its own folders.
set_target_properties(Toolkit::wx PROPERTIES IMPORTED_GLOBAL TRUE)
if(TOOLKIT_BUILD_EXAMPLES)
  toolkit_import_wx(Toolkit::wx_gui core,base,net "")
endif()

# toolkit_import_library(<name> <header> <library>): the imported target Toolkit::<name>.
function(toolkit_import_library name header library)
  # A project around this one may have brought its own.
  if(TARGET Toolkit::${name})
    return()
  endif()
  string(TOUPPER TOOLKIT_${name} prefix)
  find_path(${prefix}_INCLUDE ${header})
  find_library(${prefix}_LIBRARY ${library})
  if(NOT ${prefix}_INCLUDE OR NOT ${prefix}_LIBRARY)
    message(FATAL_ERROR "${name} was not found; './check --no-install' prints the packages that are needed")
  endif()
  mark_as_advanced(${prefix}_INCLUDE ${prefix}_LIBRARY)

  add_library(Toolkit::${name} UNKNOWN IMPORTED GLOBAL)
  set_target_properties(
    Toolkit::${name} PROPERTIES IMPORTED_LOCATION ${${prefix}_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES ${${prefix}_INCLUDE})
endfunction()

if(NOT TOOLKIT_REGEX MATCHES "^pcre2?$")
  message(FATAL_ERROR "TOOLKIT_REGEX is \"${TOOLKIT_REGEX}\", and can be pcre2 or pcre")
endif()
toolkit_import_library(pcre2 pcre2.h pcre2-8)
if(TOOLKIT_REGEX STREQUAL "pcre")
  toolkit_import_library(pcre pcre.h pcre)
endif()

toolkit_import_library(zlib zlib.h z)

if(NOT TARGET Toolkit::icu)
  find_path(TOOLKIT_ICU_INCLUDE unicode/udat.h)
  find_library(TOOLKIT_ICU_I18N_LIBRARY icui18n)
  find_library(TOOLKIT_ICU_UC_LIBRARY icuuc)
  if(NOT TOOLKIT_ICU_INCLUDE OR NOT TOOLKIT_ICU_I18N_LIBRARY OR NOT TOOLKIT_ICU_UC_LIBRARY)
    message(FATAL_ERROR "ICU was not found; './check --no-install' prints the packages that are needed")
  endif()
  mark_as_advanced(TOOLKIT_ICU_INCLUDE TOOLKIT_ICU_I18N_LIBRARY TOOLKIT_ICU_UC_LIBRARY)

  add_library(Toolkit::icu UNKNOWN IMPORTED GLOBAL)
  set_target_properties(
    Toolkit::icu
    PROPERTIES IMPORTED_LOCATION ${TOOLKIT_ICU_I18N_LIBRARY}
               INTERFACE_LINK_LIBRARIES ${TOOLKIT_ICU_UC_LIBRARY}
               INTERFACE_INCLUDE_DIRECTORIES ${TOOLKIT_ICU_INCLUDE})
endif()
