// The one command-line option.
#include "app/CommandLine.h"
#include "app/common/globals.h"

#include <QtTest>

class tst_command_line : public QObject
{
    Q_OBJECT

private slots:
    void twoKeyMode_data();
    void twoKeyMode();
};

void tst_command_line::twoKeyMode_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<bool>("before");
    QTest::addColumn<bool>("after");
    const QStringList program = {"quadplayer"};
    const auto row = [&](const char* name, const QStringList& more, bool before, bool after) {
        QTest::newRow(name) << program + more << before << after;
    };
    row("no argument", {}, false, false);
    row("on", {"--twokeymode=on"}, false, true);
    row("off", {"--twokeymode=off"}, true, false);
    row("other case", {"--twokeymode=ON"}, false, false);
    row("a number", {"--twokeymode=1"}, false, false);
    row("no value", {"--twokeymode"}, false, false);
    row("empty value", {"--twokeymode="}, true, true);
    row("run of equal signs", {"--twokeymode==on"}, false, true);
    row("value ends at the next equal sign", {"--twokeymode=on=x"}, false, true);
    row("equal sign first", {"=--twokeymode=on"}, false, true);
    row("nothing but equal signs", {"==="}, false, false);
    row("second argument", {"x", "--twokeymode=on"}, false, false);
    row("longer than the buffer", {"--twokeymode=on" + QString(200, 'n')}, false, false);
    row("value behind the buffer's end", {QString(100, '=') + "--twokeymode=on"}, false, false);
    QTest::newRow("program name") << QStringList{"--twokeymode=on", "x"} << false << true;
    QTest::newRow("program name alone") << QStringList{"--twokeymode=on"} << false << false;
}

void tst_command_line::twoKeyMode()
{
    QFETCH(QStringList, arguments);
    QFETCH(bool, before);
    QList<QByteArray> bytes;
    QVector<char*> argv;
    for (const QString& argument : arguments)
        bytes << argument.toLocal8Bit();
    for (QByteArray& argument : bytes)
        argv << argument.data();
    g_bTwoKeyMode = before;
    readCommandLine(argv.size(), argv.data());
    QTEST(g_bTwoKeyMode, "after");
}

QTEST_GUILESS_MAIN(tst_command_line)
#include "tst_command_line.moc"
