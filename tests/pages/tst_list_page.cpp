// The list page on screen over a real directory tree, driven by real keys and taps.
#include "app/common/CPlayerDatas.h"
#include "app/common/DevicePaths.h"
#include "app/common/globals.h"
#include "pages/list/CPagePlayerList.h"

#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QColor kHighlight(255, 233, 231);
const QColor kNone(Qt::transparent);

// "[x]name" is a marked video, "name" a directory; then "*" the highlight of the current row, "?" a
// look that is neither that nor an ordinary row's, "!" a selected row.
QString describe(const QListWidgetItem& row)
{
    QString text = row.text();
    if (row.flags() & Qt::ItemIsUserCheckable)
        text.prepend(row.checkState() == Qt::Checked ? "[x]" : "[ ]");
    const QFont font = row.font();
    const QColor colour = row.background().color();
    if (colour == kHighlight && font.pixelSize() == 45 && font.weight() == QFont::Bold)
        text += '*';
    else if (row.data(Qt::BackgroundRole).isValid() &&
             !(colour == kNone && font.pixelSize() == 38 && font.weight() == QFont::Normal))
        text += '?';
    return row.isSelected() ? text + '!' : text;
}

// With a text of its own: QtTest has none for some keys of a remote control.
void click(int key)
{
    QTest::sendKeyEvent(QTest::Click, QApplication::focusWidget(), Qt::Key(key), QString(),
                        Qt::NoModifier);
}

void write(const QString& path, const QByteArray& text)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
}

} // namespace

class tst_list_page : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        g_bTwoKeyMode = false;
        m_pRoot.reset(new QTemporaryDir);
        QVERIFY(m_pRoot->isValid());
        write(DevicePaths::kSystemConfig, m_pRoot->path().toLocal8Bit());
    }

    void cleanup()
    {
        m_pPage.reset();
        CPlayerDatas::releaseInstance();
        QFile::remove(DevicePaths::kSystemConfig);
    }

    void readsItsRoot_data()
    {
        QTest::addColumn<QByteArray>("config"); // % stands for the tree's top; empty: no file
        QTest::addColumn<QString>("expected");
        QTest::newRow("one line") << QByteArray("%/in") << "[ ]a.mp4* #0 @list";
        QTest::newRow("CRLF, second line")
            << QByteArray("%/in\r\n/tmp\r\n") << "[ ]a.mp4* #0 @list";
        QTest::newRow("trailing blank counts") << QByteArray("%/in \n") << "[ ]b.mp4* #0 @list";
        QTest::newRow("no such directory") << QByteArray("%/none") << "#-1 @exit";
        QTest::newRow("empty first line") << QByteArray("\n%/in\n") << "#-1 @exit";
        QTest::newRow("no file") << QByteArray() << "#-1 @exit";
    }

    void readsItsRoot()
    {
        QFETCH(QByteArray, config);
        makeTree({"in/a.mp4", "in /b.mp4"});
        write(DevicePaths::kSystemConfig, config.replace("%", m_pRoot->path().toLocal8Bit()));
        if (config.isEmpty())
            QVERIFY(QFile::remove(DevicePaths::kSystemConfig));
        showPage();
        QTEST(state(), "expected");
    }

    void scansInOrder()
    {
        makeTree({"b/", "a/deep.mp4", "c.d/", ".hidden/", "z.mp4", "A.AVI", "m.mkv", "notes.txt",
                  "x.avi.bak", "x.bak.avi", ".h.mp4", "über land.Mp4"});
        for (const char* line : {"-------file cout 2", "-------video cout 4", "-------ItemCount 6",
                                 "-----video listwigdetsort.item= \"A.AVI\""})
            QTest::ignoreMessage(QtDebugMsg, line);
        showPage();
        QCOMPARE(state(), QString("a* b [ ]A.AVI [ ]x.bak.avi [ ]z.mp4 [ ]über land.Mp4 #0 @list"));
    }

    void keys_data()
    {
        QTest::addColumn<bool>("twoKeyMode");
        QTest::addColumn<QVector<int>>("keys");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char* name, bool twoKeyMode, const QVector<int>& keys,
                            const char* expected) {
            QTest::newRow(name) << twoKeyMode << keys << QString(expected);
        };
        constexpr int up = Qt::Key_Up, down = Qt::Key_Down, left = Qt::Key_Left;
        constexpr int right = Qt::Key_Right, ok = Qt::Key_Return, back = Qt::Key_Backspace;
        constexpr int one = Qt::Key_1, two = Qt::Key_2;
        row("start", false, {}, "e* sub [ ]a.avi [ ]b.mp4 #0 @list");
        row("rows down", false, {down, down}, "e sub [ ]a.avi* [ ]b.mp4 #2 @list");
        row("rows up", false, {down, down, up}, "e sub* [ ]a.avi [ ]b.mp4 #1 @list");
        row("below the last", false, {down, down, down, down}, "e sub [ ]a.avi [ ]b.mp4 #-1 @play");
        row("above the first", false, {up}, "e sub [ ]a.avi [ ]b.mp4 #-1 @exit");
        row("list to the right", false, {down, right}, "e sub [ ]a.avi [ ]b.mp4 #-1 @exit");
        row("list to the left", false, {down, left}, "e sub [ ]a.avi [ ]b.mp4 #-1 @play");
        row("play, down", false, {left, down}, "e sub [ ]a.avi [ ]b.mp4 #-1 @back");
        row("play, right, right", false, {left, right, right}, "e sub [ ]a.avi [ ]b.mp4 #-1 @exit");
        row("play, up", false, {left, up}, "e* sub [ ]a.avi [ ]b.mp4 #0 @list");
        row("play, left", false, {left, left}, "e* sub [ ]a.avi [ ]b.mp4 #0 @list");
        row("exit, down", false, {up, down}, "e* sub [ ]a.avi [ ]b.mp4 #0 @list");
        row("exit, right", false, {up, right}, "e* sub [ ]a.avi [ ]b.mp4 #0 @list");
        row("exit, up", false, {up, up}, "e sub [ ]a.avi [ ]b.mp4 #-1 @back");
        row("exit, left, left", false, {up, left, left}, "e sub [ ]a.avi [ ]b.mp4 #-1 @play");
        row("back, up", false, {up, up, up}, "e sub [ ]a.avi [ ]b.mp4 #-1 @play");
        row("back, down", false, {left, down, down}, "e sub [ ]a.avi [ ]b.mp4 #-1 @exit");
        row("marks by every OK key", false, {down, down, ok, Qt::Key_Enter, Qt::Key_Space},
            "e sub [x]a.avi* [ ]b.mp4 #2 @list");
        row("unmarks", false, {down, down, ok, ok}, "e sub [ ]a.avi* [ ]b.mp4 #2 @list");
        row("enters", false, {down, ok}, "[ ]c.mp4* #0 @list");
        row("enters an empty one", false, {ok}, "#-1 @back");
        row("empty: play, left", false, {ok, up, left}, "#-1 @exit");
        row("empty: exit, right", false, {ok, down, right}, "#-1 @play");
        row("returns", false, {down, ok, back}, "e sub [ ]a.avi [ ]b.mp4 #-1 @list");
        row("returns by Exit", false, {ok, Qt::Key_Exit}, "e sub [ ]a.avi [ ]b.mp4 #-1 @back");
        row("returns by OK", false, {ok, ok}, "e sub [ ]a.avi [ ]b.mp4 #-1 @back");
        row("stays at the root", false, {back, back}, "e* sub [ ]a.avi [ ]b.mp4 #0 @list");
        row("no row: OK", false, {down, ok, back, ok}, "e sub [ ]a.avi [ ]b.mp4 #-1 @list");
        row("no row: up", false, {down, ok, back, up}, "e sub [ ]a.avi [ ]b.mp4 #-1 @list");
        row("no row: down", false, {down, ok, back, down}, "e* sub [ ]a.avi [ ]b.mp4 #0 @list");
        row("digits", false, {one, two}, "e* sub [ ]a.avi [ ]b.mp4 #0 @list");
        row("keys of the list itself", false, {Qt::Key_PageDown, Qt::Key_Home, Qt::Key_End},
            "e sub [ ]a.avi [ ]b.mp4* #3 @list");
        row("two keys: rows", true, {one, one, one}, "e sub [ ]a.avi [ ]b.mp4* #3 @list");
        row("two keys: play", true, {one, one, one, one}, "e sub [ ]a.avi [ ]b.mp4 #-1 @play");
        row("two keys: whole ring", true, {one, one, one, one, one, one, one},
            "e* sub [ ]a.avi [ ]b.mp4 #0 @list");
        row("two keys: marks", true, {one, one, two}, "e sub [x]a.avi* [ ]b.mp4 #2 @list");
        row("two keys: enters", true, {one, two}, "[ ]c.mp4* #0 @list");
        row("two keys: presses Back", true, {one, two, one, one, two},
            "e sub [ ]a.avi [ ]b.mp4 #-1 @back");
        row("two keys: the others", true,
            {one, two, up, down, left, right, ok, back, Qt::Key_Exit, Qt::Key_Space},
            "[ ]c.mp4* #0 @list");
    }

    void keys()
    {
        QFETCH(bool, twoKeyMode);
        QFETCH(QVector<int>, keys);
        g_bTwoKeyMode = twoKeyMode;
        makeTree(kTree);
        showPage();
        for (const int key : keys)
            click(key);
        QTEST(state(), "expected");
    }

    void actsOnThePressOrOnTheRelease()
    {
        makeTree(kTree);
        showPage();
        QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(m_pList, &repeated);
        QCOMPARE(m_pList->currentRow(), 0);
        QTest::keyPress(m_pList, Qt::Key_Return);
        QCOMPARE(m_pList->count(), 4);
        QTest::keyRelease(m_pList, Qt::Key_Return);
        QCOMPARE(m_pList->count(), 0);
        QTest::keyPress(button("back"), Qt::Key_Backspace);
        QCOMPARE(m_pList->count(), 0);
        QTest::keyRelease(button("back"), Qt::Key_Backspace);
        QCOMPARE(m_pList->count(), 4);
    }

    void taps_data()
    {
        QTest::addColumn<int>("x");
        QTest::newRow("check mark") << 12;
        QTest::newRow("icon") << 45;
        QTest::newRow("name") << 90;
        QTest::newRow("right end") << 600;
    }

    void taps()
    {
        QFETCH(int, x);
        makeTree(kTree);
        showPage();
        tap(2, x);
        QCOMPARE(state(), QString("e sub [x]a.avi* [ ]b.mp4 #2 @list"));
        tap(2, x);
        QCOMPARE(state(), QString("e sub [ ]a.avi* [ ]b.mp4 #2 @list"));
        tap(2, x);
        tapAgainQuickly(2, x);
        QCOMPARE(state(), QString("e sub [ ]a.avi* [ ]b.mp4 #2 @list"));
        tap(3, x);
        QCOMPARE(state(), QString("e sub [ ]a.avi [x]b.mp4* #3 @list"));
        tap(1, x);
        QCOMPARE(state(), QString("[ ]c.mp4* #0 @list"));
    }

    void onlyTheCurrentRowStandsOut()
    {
        makeTree(kTree);
        showPage();
        QWidget* area = m_pList->viewport();
        QTest::mousePress(area, Qt::LeftButton, Qt::NoModifier, rowCentre(0));
        QTest::mouseMove(area, rowCentre(2));
        QTest::mouseRelease(area, Qt::LeftButton, Qt::NoModifier, rowCentre(2));
        QTest::keyClick(m_pList, Qt::Key_A, Qt::ControlModifier);
        const QString text = state();
        QCOMPARE(text.count('*'), 1);
        QCOMPARE(text.count('!') + text.count('?'), 0);
        const QRect row = m_pList->visualItemRect(m_pList->currentItem());
        QCOMPARE(area->grab().toImage().pixelColor(row.center()), kHighlight);
    }

    void playsTheMarkedRowsInListOrder()
    {
        makeTree(kTree);
        showPage();
        tap(3, 90);
        tap(2, 90);
        QTest::mouseClick(button("play"), Qt::LeftButton);
        QCOMPARE(m_log.join(' '), QString("switch play"));
        CPlayerDatas* files = CPlayerDatas::getInstance();
        for (const char* name : {"/a.avi", "/b.mp4"}) {
            QVERIFY(files->next());
            QCOMPARE(files->currentFile(), m_pRoot->path() + name);
        }
        QVERIFY(files->next() && files->isEnd());

        m_pPage->enterPage(); // marks end with a scan
        button("play")->setFocus();
        QTest::keyClick(button("play"), Qt::Key_Space);
        QCOMPARE(m_log.join(' '), QString("switch play switch play"));
        QVERIFY(files->isEmpty());
    }

    void rescansWhereItWas()
    {
        makeTree(kTree);
        showPage();
        tap(1, 90);
        makeTree({"sub/0.avi"});
        button("play")->setFocus();
        m_pPage->enterPage();
        QCOMPARE(state(), QString("[ ]0.avi* [ ]c.mp4 #0 @list"));
    }

    void exitsByKeyAndByClick()
    {
        showPage();
        QTest::keyClick(button("exit"), Qt::Key_Return);
        QTest::mouseClick(button("exit"), Qt::LeftButton);
        QCOMPARE(m_log.join(' '), QString("exit exit"));
    }

    void focusedButtonShowsItsFrame()
    {
        makeTree(kTree);
        showPage();
        for (const char* name : {"play", "back", "exit"}) {
            m_pList->setFocus();
            const QImage plain = button(name)->grab().toImage();
            button(name)->setFocus();
            QVERIFY(button(name)->grab().toImage() != plain);
        }
    }

    void clockTicks()
    {
        showPage();
        const auto* clock = m_pPage->findChild<QLabel*>();
        const QString first = clock->text();
        QVERIFY(QDateTime::fromString(first, "yyyy-MM-dd hh:mm:ss").isValid());
        QTRY_VERIFY(clock->text() > first);
    }

private:
    const QStringList kTree{"e/", "sub/c.mp4", "a.avi", "b.mp4"};

    // A name that ends with "/" is an empty directory.
    void makeTree(const QStringList& names)
    {
        for (const QString& name : names) {
            const QString path = m_pRoot->path() + '/' + name;
            if (name.endsWith('/'))
                QVERIFY(QDir().mkpath(path));
            else
                write(path, QByteArray());
        }
    }

    void showPage()
    {
        m_log.clear();
        m_pPage.reset(new CPagePlayerList(nullptr));
        m_pPage->setGeometry(0, 0, 1280, 720);
        connect(m_pPage.data(), &CPagePlayerList::sgExitApp, [this] { m_log << "exit"; });
        connect(m_pPage.data(), &CPagePlayerList::sgSwitchToPagePlayer,
                [this] { m_log << "switch"; });
        connect(m_pPage.data(), &CPagePlayerList::sgStartToPlay, [this] { m_log << "play"; });
        m_pList = m_pPage->findChild<QListWidget*>();
        m_pPage->show();
        m_pPage->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_pPage.data()));
    }

    // In their order from left to right.
    QPushButton* button(const QString& name) const
    {
        const int index = QStringList{"play", "back", "exit"}.indexOf(name);
        return m_pPage->findChildren<QPushButton*>().value(index);
    }

    QPoint rowCentre(int row) const { return m_pList->visualItemRect(m_pList->item(row)).center(); }

    void tap(int row, int x)
    {
        QTest::mouseClick(m_pList->viewport(), Qt::LeftButton, Qt::NoModifier,
                          QPoint(x, rowCentre(row).y()));
    }

    // What a second tap arrives as when it follows within the double-click time.
    void tapAgainQuickly(int row, int x)
    {
        const QPoint at(x, rowCentre(row).y());
        QMouseEvent press(QEvent::MouseButtonDblClick, at, Qt::LeftButton, Qt::LeftButton,
                          Qt::NoModifier);
        QApplication::sendEvent(m_pList->viewport(), &press);
        QTest::mouseRelease(m_pList->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    }

    // Rows, current row and focus in one line.
    QString state() const
    {
        QStringList words;
        for (int i = 0; i < m_pList->count(); ++i)
            words << describe(*m_pList->item(i));
        words << QString("#%1").arg(m_pList->currentRow());
        QWidget* focused = QApplication::focusWidget();
        for (const char* name : {"play", "back", "exit"}) {
            if (focused == button(name))
                words << QString("@") + name;
        }
        if (focused == m_pList)
            words << "@list";
        return words.join(' ');
    }

    QScopedPointer<QTemporaryDir> m_pRoot;
    QScopedPointer<CPagePlayerList> m_pPage;
    QListWidget* m_pList = nullptr;
    QStringList m_log;
};

QTEST_MAIN(tst_list_page)
#include "tst_list_page.moc"
