# SPDX-License-Identifier: MIT
# Every target of this build gets the sanitizers of TOOLKIT_SANITIZE; mixing instrumented and plain code hides errors.
if(TOOLKIT_SANITIZE)
  add_compile_options(-fsanitize=${TOOLKIT_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TOOLKIT_SANITIZE})
endif()
