#pragma once
// The tool's commands. Each takes its arguments with args[0] naming the program and command
// ("veldiag render") and returns the exit status; errors of the library propagate to main.

#include <QStringList>

namespace veldiag {

int RunRender(const QStringList& args);
int RunConvert(const QStringList& args);
int RunValidate(const QStringList& args);
int RunDump(const QStringList& args);
int RunDb(const QStringList& args);
int RunSimulate(const QStringList& args);

} // namespace veldiag
