#include "player/ThreadActivity.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>

namespace {

constexpr char kRunning = 'R';
constexpr char kWaitsForDisk = 'D';

struct Thread
{
    QByteArray name;
    char state;
};

// The line is "number (name) state ..."; the name may hold anything, brackets too.
Thread readThread(const QString& folder)
{
    QFile file(folder + QLatin1String("/stat"));
    file.open(QIODevice::ReadOnly); // it may have ended by now; then it does nothing
    const QByteArray line = file.readAll();
    const int from = line.indexOf('(') + 1;
    const int to = line.lastIndexOf(')');
    return {line.mid(from, to - from), line.mid(to + 2, 1).append('\0').front()};
}

} // namespace

bool othersAreAtWork(const char* except)
{
    const QString first = QString::number(QCoreApplication::applicationPid());
    QDirIterator threads(QStringLiteral("/proc/self/task"), QDir::Dirs | QDir::NoDotAndDotDot);
    while (threads.hasNext()) {
        const Thread thread = readThread(threads.next());
        const bool works = thread.state == kRunning || thread.state == kWaitsForDisk;
        if (works && threads.fileName() != first && thread.name != except)
            return true;
    }
    return false;
}
