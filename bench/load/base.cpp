#include <wx/init.h>

int main()
{
    const wxInitializer started;
    return started.IsOk() ? 0 : 1;
}
