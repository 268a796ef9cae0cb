// SPDX-License-Identifier: MIT
#ifndef DESK_APPLICATION_H
#define DESK_APPLICATION_H

#include <memory>
#include <optional>

#include "Options.h"
#include "View.h"
#include "toolkit/app/Folders.h"
#include "toolkit/app/Instance.h"

namespace Desk
{

// One start of desk, from who is first to the end. The first one indexes its bundle in the background and
// executes commands; a later one has the first one execute its command. It lives on the main thread, whose
// event loop is the view's business: everything from other threads comes through `View::Post`.
class Application
{
public:
    using Answer = Toolkit::Instance::Answer;
    using Command = Toolkit::Instance::Command;

    // The view must live as long.
    Application(const Options& options, const Toolkit::Folders& folders, View& view);
    ~Application();

    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    // Begins if this desk is the first one, and returns nothing then. Otherwise the answer of the first one
    // to the command of this start, or why there is none.
    std::optional<Answer> Begin();

    // One of "open FILE", "attachment FILE" (hands the first attachment of a mail to its program),
    // "plug-ins", "list", "status", "set SECTION/KEY VALUE", "pause", "resume", "cancel", "dump", "picture
    // FILE", "restart" and "quit". The argument is one text, whatever it holds.
    Answer Execute(const Command& command);

    // Ends what `Begin` began, and becomes the new process if a restart was asked for. Done once.
    void End();

private:
    // A desk that has begun: what is destroyed in the end, the last one first.
    struct Running;

    std::optional<Answer> AskFirst();
    Toolkit::Result<void> Run();
    void OpenLog();
    void StartIndex(bool paused);
    void ShowProgress(const Toolkit::TaskProgress& progress);
    void TellIndex();
    Toolkit::TaskBase::Executor OnMainThread();

    Answer Open(const Command& command);
    Answer OpenAttachment(const Command& command);
    Answer ShowPlugins(const Command& command);
    Answer List(const Command& command);
    Answer TellStatus(const Command& command);
    Answer Set(const Command& command);
    Answer Pause(const Command& command);
    Answer Resume(const Command& command);
    Answer Cancel(const Command& command);
    Answer Describe(const Command& command);
    Answer SavePicture(const Command& command);
    Answer Restart(const Command& command);
    Answer Quit(const Command& command);
    Answer ShowItself(const Command& command);

    const Options m_options;
    const Toolkit::Folders m_folders;
    View& m_view;
    std::optional<Toolkit::Instance> m_instance;
    std::unique_ptr<Running> m_running;
    bool m_bRestart = false;
};

} // namespace Desk

#endif
