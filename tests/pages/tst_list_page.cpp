// The list page on screen over a real directory tree, driven by real keys and taps.
#include "common/CPlayerDatas.h"
#include "common/globals.h"
#include "pages/list/CPagePlayerList.h"
#include "tests/Rows.h"
#include "tests/TestDevice.h"

#include <QtTest>
#include <QtWidgets>

#include <fstream>
#include <functional>
#include <memory>
#include <sys/stat.h>

namespace {

const QColor kHighlight(255, 233, 231);

// How a row differs from an ordinary one: x marked, > current, * looks current, ? looks like
// neither kind, c wrongly has or lacks a check mark, ! selected.
QString flagsOf(const QListWidgetItem& row)
{
    QString flags;
    if (row.checkState() == Qt::Checked && row.flags().testFlag(Qt::ItemIsUserCheckable))
        flags += 'x';
    if (row.listWidget()->currentItem() == &row)
        flags += '>';
    const QFont font = row.data(Qt::FontRole).isNull() ? row.listWidget()->font() : row.font();
    const bool plain = row.background().style() == Qt::NoBrush || !row.background().color().alpha();
    const bool lit = row.background().color() == kHighlight;
    const QList<int> look{lit + 2 * plain, font.pixelSize(), font.weight()};
    if (row.flags().testFlag(Qt::ItemIsUserCheckable) == row.data(Qt::CheckStateRole).isNull())
        flags += 'c';
    if (look != QList<int>{2, 38, QFont::Normal})
        flags += look == QList<int>{1, 45, QFont::Bold} ? "*" : "?";
    return row.isSelected() ? flags + '!' : flags;
}

// QTest::keyClick() has no text for some keys of a remote control.
void click(int key)
{
    const QString text = key <= Qt::Key_AsciiTilde ? QString(QChar(key)) : QString();
    QTest::sendKeyEvent(QTest::Click, QApplication::focusWidget(), Qt::Key(key), text,
                        Qt::NoModifier);
}

} // namespace

class tst_list_page : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        g_bTwoKeyMode = false;
        m_device = std::make_unique<TestDevice>();
    }

    void cleanup()
    {
        m_page.reset();
        CPlayerDatas::releaseInstance();
    }

    void readsItsRoot_data()
    {
        // config: % is the top of the tree; empty: no file
        columns<QByteArray, QString>({"config", "expected"});
        row("one line", QByteArray("%/in"), "a.mp4");
        row("CRLF, second line", QByteArray("%/in\r\n/tmp\r\n"), "a.mp4");
        row("trailing blank counts", QByteArray("%/in \n"), "b.mp4");
        row("no such directory", QByteArray("%/none"), "");
        row("empty first line", QByteArray("\n%/in\n"), "");
        row("no file", QByteArray(), "");
    }
    void readsItsRoot()
    {
        QFETCH(QByteArray, config);
        makeTree({"in/a.mp4", "in /b.mp4"});
        TestDevice::write(DevicePaths::kSystemConfig,
                          config.replace("%", m_device->path("").toLocal8Bit()));
        if (config.isEmpty())
            QVERIFY(QFile::remove(DevicePaths::kSystemConfig));
        showPage({});
        QTEST(names(), "expected");
        QCOMPARE(state(), QString(names().isEmpty() ? "0: exit" : "1: 0>*"));
    }

    void scansInOrder()
    {
        QLocale::setDefault(QLocale("en_US")); // the list sorts as its users do
        for (const char* line : {"-------file cout 2", "-------video cout 4", "-------ItemCount 6",
                                 "-----video listwigdetsort.item= \"A.AVI\""})
            QTest::ignoreMessage(QtDebugMsg, line);
        showPage({"b/", "a/deep.mp4", "c.d/", ".hidden/", "z.mp4", "A.AVI", "m.mkv", "notes.txt",
                  "x.avi.bak", "x.bak.avi", ".h.mp4", "ü ber.Mp4"});
        QLocale::setDefault(QLocale::c());
        QCOMPARE(names(), QString("a b A.AVI ü ber.Mp4 x.bak.avi z.mp4"));
        QCOMPARE(m_pList->iconSize(), QSize(38, 38));
        const auto icon = [](const QIcon& of) { return of.pixmap(38).toImage(); };
        QCOMPARE(icon(m_pList->item(0)->icon()), icon(QIcon(":/image/openfile.png")));
        QCOMPARE(icon(m_pList->item(2)->icon()), icon(QIcon(":/image/videoIcon.png")));
        QVERIFY(icon(m_pList->item(0)->icon()) != icon(m_pList->item(2)->icon()));
        const QByteArray top = m_device->path("").toLocal8Bit();
        QTest::ignoreMessage(QtDebugMsg, "----ListViewFile \"" + top + "/a\"");
        QTest::ignoreMessage(QtDebugMsg, "path-----   \"" + top + '"');
        click(Qt::Key_Return);
        click(Qt::Key_Backspace);
    }

    void listsOddNamesOnOneLineAndOnlyFiles()
    {
        const QString lines = "b" + QString(100, '\n') + QChar(QChar::LineSeparator) + ".mp4";
        makeTree({lines});
        QVERIFY(QFile::link("/dev/zero", m_device->path("device.mp4")));
        QVERIFY(!mkfifo(qPrintable(m_device->path("fifo")), 0600));
        QVERIFY(QFile::link(m_device->path("fifo"), m_device->path("link.mp4")));
        std::ofstream(qPrintable(m_device->path("")) + std::string("/\xff.mp4"));
        QTest::ignoreMessage(QtDebugMsg, "-------not listed, as their names are not UTF-8: 1");
        showPage({"a/"});
        QCOMPARE(names(), "a " + lines);
        QVERIFY(m_pList->sizeHintForRow(0) < 2 * 38 && rowCentre(1).y() < 4 * 38);
        tap(1, 90);
        QTest::mouseClick(m_vecButtons[0], Qt::LeftButton);
        QVERIFY(CPlayerDatas::getInstance()->next());
        QCOMPARE(CPlayerDatas::getInstance()->currentFile(), m_device->path(lines));
        QVERIFY(QDir().rmdir(m_device->path("a")));
        QVERIFY(QFile::link("fifo", m_device->path("a")));
        m_pList->setFocus();
        m_pList->setCurrentRow(0, QItemSelectionModel::NoUpdate);
        click(Qt::Key_Return);
        QCOMPARE(state(), QString("0: back"));
    }

    // The tree's rows are e (empty), sub (with one video), 2.avi and b.mp4.
    void keys_data()
    {
        // expected: the state after each key
        using Keys = QVector<int>;
        columns<bool, Keys, QString>({"twoKeyMode", "keys", "expected"});
        constexpr int up = Qt::Key_Up, down = Qt::Key_Down, left = Qt::Key_Left;
        constexpr int right = Qt::Key_Right, ok = Qt::Key_Return, back = Qt::Key_Backspace;
        constexpr int one = Qt::Key_1, two = Qt::Key_2, space = Qt::Key_Space;
        constexpr int enter = Qt::Key_Enter;
        row("down", false, Keys{down, down, down, down, down, down, down},
            "1>*, 2>*, 3>*, play, back, exit, 0>*");
        row("up", false, Keys{down, up, up, up, up, up}, "1>*, 0>*, exit, back, play, 0>*");
        row("right", false, Keys{left, right, right, right, right}, "play, back, exit, 0>*, exit");
        row("left", false, Keys{right, left, left, left, left}, "exit, back, play, 0>*, play");
        row("marks", false, Keys{down, down, ok, ok, space, enter, space, down},
            "1>*, 2>*, 2x>*, 2>*, 2x>*, 2>*, 2x>*, 2x 3>*");
        row("enters, returns, no row", false, Keys{down, ok, back, ok, up, down, back},
            "1>*, 1: 0>*, list, list, list, 0>*, 0>*");
        row("one row", false, Keys{down, ok, left, up, up, down},
            "1>*, 1: 0>*, 1: play, 1: 0>*, 1: exit, 1: 0>*");
        row("empty directory", false, Keys{ok, up, up, down, left, right, ok, Qt::Key_Exit},
            "0: back, 0: play, 0: exit, 0: play, 0: exit, 0: play, 0: play, play");
        row("Back by OK", false, Keys{ok, ok, ok}, "0: back, back, back");
        row("not the page's", false, Keys{two, one, Qt::Key_End, Qt::Key_Home},
            "2>*, 2>*, 3>*, 0>*");
        row("two keys: ring", true, Keys{one, one, one, one, one, one, one},
            "1>*, 2>*, 3>*, play, back, exit, 0>*");
        row("two keys: OK", true, Keys{two, two, one, two, one, one, two},
            "0: back, back, exit, exit, 0>*, 1>*, 1: 0>*");
        row("two keys: mute", true, Keys{up, down, left, right, ok, back, Qt::Key_Exit, space},
            "0>*, 0>*, 0>*, 0>*, 0>*, 0>*, 0>*, 0>*");
    }
    void keys()
    {
        QFETCH(bool, twoKeyMode);
        QFETCH(QVector<int>, keys);
        g_bTwoKeyMode = twoKeyMode;
        showPage(kTree);
        QStringList states;
        for (const int key : keys) {
            click(key);
            states << state();
        }
        QTEST(states.join(", "), "expected");
    }

    void actsOnThePressOrOnTheRelease()
    {
        showPage(kTree);
        QKeyEvent held(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(m_pList, &held);
        QTest::keyPress(m_pList, Qt::Key_Return);
        QCOMPARE(state(), QString("0>*"));
        QKeyEvent repeated(QEvent::KeyRelease, Qt::Key_Return, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(m_pList, &repeated);
        QTest::keyPress(m_vecButtons[1], Qt::Key_Backspace);
        QTest::mousePress(m_vecButtons[1], Qt::LeftButton);
        QCOMPARE(state(), QString("0: back"));
    }

    void taps()
    {
        showPage(kTree);
        for (const int x : {12, 45, 90, 600}) { // check mark, icon, name, right end
            tap(2, x);
            QCOMPARE(state(), QString("2x>*"));
            tap(2, x, QEvent::MouseButtonDblClick);
            QCOMPARE(state(), QString("2>*"));
            tap(3, x);
            QCOMPARE(state(), QString("3x>*"));
            tap(1, x);
            QCOMPARE(state(), QString("1: 0>*"));
            click(Qt::Key_Backspace);
        }
        makeTree({"sub/d.avi"});
        tap(1, 90);
        QCOMPARE(names(), QString("c.mp4 d.avi"));
    }

    void showsEachStep()
    {
        QStringList tree{QString(80, 'x') + ".avi"};
        for (char name = 'a'; name <= 'v'; ++name)
            tree << name + QString(".avi");
        TestDevice::write(DevicePaths::kChecked, {});
        QImage red(8, 8, QImage::Format_RGB32);
        red.fill(Qt::red);
        QVERIFY(red.save(DevicePaths::kChecked));
        showPage(tree);
        const int spare = m_pList->viewport()->height() % m_pList->sizeHintForRow(0);
        m_page->resize(1280, 720 - spare); // no room for more than its rows
        using Step = std::function<void()>;
        const auto key = [](int code) -> Step { return [code] { click(code); }; };
        const Step scroll = [this] { m_pList->verticalScrollBar()->setValue(5); };
        for (const Step& step : {key(Qt::Key_Down), key(Qt::Key_Return), key(Qt::Key_Up),
                                 key(Qt::Key_End), key(Qt::Key_PageUp), key(Qt::Key_Home), scroll,
                                 Step([this] { tap(8, 90); }), key(Qt::Key_Left)}) {
            step();
            checkRows();
            QTRY_VERIFY(isPainted());
            const QRect current = m_pList->visualItemRect(m_pList->currentItem());
            m_pList->viewport()->repaint(current.adjusted(0, current.height() - 1, 0, 0));
            QVERIFY(isPainted());
        }
        const auto mark = [this] {
            const QPoint row = m_pList->visualItemRect(m_pList->currentItem()).topLeft();
            return m_pList->viewport()->grab().toImage().pixelColor(row + QPoint(12, 20));
        };
        click(Qt::Key_Left); // the first row
        QCOMPARE(mark(), kHighlight);
        click(Qt::Key_Down); // the second one, which was marked
        QCOMPARE(mark(), QColor(Qt::red));
        QFile::remove(DevicePaths::kChecked);
        click(Qt::Key_End);
        QScrollBar* bar = m_pList->horizontalScrollBar();
        bar->setValue(bar->maximum());
        const QRect end = m_pList->visualItemRect(m_pList->currentItem()); // of the long name
        const QImage rows = m_pList->viewport()->grab().toImage();
        QCOMPARE(rows.pixelColor(end.topRight() + QPoint(-1, 1)), kHighlight);
        QFile::remove(m_device->path(tree.first()));
        m_page->enterPage();
        QTRY_COMPARE(bar->maximum(), 0);
        checkRows();
    }

    void clockGoes()
    {
        showPage(kTree);
        auto* clock = m_page->findChild<QLabel*>();
        const QString first = clock->text();
        QCOMPARE(first.size(), 19);
        QTRY_VERIFY(clock->text() != first);
        const auto time = QDateTime::fromString(clock->text().replace(' ', 'T'), Qt::ISODate);
        QVERIFY(time.isValid());
        QVERIFY(qAbs(time.secsTo(QDateTime::currentDateTime())) <= 2);
    }

    void onlyTheCurrentRowStandsOut()
    {
        showPage(kTree);
        QWidget* area = m_pList->viewport();
        QTest::mousePress(area, Qt::LeftButton, Qt::NoModifier, rowCentre(0));
        QTest::mouseMove(area, rowCentre(2));
        QTest::mouseRelease(area, Qt::LeftButton, Qt::NoModifier, rowCentre(2));
        QTest::keyClick(m_pList, Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(state(), QString("%1>*").arg(m_pList->currentRow()));
        const QRect row = m_pList->visualItemRect(m_pList->currentItem());
        QCOMPARE(area->grab().toImage().pixelColor(row.center()), kHighlight);
    }

    void playsTheMarkedRowsInListOrder()
    {
        showPage(kTree);
        tap(3, 90);
        tap(2, 90);
        QTest::mouseClick(m_vecButtons[0], Qt::LeftButton);
        CPlayerDatas* files = CPlayerDatas::getInstance();
        for (const char* name : {"2.avi", "b.mp4"}) {
            QVERIFY(files->next());
            QCOMPARE(files->currentFile(), m_device->path(name));
        }
        QVERIFY(files->next() && files->isEnd() && !files->next());

        m_page->enterPage(); // the scan takes the marks away
        QTest::keyClick(m_pList, Qt::Key_Left);
        QTest::keyClick(m_vecButtons[0], Qt::Key_Space);
        files->addFile(QString()); // is ignored
        QVERIFY(files->isEmpty() && !files->next());
        QTest::mouseClick(m_vecButtons[2], Qt::LeftButton);
        QTest::keyClick(m_vecButtons[2], Qt::Key_Return);
        QCOMPARE(m_log.join(' '), QString("switch play switch play exit exit"));
    }

    void looksAsDrawn()
    {
        showPage(kTree);
        const auto picture = [](const QIcon& icon) { return icon.pixmap(25).toImage(); };
        const QStyle::StandardPixmap icons[] = {QStyle::SP_MediaPlay, QStyle::SP_DialogOkButton,
                                                QStyle::SP_TitleBarCloseButton};
        const QPixmap ring(":/image/s2.png");
        for (int i = 0; i < m_vecButtons.size(); ++i) {
            QPushButton* button = m_vecButtons[i];
            QCOMPARE(button->geometry(), QRect(70 + i * 120, 655, 105, 35));
            QCOMPARE(button->iconSize().width(), i == 1 ? 22 : 25);
            QCOMPARE(picture(button->icon()), picture(m_page->style()->standardIcon(icons[i])));
            button->setFixedSize(60, 35); // another shape than the ring's
            m_pList->setFocus();
            QImage drawn = button->grab().toImage();
            QStyleOptionButton option;
            option.initFrom(button);
            const auto focus = QStyle::SE_PushButtonFocusRect; // the frame is 8 larger
            const QSize frame = button->style()->subElementRect(focus, &option, button).size();
            QPainter(&drawn).drawPixmap(0, 0, ring.scaled(frame + QSize(8, 8)));
            button->setFocus();
            QCOMPARE(button->grab().toImage(), drawn);
        }
        const auto* clock = m_page->findChild<QLabel*>();
        QVERIFY(clock->x() > 800 && clock->geometry().right() + 1 == 1280 - 70);
        QCOMPARE(clock->fontInfo().pixelSize(), 25);
        QCOMPARE(m_pList->geometry().topLeft(), QPoint(40, 30));
        const QImage page = m_page->grab().toImage();
        QCOMPARE(page.pixelColor(5, 5), QColor(99, 192, 249));
        QCOMPARE(page.pixelColor(640, 31), QColor("gray"));          // the list's border
        QVERIFY(page.pixelColor(900, 500) != QColor(255, 255, 241)); // its picture
    }

private:
    const QStringList kTree{"e/", "sub/c.mp4", "2.avi", "b.mp4"};

    // A name that ends with "/" is an empty directory.
    void makeTree(const QStringList& names)
    {
        for (const QString& name : names)
            if (name.endsWith('/'))
                QVERIFY(QDir().mkpath(m_device->path(name)));
            else
                TestDevice::write(m_device->path(name), {});
    }

    void showPage(const QStringList& tree)
    {
        makeTree(tree);
        m_log.clear();
        m_page.reset(new CPagePlayerList(nullptr));
        m_page->setGeometry(0, 0, 1280, 720);
        connect(m_page.get(), &CPagePlayerList::sgExitApp, [this] { m_log << "exit"; });
        connect(m_page.get(), &CPagePlayerList::sgSwitchToPagePlayer,
                [this] { m_log << "switch"; });
        connect(m_page.get(), &CPagePlayerList::sgStartToPlay, [this] { m_log << "play"; });
        m_pList = m_page->findChild<QListWidget*>();
        m_vecButtons = m_page->findChildren<QPushButton*>();
        m_page->show();
        m_page->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
    }

    // The screen shows the same as a full repaint, apart from the clock.
    bool isPainted()
    {
        const QRect page = m_page->rect().adjusted(0, 0, 0, -70);
        return m_page->screen()->grabWindow(m_page->winId()).copy(page).toImage() ==
               m_page->grab(page).toImage();
    }

    // The rows follow each other, each is wide enough for its name, and the current one is higher.
    // It is wholly in view, or above.
    void checkRows()
    {
        const QRect view = m_pList->viewport()->rect();
        const QListWidgetItem* current = m_pList->currentItem();
        const QRect stands = m_pList->visualItemRect(current);
        QVERIFY(!current || stands.bottom() < 0 || view.adjusted(0, 0, 9999, 0).contains(stands));
        QPoint at(9, 0);
        while (const QListWidgetItem* row = m_pList->itemAt(at)) {
            const QRect rect = m_pList->visualItemRect(row);
            QCOMPARE(rect.top(), at.y());
            QCOMPARE(m_pList->itemAt(rect.bottomLeft()), row);
            QCOMPARE(rect.height() > m_pList->sizeHintForRow(0), row == current);
            QCOMPARE(rect.width(), view.width() + m_pList->horizontalScrollBar()->maximum());
            QVERIFY(rect.width() > QFontMetrics(row->font()).boundingRect(row->text()).width());
            at = rect.bottomLeft() + QPoint(9, 1);
        }
        QVERIFY(at.y() > view.height() / 2); // some rows were checked
    }

    QPoint rowCentre(int row) const { return m_pList->visualItemRect(m_pList->item(row)).center(); }

    // The second tap of a quick pair arrives as MouseButtonDblClick.
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

    // The number of rows if it differs from kTree's; the focused button, or "list" if no row shows
    // the focus; each row that differs from an ordinary one.
    QString state() const
    {
        QStringList words;
        for (int i = 0; i < m_pList->count(); ++i) {
            const QString flags = flagsOf(*m_pList->item(i));
            if (!flags.isEmpty())
                words << QString::number(i) + flags;
        }
        auto* focused = QApplication::focusWidget();
        const int button = m_vecButtons.indexOf(qobject_cast<QPushButton*>(focused));
        if (focused != m_pList)
            words.prepend(QStringList{"play", "back", "exit"}.value(button, "nowhere"));
        else if (words.isEmpty())
            words << "list";
        if (m_pList->count() != kTree.size())
            words.prepend(QString("%1:").arg(m_pList->count()));
        return words.join(' ');
    }

    std::unique_ptr<TestDevice> m_device;
    std::unique_ptr<CPagePlayerList> m_page;
    QListWidget* m_pList = nullptr;
    QList<QPushButton*> m_vecButtons; // play, back, exit
    QStringList m_log;
};

QTEST_MAIN(tst_list_page)
#include "tst_list_page.moc"
