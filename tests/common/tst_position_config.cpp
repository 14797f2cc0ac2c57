// The margin file, row by row, from the device's path into the globals.
#include "common/DevicePaths.h"
#include "common/PositionConfig.h"
#include "common/globals.h"
#include "tests/Rows.h"

#include <QDir>
#include <QFileInfo>
#include <QtTest>

namespace {

void write(const QByteArray& text)
{
    QFile file(DevicePaths::kPositionConfig);
    QVERIFY(QDir().mkpath(QFileInfo(file).path()) && file.open(QIODevice::WriteOnly));
    file.write(text);
}

QString readInsets()
{
    QStringList values;
    int* const insets[] = {&g_nMarginLeft,  &g_nMarginTop,  &g_nMarginRight,  &g_nMarginBottom,
                           &g_nPaddingLeft, &g_nPaddingTop, &g_nPaddingRight, &g_nPaddingBottom};
    for (int* inset : insets)
        *inset = 0;
    readPositionConfig();
    for (const int* inset : insets)
        values << QString::number(*inset);
    return values.join(' ');
}

} // namespace

class tst_position_config : public QObject
{
    Q_OBJECT

private slots:
    void init() { cleanup(); } // another program may have left one
    void cleanup() { QFile::remove(DevicePaths::kPositionConfig); }

    void missingFile() { QCOMPARE(readInsets(), QString("0 0 0 0 0 0 0 0")); }

    void printsWhatItStores()
    {
        write("EGL_PADDING=5,6,7,8");
        QTest::ignoreMessage(QtDebugMsg, "++ Margin: L T R B = 5   6   7   8");
        readPositionConfig();
    }

    void lines_data()
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

    void lines()
    {
        QFETCH(QString, text);
        write(text.toLatin1());
        QTEST(readInsets(), "expected");
    }
};

QTEST_GUILESS_MAIN(tst_position_config)
#include "tst_position_config.moc"
