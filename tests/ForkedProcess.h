// A QProcess that starts its program with a plain fork. Qt asks for a process descriptor where the
// object is exactly a QProcess; the emulator hands out a wrong one, and the exit goes unnoticed.
#pragma once

#include <QProcess>

class ForkedProcess : public QProcess
{
public:
    // As QProcess::execute(), but without what the program prints.
    static int run(const QString& program, const QStringList& arguments)
    {
        ForkedProcess process;
        process.start(program, arguments);
        return process.waitForFinished() ? process.exitCode() : -1;
    }
};
