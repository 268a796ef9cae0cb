// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_IPC_INSTANCEPLACE_H
#define TOOLKIT_INTERNAL_IPC_INSTANCEPLACE_H

#include <string>
#include <string_view>

#include "toolkit/core/Result.h"
#include "toolkit/internal/ipc/IPCAddress.h"
#include "toolkit/internal/system/Descriptor.h"

namespace Toolkit
{

// Where the instances of a key meet: a lock and a socket in the user's runtime folder, which nobody else may
// enter. All paths go by the folder's descriptor, so that none is too long for a socket.
class InstancePlace
{
public:
    // The folder is made where it is missing.
    static Result<InstancePlace> Make(std::string_view key);
    // Fails where there is no such folder, in which nobody can be then.
    static Result<InstancePlace> Find(std::string_view key);

    std::string LockFile() const { return m_strPath + ".lock"; }
    IPCAddress Socket() const;

private:
    InstancePlace(Descriptor folder, std::string_view key);

    Descriptor m_folder;
    std::string m_strPath;
};

} // namespace Toolkit

#endif
