// SPDX-License-Identifier: MIT
#ifndef DESK_VIEW_H
#define DESK_VIEW_H

#include <vector>

#include "Document.h"

namespace Desk
{

// How a desk shows itself to its user: as lines of a console or as a window.
class View
{
public:
    virtual ~View() = default;

    // Something happened that the user may want to know. From any thread.
    virtual void Tell(const Text& line) = 0;
    // The index has ended, early or not. From any thread.
    virtual void ShowIndex() = 0;

    // The rest is called on the main thread.

    virtual void Show(const Document& document) = 0;
    // Appends what the user sees.
    virtual void Describe(std::vector<Text>& lines) const = 0;
    // Saves a picture of what the user sees; false when there is none.
    virtual bool SavePicture(const Text& path) = 0;
    // Leaves the main thread's event loop.
    virtual void Leave() = 0;
};

} // namespace Desk

#endif
