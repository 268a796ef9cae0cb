# SPDX-License-Identifier: MIT
# What the library stands on, as imported targets:
#   Toolkit::wx      wxWidgets base and net (never its graphical libraries); a consumer needs it too
#   Toolkit::wx_gui  the graphical ones on top, for the example with a window; missing where they are not installed
#   Toolkit::pcre2, Toolkit::pcre    the 8-bit library of PCRE2 or of PCRE: the one that TOOLKIT_REGEX names, and it alone
#   Toolkit::icu     ICU's locale data and date patterns
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

# toolkit_import_regex(<header> <library>): the imported target Toolkit::<TOOLKIT_REGEX>.
function(toolkit_import_regex header library)
  string(TOUPPER TOOLKIT_${TOOLKIT_REGEX} name)
  find_path(${name}_INCLUDE ${header})
  find_library(${name}_LIBRARY ${library})
  if(NOT ${name}_INCLUDE OR NOT ${name}_LIBRARY)
    message(FATAL_ERROR "${TOOLKIT_REGEX} was not found; './check --no-install' prints the packages that are needed")
  endif()
  mark_as_advanced(${name}_INCLUDE ${name}_LIBRARY)

  add_library(Toolkit::${TOOLKIT_REGEX} UNKNOWN IMPORTED GLOBAL)
  set_target_properties(
    Toolkit::${TOOLKIT_REGEX} PROPERTIES IMPORTED_LOCATION ${${name}_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES
                                                                              ${${name}_INCLUDE})
endfunction()

if(NOT TOOLKIT_REGEX MATCHES "^pcre2?$")
  message(FATAL_ERROR "TOOLKIT_REGEX is \"${TOOLKIT_REGEX}\", and can be pcre2 or pcre")
elseif(TARGET Toolkit::${TOOLKIT_REGEX})
  # A project around this one has brought its own.
elseif(TOOLKIT_REGEX STREQUAL "pcre2")
  toolkit_import_regex(pcre2.h pcre2-8)
else()
  toolkit_import_regex(pcre.h pcre)
endif()

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
