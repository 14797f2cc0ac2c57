// What is compiled in: every shader and picture under its name, in the size it is drawn from.
#include <QFile>
#include <QImage>
#include <QtTest>

class tst_resources : public QObject
{
    Q_OBJECT

private slots:
    void opens_data();
    void opens();
    void labelsAreWhiteAndApart();
};

void tst_resources::opens_data()
{
    QTest::addColumn<QSize>("size"); // null: any, or none
    for (const char* shader :
         {"shader/play.vert", "shader/play.frag", "shader/mu.vert", "shader/mu.frag"})
        QTest::newRow(shader) << QSize(0, 0);
    for (const char* icon : {"image/play.png", "image/pause.png", "image/stop.png",
                             "image/backward.png", "image/step.png"})
        QTest::newRow(icon) << QSize(128, 128);
    QTest::newRow("image/openfile.png") << QSize(32, 32);
    QTest::newRow("image/text.png") << QSize(1024, 256);
    for (const char* name :
         {"s1.png", "s2.png", "videoIcon.png", "background1.jpg", "background2.jpg",
          "background3.jpg", "background7.png", "background10.jpg", "00.png", "11.png", "22.png",
          "33.png", "44.png", "purchase_order.png", "tasks.png", "company_logo.png", "playlist.png",
          "playlist (1).png", "playlist (2).png"})
        QTest::addRow("image/%s", name) << QSize(0, 0);
}

void tst_resources::opens()
{
    QFETCH(QSize, size);
    const QString path = QStringLiteral(":/") + QTest::currentDataTag();
    if (path.startsWith(QLatin1String(":/shader/"))) {
        QFile shader(path);
        QVERIFY(shader.open(QIODevice::ReadOnly) && shader.readAll().endsWith("}\n"));
        return;
    }
    const QImage picture(path);
    QVERIFY(!picture.isNull());
    QVERIFY(size.isNull() || picture.size() == size);
}

void tst_resources::labelsAreWhiteAndApart()
{
    const QImage labels(QStringLiteral(":/image/text.png"));
    const int side = labels.height();
    for (int left = 0; left < labels.width(); left += side) {
        const QImage label = labels.copy(left, 0, side, side);
        int strokes = 0;
        for (int i = 0; i < side * side; ++i) {
            const QRgb pixel = label.pixel(i % side, i / side);
            QVERIFY2((pixel & RGB_MASK) == RGB_MASK, "it would show as a dark rim");
            strokes += qAlpha(pixel) > 127 ? 1 : 0;
        }
        QVERIFY(strokes > side * side / 16);
        for (const int edge : {0, side - 1})
            for (int i = 0; i < side; ++i)
                QVERIFY(qAlpha(label.pixel(edge, i)) + qAlpha(label.pixel(i, edge)) == 0);
    }
}

QTEST_GUILESS_MAIN(tst_resources)
#include "tst_resources.moc"
