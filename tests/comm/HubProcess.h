// The real hub in a runtime folder of its own, driven through its prompt.
#pragma once

#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/wait.h>

#include <csignal>

constexpr int kLimitMs = QP_LIMIT_MS;

// What the hub prints of the message that the player sends when it leaves.
const QByteArray kAppSwitch = "received type=1 tag=1 value=8 tag=2 value=1\n";

// Sends every program started from here, and the library in this process, to its own socket.
class RuntimeFolder
{
public:
    RuntimeFolder() { qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_folder.path())); }

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
    ~HubProcess() { end(SIGTERM); }

    void type(const QByteArray& line) { m_process.write(line + '\n'); }
    void signal(int number) { ::kill(static_cast<pid_t>(m_process.processId()), number); }
    void stop() // until SIGCONT it does nothing at all
    {
        signal(SIGSTOP);
        waitid(P_PID, static_cast<id_t>(m_process.processId()), nullptr, WSTOPPED);
    }
    int end(int number) // SIGKILL as a crash does: the socket's file stays
    {
        if (m_process.state() == QProcess::Running)
            signal(number);
        m_process.waitForFinished(kLimitMs);
        return m_process.exitCode();
    }
    bool waitFor(const QByteArray& text)
    {
        return QTest::qWaitFor([&] { return output().contains(text); }, kLimitMs);
    }
    QByteArray endWhenPlayerLeft()
    {
        waitFor("player left");
        end(SIGTERM);
        return output();
    }
    QByteArray output() { return m_output += m_process.readAllStandardOutput(); }

private:
    QProcess m_process;
    QByteArray m_output;
};
