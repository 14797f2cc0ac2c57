// What is compiled in: every picture under its name, and labels that show no rim where drawn.
#include <QImage>
#include <QtTest>

class tst_resources : public QObject
{
    Q_OBJECT

private slots:
    void picturesOpen()
    {
        const QString names =
            "play.png,pause.png,stop.png,backward.png,step.png,openfile.png,text.png,s1.png,s2.png,"
            "videoIcon.png,background1.jpg,background2.jpg,background3.jpg,background7.png,"
            "background10.jpg,00.png,11.png,22.png,33.png,44.png,purchase_order.png,tasks.png,"
            "company_logo.png,playlist.png,playlist (1).png,playlist (2).png";
        for (const QString& name : names.split(','))
            QVERIFY2(!QImage(":/image/" + name).isNull(), qPrintable(name));
    }

    void labelsAreWhiteAndApart()
    {
        const QImage labels(":/image/text.png");
        QCOMPARE(labels.size(), QSize(1024, 256));
        for (int x = 0; x < labels.width(); ++x)
            for (int y = 0; y < labels.height(); ++y) {
                const QRgb pixel = labels.pixel(x, y);
                const bool edge = (x + 1) % 256 < 2 || (y + 1) % 256 < 2;
                QVERIFY((pixel & RGB_MASK) == RGB_MASK && !(edge && qAlpha(pixel) > 0));
            }
    }
};

QTEST_GUILESS_MAIN(tst_resources)
#include "tst_resources.moc"
