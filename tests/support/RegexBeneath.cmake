# SPDX-License-Identifier: MIT
# The library of regular expressions beneath, for tests and fuzz targets that compare with it; they are built apart.
include_guard(GLOBAL)
add_library(toolkit_test_regex INTERFACE)
target_link_libraries(toolkit_test_regex INTERFACE Toolkit::${TOOLKIT_REGEX})
target_compile_definitions(toolkit_test_regex INTERFACE $<$<STREQUAL:${TOOLKIT_REGEX},pcre2>:TOOLKIT_TEST_PCRE2>)
