# SPDX-License-Identifier: MIT
# What the library stands on, as imported targets:
#   Toolkit::wx      wxWidgets base and net (never its graphical libraries); a consumer needs it too
#   Toolkit::wx_gui  the graphical ones on top, for the example with a window; missing where they are not installed
#   Toolkit::pcre    PCRE's 8-bit library (not PCRE2)
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

if(NOT TARGET Toolkit::pcre)
  find_path(TOOLKIT_PCRE_INCLUDE pcre.h)
  find_library(TOOLKIT_PCRE_LIBRARY pcre)
  if(NOT TOOLKIT_PCRE_INCLUDE OR NOT TOOLKIT_PCRE_LIBRARY)
    message(FATAL_ERROR "PCRE was not found; './check --no-install' prints the packages that are needed")
  endif()
  mark_as_advanced(TOOLKIT_PCRE_INCLUDE TOOLKIT_PCRE_LIBRARY)

  add_library(Toolkit::pcre UNKNOWN IMPORTED GLOBAL)
  set_target_properties(
    Toolkit::pcre PROPERTIES IMPORTED_LOCATION ${TOOLKIT_PCRE_LIBRARY} INTERFACE_INCLUDE_DIRECTORIES
                                                                       ${TOOLKIT_PCRE_INCLUDE})
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
