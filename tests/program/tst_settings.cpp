// The command line and the margins.
#include "app/CommandLine.h"
#include "app/SignalHandler.h"
#include "common/PositionConfig.h"
#include "common/globals.h"
#include "tests/Rows.h"

#include <QtTest>

#include <cerrno>
#include <csignal>

class tst_settings : public QObject
{
    Q_OBJECT

private slots:
    void twoKeyMode_data()
    {
        columns<QString, bool, bool>({"arguments", "before", "after"});
        row("on", "player --twokeymode=on", false, true);
        row("off", "player --twokeymode=off", true, false);
        row("other case", "player --twokeymode=ON", false, false);
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

    void interruptKeepsErrno()
    {
        errno = 0;
        signalHandler(SIGINT); // writes to a pipe that is not made yet, which fails
        QCOMPARE(errno, 0);
    }

    void insets_data()
    {
        columns<QString, QString>({"text", "expected"});
        row("CRLF, no last line end", "EGL_MARGIN=1,2,3,4\r\nEGL_PADDING=5,6,7,8",
            "1 2 3 4 5 6 7 8");
        row("three fields", "EGL_MARGIN=1,2,3\n", "0 0 0 0 0 0 0 0");
        row("a trailing comma is a fifth field", "EGL_MARGIN=1,2,3,4,\n", "0 0 0 0 0 0 0 0");
        row("empty, no number, decimal", "EGL_MARGIN=1=1,,0x1,010\n", "0 0 0 10 0 0 0 0");
        row("keys are case-sensitive", "egl_margin=1,2,3,4\n", "0 0 0 0 0 0 0 0");
        row("blanks", " \t EGL_PADDING  =  4 , 5,\t6 ,7  \n", "0 0 0 0 4 5 6 7");
        row("the last good line wins",
            "EGL_MARGIN=1,1,1,1\nno\nEGL_MARGIN=1,2=3,4\nEGL_MARGIN=-9,9,9,9", "-9 9 9 9 0 0 0 0");
    }
    void insets()
    {
        QFETCH(QString, text);
        int* const insets[] = {&g_nMarginLeft,   &g_nMarginTop,    &g_nMarginRight,
                               &g_nMarginBottom, &g_nPaddingLeft,  &g_nPaddingTop,
                               &g_nPaddingRight, &g_nPaddingBottom};
        for (int* inset : insets)
            *inset = 0;
        QByteArray bytes = text.toLatin1();
        QBuffer file(&bytes);
        file.open(QIODevice::ReadOnly | QIODevice::Text);
        readPositionConfig(file);
        QStringList values;
        for (const int* inset : insets)
            values << QString::number(*inset);
        QTEST(values.join(' '), "expected");
    }
};

QTEST_GUILESS_MAIN(tst_settings)
#include "tst_settings.moc"
