// The margin file, row by row, from the device's path into the globals.
#include "app/common/DevicePaths.h"
#include "app/common/PositionConfig.h"
#include "app/common/globals.h"

#include <QDir>
#include <QFileInfo>
#include <QtTest>

namespace {

int* const kInsets[] = {&g_nMarginLeft,  &g_nMarginTop,  &g_nMarginRight,  &g_nMarginBottom,
                        &g_nPaddingLeft, &g_nPaddingTop, &g_nPaddingRight, &g_nPaddingBottom};

QString insets()
{
    QStringList values;
    for (const int* inset : kInsets)
        values << QString::number(*inset);
    return values.join(' ');
}

} // namespace

class tst_position_config : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        for (int* inset : kInsets)
            *inset = 0;
        QVERIFY(QDir().mkpath(QFileInfo(DevicePaths::kPositionConfig).path()));
    }

    void cleanup() { QFile::remove(DevicePaths::kPositionConfig); }

    void missingFileLeavesAllAtZero()
    {
        readPositionConfig();
        QCOMPARE(insets(), QString("0 0 0 0 0 0 0 0"));
    }

    void lines_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, const char* text, const char* expected) {
            QTest::newRow(name) << QByteArray(text) << QString(expected);
        };
        row("empty file", "", "0 0 0 0 0 0 0 0");
        row("both keys, CRLF, no last line end", "EGL_MARGIN=1,2,3,4\r\nEGL_PADDING=5,6,7,8",
            "1 2 3 4 5 6 7 8");
        row("three fields", "EGL_MARGIN=1,2,3\n", "0 0 0 0 0 0 0 0");
        row("a trailing comma is a fifth field", "EGL_MARGIN=1,2,3,4,\n", "0 0 0 0 0 0 0 0");
        row("empty field and no number", "EGL_MARGIN=1,,x,4\n", "1 0 0 4 0 0 0 0");
        row("keys are case-sensitive", "egl_margin=1,2,3,4\n", "0 0 0 0 0 0 0 0");
        row("blanks everywhere", " \t EGL_PADDING  =  4 , 5,\t6 ,7  \n", "0 0 0 0 4 5 6 7");
        row("the later line wins", "EGL_PADDING=1,1,1,1\nEGL_PADDING=-2,2,2,2\n",
            "0 0 0 0 -2 2 2 2");
        row("a bad line does not end the file",
            "nonsense\nEGL_MARGIN=1,2=3,3,4\nEGL_MARGIN=9,9,9,9", "9 9 9 9 0 0 0 0");
    }

    void lines()
    {
        QFETCH(QByteArray, text);
        QFile file(DevicePaths::kPositionConfig);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
        file.close();
        readPositionConfig();
        QTEST(insets(), "expected");
    }
};

QTEST_GUILESS_MAIN(tst_position_config)
#include "tst_position_config.moc"
