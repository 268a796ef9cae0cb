// SPDX-License-Identifier: MIT
#ifndef DESK_APPLICATION_H
#define DESK_APPLICATION_H

#include <memory>

#include "Host.h"
#include "Index.h"
#include "Options.h"
#include "View.h"
#include "toolkit/app/IPCServer.h"

namespace Desk
{

// One start of desk, from who is first to the end. The first one indexes its bundle in the background and
// takes commands; a later one hands its command to the first. It lives on the main thread, whose event loop
// is the view's business.
class Application
{
public:
    enum class Start
    {
        // This desk is the first one and runs.
        First,
        // The desk that is running has taken the command.
        HandedOver,
        // Nobody took the command.
        Failed
    };

    Application(const Options& options, View& view);
    ~Application();

    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    // Finds out who is first, and begins if this desk is.
    Start Begin();

    // One of "open FILE", "plug-ins", "dump FILE", "picture FILE", "pause", "resume", "restart" and "quit".
    // Anything else goes to the log.
    void Execute(const Text& command);

    // Ends what `Begin` began, and starts the new process if a restart was asked for. Done once.
    void End();

    const Host& GetHost() const { return m_host; }
    std::vector<Document> GetDocuments() const;

private:
    // Hands the command to the desk that runs, or becomes the first one.
    Start FindFirst(const Text& command);
    void TakeOver();
    void StartIndex();
    void Listen();
    void Open(const Text& path);
    void ShowPlugins() const;
    void Dump(const Text& path) const;
    void StartAgain();

    const Options m_options;
    View& m_view;
    Host m_host;
    std::unique_ptr<Index> m_index;
    std::unique_ptr<IndexThread> m_thread;
    std::unique_ptr<Toolkit::IPCServer> m_server;
    bool m_bBegun = false;
    bool m_bRestart = false;
    bool m_bEnded = false;
};

} // namespace Desk

#endif
