// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_CORE_NEEDSWX_H
#define TOOLKIT_CORE_NEEDSWX_H

// Included first by each header with a class that derives from one of wxWidgets or holds one: it says in one
// line what is missing. No other header needs wxWidgets.
#if !__has_include(<wx/defs.h>)
#error                                                                                                       \
    "this header of Toolkit needs the development files of wxWidgets, in Debian the package libwxgtk3.2-dev"
#endif

#endif
