# SPDX-License-Identifier: MIT
# toolkit_import_wx(<target> <libraries> <release>): makes an imported target of libraries of wxWidgets with the flags
# that this machine's wx-config answers. CMake 3.25 has no imported target for them. An empty release takes what wx-config
# chooses. What is wrong stands in TOOLKIT_WX_ERROR afterwards, which is empty if nothing is.
#
# Toolkit::wx is the base and net libraries, never the graphical ones.
#
# The build uses it, and so does every consumer of an installed library, whose wxWidgets may lie elsewhere.
function(toolkit_import_wx target libraries release)
  set(TOOLKIT_WX_ERROR "" PARENT_SCOPE)
  if(TARGET ${target})
    return()
  endif()

  find_program(TOOLKIT_WX_CONFIG NAMES wx-config wx-config-3.2 DOC "Tells the flags of wxWidgets")
  mark_as_advanced(TOOLKIT_WX_CONFIG)
  if(NOT TOOLKIT_WX_CONFIG)
    set(TOOLKIT_WX_ERROR "wx-config, which tells the flags of wxWidgets, was not found" PARENT_SCOPE)
    return()
  endif()

  set(chosen "")
  if(release)
    set(chosen --version=${release})
  endif()
  foreach(question cxxflags libs)
    execute_process(
      COMMAND ${TOOLKIT_WX_CONFIG} ${chosen} --${question} ${libraries}
      OUTPUT_VARIABLE answer
      OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET
      RESULT_VARIABLE status)
    if(NOT status EQUAL 0 OR answer STREQUAL "")
      set(TOOLKIT_WX_ERROR "${TOOLKIT_WX_CONFIG} knows no ${libraries} of wxWidgets ${release}" PARENT_SCOPE)
      return()
    endif()
    separate_arguments(${question} UNIX_COMMAND "${answer}")
  endforeach()

  add_library(${target} INTERFACE IMPORTED)
  foreach(flag IN LISTS cxxflags libs)
    if(flag MATCHES "^-I(.+)")
      target_include_directories(${target} SYSTEM INTERFACE ${CMAKE_MATCH_1})
    elseif(flag MATCHES "^-D(.+)")
      target_compile_definitions(${target} INTERFACE ${CMAKE_MATCH_1})
    elseif(flag MATCHES "^-L(.+)")
      target_link_directories(${target} INTERFACE ${CMAKE_MATCH_1})
    elseif(flag MATCHES "^-l")
      # A program that calls nothing of a library must not load it, which some compilers see to by themselves.
      target_link_libraries(${target} INTERFACE -Wl,--push-state,--as-needed,${flag},--pop-state)
    endif()
  endforeach()
  list(FILTER cxxflags EXCLUDE REGEX "^-[ID]")
  list(FILTER libs EXCLUDE REGEX "^-[Ll]")
  target_compile_options(${target} INTERFACE ${cxxflags})
  target_link_options(${target} INTERFACE ${libs})
endfunction()
