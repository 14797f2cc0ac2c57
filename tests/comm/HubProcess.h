// The real hub in a runtime folder of its own, driven through its prompt.
#pragma once

#include "tests/ForkedProcess.h"

#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

constexpr int kLimitMs = 20000;

// Sends every program started from here, and the library in this process, to its own socket.
class RuntimeFolder
{
public:
    RuntimeFolder() { qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_folder.path())); }
    QString socketPath() const { return m_folder.filePath("quadplayer-commif.sock"); }

private:
    QTemporaryDir m_folder;
};

class HubProcess
{
public:
    explicit HubProcess(const QStringList& arguments = {})
    {
        m_process.start(HUB, arguments);
        waitFor("listening");
    }
    ~HubProcess() { end(); }

    void type(const QByteArray& line) { m_process.write(line + '\n'); }
    int end() // at the end of its input
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished(kLimitMs);
        return m_process.exitCode();
    }
    void kill() // as a crash does: the socket's file stays
    {
        m_process.kill();
        m_process.waitForFinished(kLimitMs);
    }
    void signal(int number) { ::kill(static_cast<pid_t>(m_process.processId()), number); }
    int terminate()
    {
        m_process.terminate();
        m_process.waitForFinished(kLimitMs);
        return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }

    bool waitFor(const QByteArray& text)
    {
        return QTest::qWaitFor([&] { return output().contains(text); }, kLimitMs);
    }
    QByteArray output()
    {
        m_output += m_process.readAllStandardOutput();
        return m_output;
    }

private:
    ForkedProcess m_process;
    QByteArray m_output;
};
