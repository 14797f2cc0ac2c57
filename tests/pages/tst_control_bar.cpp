// The control bar on screen, driven by real keys and clicks.
#include "common/globals.h"
#include "pages/player/CPagePlayerControl.h"
#include "tests/Rows.h"

#include <QtTest>
#include <QtWidgets>

namespace {

// The page's place: sees the keys that the bar lets through.
class Page : public QWidget
{
public:
    QStringList m_log;

protected:
    void keyPressEvent(QKeyEvent* /*event*/) override { m_log << "passed"; }
    void keyReleaseEvent(QKeyEvent* /*event*/) override { m_log << "passed"; }
};

// With a text of its own: QtTest has none for some keys of a remote control.
void send(QTest::KeyAction action, int key)
{
    QTest::sendKeyEvent(action, QApplication::focusWidget(), Qt::Key(key), QString(),
                        Qt::NoModifier);
}

QImage picture(const QIcon& icon)
{
    return icon.pixmap(38, 38).toImage();
}

} // namespace

class tst_control_bar : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        g_bTwoKeyMode = false;
        m_pPage.reset(new Page);
        m_pPage->setGeometry(0, 0, 800, 200);
        m_pBar = new CPagePlayerControl(m_pPage.data());
        m_pBar->setGeometry(0, 120, 800, 80);
        m_vecButtons = m_pBar->findChildren<QPushButton*>();
        m_pLabel = m_pBar->findChild<QLabel*>();
        m_pSlider = m_pBar->findChild<QSlider*>();
        log(&CPagePlayerControl::sgKeyEventUpdate, "active");
        log(&CPagePlayerControl::sgCmdPlay, "play");
        log(&CPagePlayerControl::sgCmdStop, "stop");
        log(&CPagePlayerControl::sgCmdBackward, "backward");
        log(&CPagePlayerControl::sgCmdForward, "forward");
        log(&CPagePlayerControl::sgCmdBack, "back");
        m_pPage->show();
        m_pPage->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_pPage.data()));
        m_vecButtons[0]->setFocus();
    }

    void cleanup() { m_pPage.reset(); }

    // What the focused button is and what happened, after the press and after the release.
    void keys_data()
    {
        columns<bool, int, QVector<int>, QString>({"twoKeyMode", "from", "keys", "expected"});
        using Keys = QVector<int>;
        const Keys previous{Qt::Key_Left, Qt::Key_Up};
        const Keys next{Qt::Key_Right, Qt::Key_Down};
        const Keys ok{Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space};
        const Keys pressOnly{Qt::Key_Escape, Qt::Key_Backspace, Qt::Key_Exit};
        const Keys others{Qt::Key_1, Qt::Key_Home, Qt::Key_Back, Qt::Key_A};
        const Keys mute{Qt::Key_Tab, Qt::Key_Backspace, Qt::Key_Home, Qt::Key_Back, Qt::Key_Exit};
        row("previous", false, 2, previous, "1 active, 1 active");
        row("previous wraps", false, 0, previous, "4 active, 4 active");
        row("next", false, 2, next, "3 active, 3 active");
        row("next wraps", false, 4, next, "0 active, 0 active");
        row("play", false, 0, ok, "0 active, 0 play active");
        row("stop", false, 1, ok, "1 active, 1 stop active");
        row("backward", false, 2, ok, "2 active, 2 backward active");
        row("forward", false, 3, ok, "3 active, 3 forward active");
        row("back", false, 4, ok, "4 active, 4 back active");
        row("kept", false, 1, Keys{Qt::Key_Tab}, "1 active, 1 active");
        row("kept on press", false, 1, pressOnly, "1 active, 1 passed");
        row("passed", false, 1, others, "1 passed, 1 passed");
        row("two keys: next", true, 1, Keys{Qt::Key_1}, "2, 2 passed");
        row("two keys: next wraps", true, 4, Keys{Qt::Key_1}, "0, 0 passed");
        row("two keys: mute", true, 1, mute + previous + next + ok, "1, 1");
        row("two keys: passed", true, 1, Keys{Qt::Key_2, Qt::Key_Escape}, "1 passed, 1 passed");
    }
    void keys()
    {
        QFETCH(bool, twoKeyMode);
        QFETCH(int, from);
        QFETCH(QVector<int>, keys);
        g_bTwoKeyMode = twoKeyMode;
        for (const int key : keys) {
            m_vecButtons[from]->setFocus();
            send(QTest::Press, key);
            const QString onPress = state();
            send(QTest::Release, key);
            QTEST(onPress + ", " + state(), "expected");
        }
    }

    void heldKeyActsOnce()
    {
        QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(m_vecButtons[0], &repeated);
        QCOMPARE(state(), QString("0"));
    }

    void clickIsOneCommand()
    {
        for (QPushButton* button : std::as_const(m_vecButtons))
            QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(m_pPage->m_log.join(' '), QString("play stop backward forward back"));
    }

    void remembersItsFocus()
    {
        m_vecButtons[3]->setFocus();
        m_pBar->showControl(); // it has not been hidden: nothing to remember
        QCOMPARE(state(), QString("0"));
        m_vecButtons[2]->setFocus();
        m_pBar->hideControl();
        QVERIFY(m_pBar->isHidden());
        QKeyEvent release(QEvent::KeyRelease, Qt::Key_Return, Qt::NoModifier);
        QVERIFY(!m_pBar->eventFilter(m_vecButtons[2], &release));
        m_pPage->setFocus();
        m_pBar->showControl();
        QVERIFY(m_pBar->isVisible());
        QCOMPARE(state(), QString("2"));
    }

    void followsPlayback()
    {
        QStringList texts;
        for (const int seconds : {0, 59, 60, 3599, 3600, 3661, 360000})
            texts << m_pBar->formatTime(seconds);
        QCOMPARE(texts.join(' '), QString("00:00 00:59 01:00 59:59 01:00:00 01:01:01 100:00:00"));
        QCOMPARE(m_pSlider->focusPolicy(), Qt::NoFocus);
        m_pBar->resetTime();
        QCOMPARE(time(), QString("0 of 1000: 0:00:00/0:00:00"));
        m_pBar->setDuration(125);
        QCOMPARE(time(), QString("0 of 125: 00:00/02:05"));
        m_pBar->setPosition(1);
        m_pBar->setPosition(0);
        m_pBar->setDuration(125); // already shown: the label stays
        QCOMPARE(time(), QString("1 of 125: 00:01/02:05"));
        m_pBar->setPosition(124);
        m_pBar->setPosition(125);
        QCOMPARE(time(), QString("124 of 125: 02:04/02:05"));
        m_pBar->setDuration(7200);
        QCOMPARE(time(), QString("124 of 7200: 00:00/02:00:00"));

        // The first button shows what a click on it would do.
        const QImage play = picture(QIcon(":/image/play.png"));
        const QImage pause = picture(QIcon(":/image/pause.png"));
        QVERIFY(play != pause);
        for (const bool paused : {false, true}) {
            m_pBar->updatePlayingState(true, paused);
            QCOMPARE(picture(m_vecButtons[0]->icon()), paused ? play : pause);
        }
        QCOMPARE(time(), QString("124 of 7200: 00:00/02:00:00"));
        m_pBar->updatePlayingState(false, true);
        QCOMPARE(picture(m_vecButtons[0]->icon()), play);
        QCOMPARE(time(), QString("0 of 1000: 0:00:00/0:00:00"));
        const auto styles = m_vecButtons[0]->findChildren<QStyle*>("", Qt::FindDirectChildrenOnly);
        QCOMPARE(styles.size(), 1); // the earlier ones are gone
    }

    void looksAsDrawn()
    {
        const QStringList names{"play", "stop", "backward", "step", "openfile"};
        const QPixmap ring(":/image/s1.png");
        int x = 30;
        for (int i = 0; i < names.size(); ++i) {
            QPushButton* button = m_vecButtons[i];
            QCOMPARE(button->x(), x);
            x += button->width();
            button->resize(100, button->height()); // another shape than the ring's
            QCOMPARE(button->iconSize(), QSize(38, 38));
            QCOMPARE(picture(button->icon()), picture(QIcon(":/image/" + names[i] + ".png")));
            m_pPage->setFocus();
            QImage drawn = button->grab().toImage();
            QPainter(&drawn).drawPixmap(0, 0, ring.scaled(button->size(), Qt::KeepAspectRatio));
            button->setFocus();
            QCOMPARE(button->grab().toImage(), drawn);
        }
        m_pBar->resetTime();
        QTRY_VERIFY(m_pLabel->width() > 100); // laid out
        const QImage bar = m_pBar->grab().toImage();
        for (const QPoint& empty : {QPoint(2, 40), m_vecButtons[0]->pos() + QPoint(1, 1)})
            QCOMPARE(bar.pixelColor(empty), QColor(79, 101, 118));
        QCOMPARE(bar.pixelColor(400, m_pSlider->geometry().center().y()), QColor("#575757"));
        QCOMPARE(m_pSlider->geometry().topLeft(), QPoint(10, 0));
        QCOMPARE(m_pLabel->geometry().bottom() + 1, 80 - 11);
        QCOMPARE(m_pLabel->fontInfo().pixelSize(), 23);
        QVERIFY(m_pLabel->font().bold());
        const int after = 790 - m_pLabel->geometry().right() - 1;
        QVERIFY(qAbs(m_pLabel->x() - x - 3 * after) <= 3);
    }

private:
    void log(void (CPagePlayerControl::*signal)(), const char* text)
    {
        connect(m_pBar, signal, this, [this, text] { m_pPage->m_log << text; });
    }

    // The focused button and what has happened since the last look.
    QString state()
    {
        QStringList words(m_pPage->m_log);
        m_pPage->m_log.clear();
        auto* focused = qobject_cast<QPushButton*>(QApplication::focusWidget());
        words.prepend(QString::number(m_vecButtons.indexOf(focused)));
        return words.join(' ');
    }

    QString time() const
    {
        return QString("%1 of %2: %3")
            .arg(m_pSlider->value())
            .arg(m_pSlider->maximum())
            .arg(m_pLabel->text());
    }

    QScopedPointer<Page> m_pPage;
    CPagePlayerControl* m_pBar = nullptr;
    QList<QPushButton*> m_vecButtons;
    QLabel* m_pLabel = nullptr;
    QSlider* m_pSlider = nullptr;
};

QTEST_MAIN(tst_control_bar)
#include "tst_control_bar.moc"
