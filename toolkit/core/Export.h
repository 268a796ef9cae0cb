// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_EXPORT_H
#define TOOLKIT_CORE_EXPORT_H

/// Marks what the shared library exports; everything else is compiled with hidden visibility.
#define TOOLKIT_API __attribute__((visibility("default")))

/// Stands before the definition of an exported static that a constructor makes. A second copy of the
/// library's file in one process finds the first copy's statics by their names; the guard that this adds to
/// each tells it that they are made.
#define TOOLKIT_ONCE [[gnu::used]] inline

#endif
