// SPDX-License-Identifier: MIT
#ifndef DESK_HOST_H
#define DESK_HOST_H

#include <memory>
#include <vector>

#include "Plugin.h"
#include "toolkit/app/DynamicLibrary.h"
#include "toolkit/core/ToolkitSession.h"
#include "toolkit/files/IniFile.h"
#include "toolkit/log/WxLogForwarder.h"
#include "toolkit/threading/Mutex.h"

namespace Desk
{

// The toolkit's session, the log, and the plug-ins of the plug-in folder. It knows nothing of how its results
// are shown.
class Host
{
public:
    // Brings the toolkit up.
    Host();
    ~Host();

    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // Lets the log, with what wxWidgets logs, go to a file called `logName` in the temporary folder.
    void OpenLog(const Text& logName);

    // Loads every library of the plug-in folder, in the order of their names; each registers its module.
    void LoadPlugins();
    // In the order in which they were loaded.
    const std::vector<Plugin*>& GetPlugins() const { return m_plugins; }

    // Null when none has that name.
    Plugin* FindPlugin(const Text& name) const;

    // Hands the settings to every plug-in; what is wrong with them is appended to `problems`.
    void Configure(const Toolkit::IniFile& settings, std::vector<Text>& problems);

    // Lets the first plug-in that takes the file read it, and all of them hide what should not be seen. Any
    // thread may ask; one is served at a time.
    bool Read(const Text& path, Document& document);

    // Releases the modules, the last one first, closes the log and unloads the plug-ins. Done once.
    void ShutDown();

    // A folder for what the plug-ins write.
    const Text& GetOutputFolder() const { return m_strOutputFolder; }
    // Empty before the log is opened.
    const Text& GetLogPath() const { return m_strLogPath; }

private:
    // Unloaded in the order of destruction: the libraries must outlive the session that calls their modules.
    std::vector<std::unique_ptr<Toolkit::DynamicLibrary>> m_libraries;
    std::unique_ptr<Toolkit::ToolkitSession> m_session;
    std::unique_ptr<Toolkit::WxLogForwarder> m_forwarder;
    Toolkit::Mutex m_pluginMutex;
    std::vector<Plugin*> m_plugins;
    Text m_strOutputFolder;
    Text m_strLogPath;
};

} // namespace Desk

#endif
