// SPDX-License-Identifier: MIT
// A library that tests load: it calls a function of the answering library without being linked with it.

extern "C"
{
    int ToolkitTestAnswer();

    __attribute__((visibility("default"))) int ToolkitTestAsks()
    {
        return ToolkitTestAnswer() + 1;
    }
}
