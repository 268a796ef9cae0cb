// SPDX-License-Identifier: MIT
#include "toolkit/app/SingleApplicationInstance.h"

#include <memory>

#include "toolkit/app/PathManager.h"
#include "toolkit/internal/folders/StandardFolders.h"
#include "toolkit/internal/system/InstanceLock.h"

namespace Toolkit
{

namespace
{

// The name of the lock file; empty without a path manager.
TString<wchar_t> LockName()
{
    const smart_ptr<PathManager> paths = InstalledPathManager();
    return paths.IsNull() ? TString<wchar_t>() : paths->GetUniqueInstanceName();
}

} // namespace

smart_ptr<SingleApplicationInstance, smart_ptr_policy>* SingleApplicationInstance::s_pInstance = nullptr;

SingleApplicationInstance::SingleApplicationInstance() : m_pLock(nullptr)
{
    TString<wchar_t> path;
    const TString<wchar_t> name = LockName();
    const TString<wchar_t> folder = StandardFolders::Home();
    PathManager::AppendPath(path, folder, name);
    const NativePath file(path);
    if (!name.empty() && !folder.empty() && file.IsValid())
        m_pLock = new InstanceLock(file);
}

SingleApplicationInstance::~SingleApplicationInstance()
{
    delete m_pLock;
}

bool SingleApplicationInstance::IsAlreadyRunning() const
{
    return m_pLock != nullptr && m_pLock->IsHeldByAnother();
}

} // namespace Toolkit
