// Processes that a test starts: the hub, which it drives through the prompt, and the player. Both
// meet in a runtime folder of the test's own.
#pragma once

#include <QtTest>

#include <sys/wait.h>

#include <csignal>

constexpr int kLimitMs = QP_LIMIT_MS;

// The hub's line for the message that the player sends when it exits.
const QByteArray kAppSwitch = "received type=1 tag=1 value=8 tag=2 value=1\n";

// Gives this process and its children a socket of their own.
class RuntimeFolder
{
public:
    RuntimeFolder() { qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_folder.path())); }

private:
    QTemporaryDir m_folder;
};
inline const RuntimeFolder s_runtimeFolder;

class Child
{
public:
    Child(const QString& program, const QStringList& arguments, const QString& errorFile = {})
    {
        if (errorFile.isEmpty())
            m_process.setProcessChannelMode(QProcess::MergedChannels);
        else
            m_process.setStandardErrorFile(errorFile);
        m_process.start(program, arguments);
    }
    ~Child() { end(SIGKILL); }

    qint64 id() const { return m_process.processId(); }
    void type(const QByteArray& line) { m_process.write(line + '\n'); }
    void typeLast(const QByteArray& line)
    {
        m_process.write(line);
        m_process.closeWriteChannel();
    }
    void signal(int number) { ::kill(static_cast<pid_t>(id()), number); }
    int end(int number) // SIGKILL as a crash does: what it has made stays
    {
        if (m_process.state() == QProcess::Running)
            signal(number);
        return ended() && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode()
                                                                         : -1;
    }
    bool ended() { return m_process.waitForFinished(kLimitMs) || id() == 0; }
    bool waitFor(const QByteArray& text, int from = 0)
    {
        return QTest::qWaitFor([&] { return output().indexOf(text, from) >= 0; }, kLimitMs);
    }
    // Waits for the text, after the place where the last call found one.
    bool prints(const QByteArray& text)
    {
        const bool found = waitFor(text, m_seen);
        m_seen = m_output.indexOf(text, m_seen) + text.size();
        return found;
    }
    QByteArray output() { return m_output += m_process.readAll(); }

private:
    QProcess m_process;
    QByteArray m_output;
    int m_seen = 0;
};

class HubProcess : public Child
{
public:
    explicit HubProcess(const QStringList& arguments = {}) : Child(HUB, arguments)
    {
        waitFor("listening");
    }
    ~HubProcess() { end(SIGTERM); }

    void stop() // until SIGCONT it does nothing at all
    {
        signal(SIGSTOP);
        waitid(P_PID, static_cast<id_t>(id()), nullptr, WSTOPPED);
    }
    QByteArray endWhenPlayerLeft()
    {
        waitFor("player left");
        end(SIGTERM);
        return output();
    }
};
