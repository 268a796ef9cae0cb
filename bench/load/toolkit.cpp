#include "toolkit/core/ToolkitSession.h"

int main()
{
    const Toolkit::ToolkitSession session;
}
