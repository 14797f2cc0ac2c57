// The one command-line option.
#include "app/CommandLine.h"
#include "common/globals.h"
#include "tests/Rows.h"

#include <QtTest>

class tst_command_line : public QObject
{
    Q_OBJECT

private slots:
    void twoKeyMode_data()
    {
        columns<QString, bool, bool>({"arguments", "before", "after"});
        row("on", "player --twokeymode=on", false, true);
        row("off", "player --twokeymode=off", true, false);
        row("other case", "player --twokeymode=ON", false, false);
        row("a number", "player --twokeymode=1", true, true);
        row("longer name", "player --twokeymodes=on", false, false);
        row("no value", "player --twokeymode", false, false);
        row("empty value", "player --twokeymode=", true, true);
        row("more equal signs", "player ==--twokeymode==on=x", false, true);
        row("nothing but equal signs", "player ===", false, false);
        row("second argument", "player x --twokeymode=on", false, false);
        row("longer than the buffer", "player --twokeymode=on" + QString(200, 'n'), false, false);
        row("value behind the buffer's end", "player " + QString(100, '=') + "--twokeymode=on",
            false, false);
        row("program name", "--twokeymode=on x", false, true);
    }

    void twoKeyMode()
    {
        QFETCH(QString, arguments);
        QFETCH(bool, before);
        QList<QByteArray> bytes = arguments.toLatin1().split(' ');
        QVector<char*> argv;
        for (QByteArray& argument : bytes)
            argv << argument.data();
        g_bTwoKeyMode = before;
        readCommandLine(argv.size(), argv.data());
        QTEST(g_bTwoKeyMode, "after");
    }
};

QTEST_GUILESS_MAIN(tst_command_line)
#include "tst_command_line.moc"
