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

// What sets a row apart: x marked, > current, * the look of the current row, ? a look that is
// neither that nor an ordinary row's, ! selected. Empty for an ordinary row.
QString flagsOf(const QListWidgetItem& row)
{
    QString flags;
    if (row.checkState() == Qt::Checked && row.flags().testFlag(Qt::ItemIsUserCheckable))
        flags += 'x';
    if (row.listWidget()->currentItem() == &row)
        flags += '>';
    const QFont font = row.font();
    const QColor colour = row.background().color();
    if (colour == kHighlight && font.pixelSize() == 45 && font.weight() == QFont::Bold)
        flags += '*';
    else if (row.data(Qt::BackgroundRole).isValid() &&
             !(colour == kNone && font.pixelSize() == 38 && font.weight() == QFont::Normal))
        flags += '?';
    return row.isSelected() ? flags + '!' : flags;
}

// With the text that a keyboard gives: QtTest has none for some keys of a remote control.
void click(int key)
{
    const QString text = key <= Qt::Key_AsciiTilde ? QString(QChar(key)) : QString();
    QTest::sendKeyEvent(QTest::Click, QApplication::focusWidget(), Qt::Key(key), text,
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
        QTest::newRow("one line") << QByteArray("%/in") << "a.mp4";
        QTest::newRow("CRLF, second line") << QByteArray("%/in\r\n/tmp\r\n") << "a.mp4";
        QTest::newRow("trailing blank counts") << QByteArray("%/in \n") << "b.mp4";
        QTest::newRow("no such directory") << QByteArray("%/none") << "";
        QTest::newRow("empty first line") << QByteArray("\n%/in\n") << "";
        QTest::newRow("no file") << QByteArray() << "";
    }

    void readsItsRoot()
    {
        QFETCH(QByteArray, config);
        makeTree({"in/a.mp4", "in /b.mp4"});
        write(DevicePaths::kSystemConfig, config.replace("%", m_pRoot->path().toLocal8Bit()));
        if (config.isEmpty())
            QVERIFY(QFile::remove(DevicePaths::kSystemConfig));
        showPage();
        QTEST(names(), "expected");
        QCOMPARE(state(), QString(names().isEmpty() ? "0@exit" : "1@list 0>*"));
    }

    void scansInOrder()
    {
        makeTree({"b/", "a/deep.mp4", "c.d/", ".hidden/", "z.mp4", "A.AVI", "m.mkv", "notes.txt",
                  "x.avi.bak", "x.bak.avi", ".h.mp4", "ü ber.Mp4"});
        for (const char* line : {"-------file cout 2", "-------video cout 4", "-------ItemCount 6",
                                 "-----video listwigdetsort.item= \"A.AVI\""})
            QTest::ignoreMessage(QtDebugMsg, line);
        showPage();
        QCOMPARE(names(), QString("a b A.AVI x.bak.avi z.mp4 ü ber.Mp4"));
    }

    // The tree's rows are e (empty), sub (with one video), a.avi and b.mp4.
    void keys_data()
    {
        QTest::addColumn<bool>("twoKeyMode");
        QTest::addColumn<QVector<int>>("keys");
        QTest::addColumn<QString>("expected"); // after each key
        const auto row = [](const char* name, bool twoKeyMode, const QVector<int>& keys,
                            const char* expected) {
            QTest::newRow(name) << twoKeyMode << keys << QString(expected);
        };
        constexpr int up = Qt::Key_Up, down = Qt::Key_Down, left = Qt::Key_Left;
        constexpr int right = Qt::Key_Right, ok = Qt::Key_Return, back = Qt::Key_Backspace;
        constexpr int one = Qt::Key_1, two = Qt::Key_2;
        row("down", false, {down, down, down, down, down, down, down},
            "4@list 1>*, 4@list 2>*, 4@list 3>*, 4@play, 4@back, 4@exit, 4@list 0>*");
        row("up", false, {down, up, up, up, up, up},
            "4@list 1>*, 4@list 0>*, 4@exit, 4@back, 4@play, 4@list 0>*");
        row("right", false, {left, right, right, right, right},
            "4@play, 4@back, 4@exit, 4@list 0>*, 4@exit");
        row("left", false, {right, left, left, left, left},
            "4@exit, 4@back, 4@play, 4@list 0>*, 4@play");
        row("marks", false, {down, down, ok, ok, Qt::Key_Space, Qt::Key_Enter, Qt::Key_Space, down},
            "4@list 1>*, 4@list 2>*, 4@list 2x>*, 4@list 2>*, 4@list 2x>*, 4@list 2>*, "
            "4@list 2x>*, 4@list 2x 3>*");
        row("enters, returns, no row", false, {down, ok, back, ok, up, down, back},
            "4@list 1>*, 1@list 0>*, 4@list, 4@list, 4@list, 4@list 0>*, 4@list 0>*");
        row("empty directory", false, {ok, up, left, right, ok, Qt::Key_Exit},
            "0@back, 0@play, 0@exit, 0@play, 0@play, 4@play");
        row("Back by OK", false, {ok, ok, ok}, "0@back, 4@back, 4@back");
        row("not the page's", false, {one, two, Qt::Key_End, Qt::Key_Home},
            "4@list 0>*, 4@list 0>*, 4@list 3>*, 4@list 0>*");
        row("two keys: ring", true, {one, one, one, one, one, one, one},
            "4@list 1>*, 4@list 2>*, 4@list 3>*, 4@play, 4@back, 4@exit, 4@list 0>*");
        row("two keys: OK", true, {two, two, one, two, one, one, two},
            "0@back, 4@back, 4@exit, 4@exit, 4@list 0>*, 4@list 1>*, 1@list 0>*");
        row("two keys: mute", true, {up, down, left, right, ok, back, Qt::Key_Exit, Qt::Key_Space},
            "4@list 0>*, 4@list 0>*, 4@list 0>*, 4@list 0>*, 4@list 0>*, 4@list 0>*, 4@list 0>*, "
            "4@list 0>*");
    }

    void keys()
    {
        QFETCH(bool, twoKeyMode);
        QFETCH(QVector<int>, keys);
        g_bTwoKeyMode = twoKeyMode;
        makeTree(kTree);
        showPage();
        QStringList states;
        for (const int key : keys) {
            click(key);
            states << state();
        }
        QTEST(states.join(", "), "expected");
    }

    void actsOnThePressOrOnTheRelease()
    {
        makeTree(kTree);
        showPage();
        QKeyEvent held(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(m_pList, &held);
        QTest::keyPress(m_pList, Qt::Key_Return);
        QCOMPARE(state(), QString("4@list 0>*"));
        QTest::keyRelease(m_pList, Qt::Key_Return);
        QTest::keyPress(m_vecButtons[1], Qt::Key_Backspace);
        QCOMPARE(state(), QString("0@back"));
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
        QCOMPARE(state(), QString("4@list 2x>*"));
        tap(2, x, QEvent::MouseButtonDblClick);
        QCOMPARE(state(), QString("4@list 2>*"));
        tap(3, x);
        QCOMPARE(state(), QString("4@list 3x>*"));
        tap(1, x);
        QCOMPARE(state(), QString("1@list 0>*"));
        makeTree({"sub/d.avi"});
        m_pPage->enterPage();
        QCOMPARE(names(), QString("c.mp4 d.avi"));
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
        QCOMPARE(state(), QString("4@list %1>*").arg(m_pList->currentRow()));
        const QRect row = m_pList->visualItemRect(m_pList->currentItem());
        QCOMPARE(area->grab().toImage().pixelColor(row.center()), kHighlight);
    }

    void playsTheMarkedRowsInListOrder()
    {
        makeTree(kTree);
        showPage();
        tap(3, 90);
        tap(2, 90);
        QTest::mouseClick(m_vecButtons[0], Qt::LeftButton);
        CPlayerDatas* files = CPlayerDatas::getInstance();
        for (const char* name : {"/a.avi", "/b.mp4"}) {
            QVERIFY(files->next());
            QCOMPARE(files->currentFile(), m_pRoot->path() + name);
        }
        QVERIFY(files->next() && files->isEnd());

        m_pPage->enterPage(); // the scan takes the marks away
        QTest::keyClick(m_pList, Qt::Key_Left);
        QTest::keyClick(m_vecButtons[0], Qt::Key_Space);
        QVERIFY(files->isEmpty());
        QTest::mouseClick(m_vecButtons[2], Qt::LeftButton);
        QTest::keyClick(m_vecButtons[2], Qt::Key_Return);
        QCOMPARE(m_log.join(' '), QString("switch play switch play exit exit"));
    }

    void focusedButtonShowsItsFrame()
    {
        makeTree(kTree);
        showPage();
        for (QPushButton* button : qAsConst(m_vecButtons)) {
            m_pList->setFocus();
            const QImage plain = button->grab().toImage();
            button->setFocus();
            QVERIFY(button->grab().toImage() != plain);
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
        m_vecButtons = m_pPage->findChildren<QPushButton*>();
        m_pPage->show();
        m_pPage->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_pPage.data()));
    }

    QPoint rowCentre(int row) const { return m_pList->visualItemRect(m_pList->item(row)).center(); }

    // A second tap within the double-click time arrives with another type of press.
    void tap(int row, int x, QEvent::Type type = QEvent::MouseButtonPress)
    {
        const QPoint at(x, rowCentre(row).y());
        QMouseEvent press(type, at, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_pList->viewport(), &press);
        QTest::mouseRelease(m_pList->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    }

    QString names() const
    {
        QStringList texts;
        for (int i = 0; i < m_pList->count(); ++i)
            texts << m_pList->item(i)->text();
        return texts.join(' ');
    }

    // Number of rows, what has the focus, and the rows that are set apart.
    QString state() const
    {
        auto* focused = QApplication::focusWidget();
        const int button = m_vecButtons.indexOf(qobject_cast<QPushButton*>(focused));
        const QString place = focused == m_pList
                                  ? QString("list")
                                  : QStringList{"play", "back", "exit"}.value(button, "nowhere");
        QStringList words{QString("%1@%2").arg(m_pList->count()).arg(place)};
        for (int i = 0; i < m_pList->count(); ++i) {
            const QString flags = flagsOf(*m_pList->item(i));
            if (!flags.isEmpty())
                words << QString::number(i) + flags;
        }
        return words.join(' ');
    }

    QScopedPointer<QTemporaryDir> m_pRoot;
    QScopedPointer<CPagePlayerList> m_pPage;
    QListWidget* m_pList = nullptr;
    QList<QPushButton*> m_vecButtons; // play, back, exit
    QStringList m_log;
};

QTEST_MAIN(tst_list_page)
#include "tst_list_page.moc"
