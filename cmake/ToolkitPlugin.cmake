# SPDX-License-Identifier: MIT
# toolkit_add_plugin(<name> <sources>...): makes the target <name>, a plug-in for Toolkit::Plugins in the library <name>.so. It
# exports nothing but its entry, and it is unloaded when its program gives it up: g++ has symbols that would keep it.
function(toolkit_add_plugin name)
  add_library(${name} MODULE ${ARGN})
  set_target_properties(
    ${name}
    PROPERTIES PREFIX ""
               OUTPUT_NAME ${name}
               SUFFIX .so
               CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(${name} PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-gnu-unique>)
  target_link_libraries(${name} PRIVATE Toolkit::toolkit)
endfunction()
