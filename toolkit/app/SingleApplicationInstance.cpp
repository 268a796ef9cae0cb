#include "toolkit/app/SingleApplicationInstance.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <new>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <wx/app.h>
// The checker's header asks the application object, by a cast to the class of the graphical library, whose
// type information the sanitizers would look for.
#undef wxTheApp
#define wxTheApp wxAppConsole::GetInstance()
#include <wx/snglinst.h>

#include "toolkit/app/NewDescriptors.h"
#include "toolkit/app/PathLock.h"
#include "toolkit/app/PathManager.h"
#include "toolkit/app/StandardFolders.h"
#include "toolkit/core/Abandon.h"
#include "toolkit/core/BaseLibrary.h"
#include "toolkit/encoding/WxText.h"
#include "toolkit/files/NativePath.h"

namespace Toolkit
{

namespace
{

// A starting process may wait for others that start; an ending one is not to be held up by any that hangs.
const std::chrono::seconds s_startLimit(5);
const std::chrono::milliseconds s_endLimit(250);
const char* const c_strTurnExtension = ".turn";

// Keeps other processes from looking at, making or removing the lock file meanwhile: the base library writes
// its file some time after making it, and whoever takes over a dead process's file might remove that of the
// one who was quicker. If that takes too long, or there can be no such lock, it does without.
void TakeTurn(std::optional<PathLock>& turn, const NativePath& file, std::chrono::milliseconds limit)
{
    turn.emplace(file.GetBytes() + c_strTurnExtension, limit);
}

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

// True when the base library would take the file for one of its own.
bool IsOwn(const struct stat& status)
{
    return S_ISREG(status.st_mode) && (status.st_mode & 07777) == 0600 && status.st_uid == geteuid();
}

// Writes the zero behind a number that the base library would have written there.
bool EndNumber(const NativePath& path)
{
    const int descriptor = path.Open(O_WRONLY | O_APPEND | O_NOFOLLOW);
    const bool ended = descriptor != -1 && write(descriptor, "", 1) == 1;
    if (descriptor != -1)
        close(descriptor);
    return ended;
}

// False when something lies at the path that the base library had better not read: it looks for a number in
// whatever it finds there, also behind the end of the file, and takes negative ones, too.
bool MayBeLock(const NativePath& path)
{
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0)
        return true;
    const int descriptor = S_ISREG(status.st_mode) ? path.Open(O_RDONLY | O_NOFOLLOW) : -1;
    if (descriptor == -1)
        return false;
    char bytes[16];
    const ssize_t count = read(descriptor, bytes, sizeof(bytes));
    close(descriptor);
    if (count <= 0 || !IsProcessNumber(bytes, bytes + count))
        return false;
    const bool ended = std::find(bytes, bytes + count, '\0') != bytes + count;
    return ended || !IsOwn(status) || (count < static_cast<ssize_t>(sizeof(bytes)) && EndNumber(path));
}

bool IsLinkTo(const char* link, const NativePath& path)
{
    struct stat linked = {};
    struct stat file = {};
    return stat(link, &linked) == 0 && lstat(path.c_str(), &file) == 0 && linked.st_dev == file.st_dev &&
           linked.st_ino == file.st_ino;
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

// The base library's checker, its file, and which process made it.
class SingleApplicationInstance::Checker : public wxSingleInstanceChecker
{
public:
    explicit Checker(const NativePath& file) : m_file(file), m_iProcess(getpid()) {}

    const NativePath m_file;
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
    // Without a name the base library would assert, and a checker that was never made ready as well.
    if (name.empty() || folder.empty() || !file.IsValid())
        return;
    std::optional<PathLock> turn;
    TakeTurn(turn, file, s_startLimit);
    if (!MayBeLock(file))
        return;
    const BaseLibrary::Silence silence;
    auto checker = std::make_unique<Checker>(file);
    const NewDescriptors descriptors;
    checker->Create(ToWx(name), ToWx(folder));
    descriptors.KeepFromPrograms([&file](const char* link) { return IsLinkTo(link, file); });
    m_pChecker = checker.release();
}

SingleApplicationInstance::~SingleApplicationInstance()
{
    // The file belongs to the process that made it; there is no giving up the checker without the file.
    if (m_pChecker == nullptr)
        return;
    if (m_pChecker->m_iProcess != getpid())
    {
        Abandon(m_pChecker);
        return;
    }
    std::optional<PathLock> turn;
    try
    {
        TakeTurn(turn, m_pChecker->m_file, s_endLimit);
    }
    catch (const std::bad_alloc&)
    {
        // Then it goes without a turn.
    }
    const BaseLibrary::Silence silence;
    delete m_pChecker;
}

bool SingleApplicationInstance::IsAlreadyRunning() const
{
    return m_pChecker != nullptr && m_pChecker->IsAnotherRunning();
}

} // namespace Toolkit
