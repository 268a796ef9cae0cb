// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_PROCESS_IMAGEREPLACEMENT_H
#define TOOLKIT_INTERNAL_PROCESS_IMAGEREPLACEMENT_H

namespace Toolkit::ImageReplacement
{

// Becomes the first of the files, up to the null at the end, that can be run. The new image has the
// environment, no blocked signal, and the standard streams alone of the descriptors. It only comes back with
// an error number, and then all is as before.
int Become(const char* const* files, char* const* arguments);

} // namespace Toolkit::ImageReplacement

#endif
