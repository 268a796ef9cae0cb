// SPDX-License-Identifier: MIT
// A library that tests load: one function, one variable, and a note of its unloading.

extern "C"
{
    __attribute__((visibility("default"))) int ToolkitTestNumber = 7;
    __attribute__((visibility("default"))) int* ToolkitTestUnloads = nullptr;

    __attribute__((visibility("default"))) int ToolkitTestAnswer()
    {
        return 42;
    }

    __attribute__((destructor)) void ToolkitTestUnload()
    {
        if (ToolkitTestUnloads != nullptr)
            ++*ToolkitTestUnloads;
    }
}
