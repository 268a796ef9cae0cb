// SPDX-License-Identifier: MIT
#ifndef TOOLKIT_INTERNAL_WX_WXLIBRARY_H
#define TOOLKIT_INTERNAL_WX_WXLIBRARY_H

// wxWidgets as a process-wide service: who started it, whether it runs, and how to keep it quiet.
// Any thread may ask; it is stopped only on the thread that started it.
namespace Toolkit::WxLibrary
{

// True while wxWidgets is started, by whomever.
bool IsStarted();

// Starts wxWidgets, or adds one to the number of its starts. False when it cannot be started.
bool Start();

// Takes back one `Start`; without a matching one it does nothing. On another thread than the one that
// started wxWidgets the stop is put off until the next `Start` or `Stop` on that thread.
void Stop();

// Keeps wxWidgets running while a thread object lives: adds a start unless the host brought it up
// with an application object of its own. True when a `Stop` is owed.
bool Hold();

// Suppresses what wxWidgets would log; for the calling thread alone once it is started, as it can
// tell threads apart only then.
class Silence
{
public:
    Silence();
    ~Silence();
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

private:
    // What is suppressed, and thus restored.
    enum class Scope
    {
        Process,
        MainThread,
        Thread
    };

    const Scope m_scope;
    bool m_bThreadLogged = false;
};

} // namespace Toolkit::WxLibrary

#endif
