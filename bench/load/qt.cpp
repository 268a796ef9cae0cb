// SPDX-License-Identifier: MIT
#include <QCoreApplication>

#include "bench/load/Tally.h"

int main(int count, char** arguments)
{
    const ToolkitBench::Tally tally;
    const QCoreApplication application(count, arguments);
}
