# SPDX-License-Identifier: MIT
# toolkit_warnings(<target>): the warnings of this project's own code. They are never passed on to a consumer.
function(toolkit_warnings target)
  target_compile_options(
    ${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
                      $<$<BOOL:${TOOLKIT_WARNINGS_AS_ERRORS}>:-Werror>)
endfunction()
