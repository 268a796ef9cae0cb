#include "toolkit/app/SingleApplicationInstance.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wx/app.h>
// The checker's header asks the application object, by a cast to the class of the graphical library, whose
// type information the sanitizers would look for.
#undef wxTheApp
#define wxTheApp wxAppConsole::GetInstance()
#include <wx/snglinst.h>

#include "toolkit/app/PathManager.h"
#include "toolkit/app/StandardFolders.h"
#include "toolkit/core/BaseLibrary.h"
#include "toolkit/encoding/WxText.h"
#include "toolkit/files/NativePath.h"
#include "toolkit/threading/Thread.h"

namespace Toolkit
{

namespace
{

const unsigned int s_uTryInterval = 10;
const unsigned int s_uTries = 500;

// Keeps other processes from looking at, making or removing a lock file of the folder meanwhile: the base
// library writes its file some time after making it, and whoever takes over a dead process's file might
// remove that of the one who was quicker. Without the folder, or if that takes too long, it does without.
class FolderTurn
{
public:
    explicit FolderTurn(const NativePath& folder) : m_iDescriptor(-1)
    {
        if (folder.IsValid())
            m_iDescriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        for (unsigned int i = 0; i < s_uTries && m_iDescriptor != -1 && !Take(); ++i)
            Thread::Sleep(s_uTryInterval);
    }
    ~FolderTurn()
    {
        if (m_iDescriptor == -1)
            return;
        // Not left to the closing: a child that is being forked may have the descriptor, too.
        flock(m_iDescriptor, LOCK_UN);
        close(m_iDescriptor);
    }
    FolderTurn(const FolderTurn&) = delete;
    FolderTurn& operator=(const FolderTurn&) = delete;

private:
    bool Take() const { return flock(m_iDescriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK; }

    int m_iDescriptor;
};

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

// True for the number of a process, perhaps with zeros or a line end behind it.
bool IsProcessNumber(const char* begin, const char* end)
{
    const char* const behind = std::find_if_not(begin, end, IsDigit);
    return behind - begin >= 1 && behind - begin <= 9 && *begin != '0' &&
           std::all_of(behind, end, [](char c) { return c == '\0' || c == '\n'; });
}

// False when something lies at the path that the base library had better not read: it looks for a number in
// whatever it finds there, also behind the end of the file, and takes negative ones, too.
bool MayBeLock(const NativePath& path)
{
    struct stat status = {};
    if (!path.IsValid() || lstat(path.c_str(), &status) != 0)
        return path.IsValid();
    const int descriptor = S_ISREG(status.st_mode) ? path.Open(O_RDONLY | O_NOFOLLOW) : -1;
    if (descriptor == -1)
        return false;
    char bytes[16];
    const ssize_t count = read(descriptor, bytes, sizeof(bytes));
    close(descriptor);
    return count > 0 && IsProcessNumber(bytes, bytes + count);
}

// The base library lets every child inherit its lock file.
void KeepFromChildren(const NativePath& path)
{
    struct stat file = {};
    const std::unique_ptr<DIR, int (*)(DIR*)> descriptors(opendir("/proc/self/fd"), &closedir);
    if (descriptors == nullptr || lstat(path.c_str(), &file) != 0)
        return;
    while (const dirent* const entry = readdir(descriptors.get()))
    {
        struct stat status = {};
        const int descriptor = std::atoi(entry->d_name);
        if (entry->d_name[0] != '.' && fstat(descriptor, &status) == 0 && status.st_dev == file.st_dev &&
            status.st_ino == file.st_ino)
            fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    }
}

// The name of the lock file; empty without a path manager.
TString<wchar_t> LockName()
{
    if (PathManager::s_pInstance == nullptr)
        return TString<wchar_t>();
    const smart_ptr<PathManager> paths(*PathManager::s_pInstance);
    return paths.IsNull() ? TString<wchar_t>() : paths->GetUniqueInstanceName();
}

} // namespace

// The base library's checker, where it looks, and which process made it.
class SingleApplicationInstance::Checker : public wxSingleInstanceChecker
{
public:
    explicit Checker(const TString<wchar_t>& folder) : m_folder(folder), m_iProcess(getpid()) {}

    const NativePath m_folder;
    const pid_t m_iProcess;
};

smart_ptr<SingleApplicationInstance, smart_ptr_policy>* SingleApplicationInstance::s_pInstance = nullptr;

SingleApplicationInstance::SingleApplicationInstance() : m_pChecker(nullptr)
{
    const TString<wchar_t> name = LockName();
    const TString<wchar_t> folder = StandardFolders::Home();
    TString<wchar_t> path;
    PathManager::AppendPath(path, folder, name);
    const NativePath file(path);
    const FolderTurn turn{NativePath(folder)};
    // Without a name the base library would assert, and a checker that was never made ready as well.
    if (name.empty() || folder.empty() || !MayBeLock(file))
        return;
    const BaseLibrary::Silence silence;
    m_pChecker = new Checker(folder);
    m_pChecker->Create(ToWx(name), ToWx(folder));
    KeepFromChildren(file);
}

SingleApplicationInstance::~SingleApplicationInstance()
{
    // The file belongs to the process that made it; there is no giving up the checker without the file.
    if (m_pChecker == nullptr || m_pChecker->m_iProcess != getpid())
        return;
    const FolderTurn turn(m_pChecker->m_folder);
    const BaseLibrary::Silence silence;
    delete m_pChecker;
}

bool SingleApplicationInstance::IsAlreadyRunning() const
{
    return m_pChecker != nullptr && m_pChecker->IsAnotherRunning();
}

} // namespace Toolkit
