# What the library stands on. CMake 3.25 has no imported wxWidgets target, so one is made here from wx-config's answer:
#   Toolkit::wx   wxWidgets base and net (never its graphical libraries)
#   Toolkit::wx_gui  the graphical ones on top, for the example with a window; missing where they are not installed
#   Toolkit::pcre PCRE's 8-bit library (not PCRE2)
#   Toolkit::icu  ICU's locale data and date patterns
find_package(Threads REQUIRED)

find_program(TOOLKIT_WX_CONFIG NAMES wx-config wx-config-3.2)
if(NOT TOOLKIT_WX_CONFIG)
  message(FATAL_ERROR "wx-config was not found; './check --no-install' prints the packages that are needed")
endif()

function(toolkit_wx_config out)
  execute_process(
    COMMAND ${TOOLKIT_WX_CONFIG} ${ARGN}
    OUTPUT_VARIABLE text
    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(words UNIX_COMMAND "${text}")
  set(${out} "${words}" PARENT_SCOPE)
endfunction()

# toolkit_wx_target(<target> <wx libraries>)
function(toolkit_wx_target target libraries)
  toolkit_wx_config(wx_flags --cxxflags ${libraries})
  toolkit_wx_config(wx_libraries --libs ${libraries})

  set(wx_includes ${wx_flags})
  list(FILTER wx_includes INCLUDE REGEX "^-I")
  list(TRANSFORM wx_includes REPLACE "^-I" "")
  set(wx_definitions ${wx_flags})
  list(FILTER wx_definitions INCLUDE REGEX "^-D")
  list(TRANSFORM wx_definitions REPLACE "^-D" "")
  list(FILTER wx_libraries INCLUDE REGEX "^-[lL]")

  add_library(${target} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${target} SYSTEM INTERFACE ${wx_includes})
  target_compile_definitions(${target} INTERFACE ${wx_definitions})
  target_link_libraries(${target} INTERFACE ${wx_libraries} Threads::Threads)
endfunction()

if(NOT TARGET Toolkit::wx)
  toolkit_wx_target(Toolkit::wx base,net)
endif()

# Asked for with a test of its own: an installation may have the base libraries alone.
execute_process(
  COMMAND ${TOOLKIT_WX_CONFIG} --libs core,base,net
  RESULT_VARIABLE wx_gui_missing
  OUTPUT_QUIET ERROR_QUIET)
if(NOT wx_gui_missing AND NOT TARGET Toolkit::wx_gui)
  toolkit_wx_target(Toolkit::wx_gui core,base,net)
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
