// SPDX-License-Identifier: MIT
#ifndef DESK_VIEW_H
#define DESK_VIEW_H

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Document.h"
#include "toolkit/files/Settings.h"
#include "toolkit/log/LogSink.h"
#include "toolkit/threading/Task.h"

namespace Desk
{

// How a desk shows itself to its user: as lines of a console or as a window. It lives on the main thread,
// which calls everything but `Post`.
class View
{
public:
    virtual ~View() = default;

    // Has the main thread call the function in its event loop. Any thread may post; what is posted after the
    // loop has ended is not called.
    virtual void Post(std::function<void()> function) = 0;

    // Something happened that the user may want to know.
    virtual void Tell(const std::string& line) = 0;
    // How far the index is.
    virtual void ShowProgress(const Toolkit::TaskProgress& progress) = 0;
    // The index has ended, early or not.
    virtual void ShowIndex(const std::vector<Document>& documents) = 0;
    virtual void ShowSettings(const Toolkit::Settings& settings) = 0;
    virtual void Show(const Document& document) = 0;

    // Where a view shows the log; null where it does not.
    virtual std::shared_ptr<Toolkit::LogSink> MakeLogSink() = 0;
    // What the user sees, line by line.
    virtual std::string Describe() const = 0;
    // Saves a picture of what the user sees; false when there is none.
    virtual bool SavePicture(const std::filesystem::path& file) = 0;
    // Leaves the event loop.
    virtual void Leave() = 0;
};

} // namespace Desk

#endif
