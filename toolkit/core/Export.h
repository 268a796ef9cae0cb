// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_EXPORT_H
#define TOOLKIT_CORE_EXPORT_H

// Marks what the shared library exports; everything else is compiled with hidden visibility.
#define TOOLKIT_API __attribute__((visibility("default")))

#endif
