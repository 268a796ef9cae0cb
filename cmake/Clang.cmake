# SPDX-License-Identifier: MIT
# The clang of the package list of this release (scripts/setup.sh), for the presets that take clang.
find_program(TOOLKIT_CLANG NAMES clang++-14 clang++-19 clang++ REQUIRED)
mark_as_advanced(TOOLKIT_CLANG)
set(CMAKE_CXX_COMPILER ${TOOLKIT_CLANG})
