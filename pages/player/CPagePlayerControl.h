// The control bar over the bottom of the video: a progress slider and, below it, five icon buttons
// and a time label. It turns clicks into command signals, moves the focus and presses buttons
// by keys, and shows the time and playing state that its page gives it. GUI thread only.
#pragma once

#include <QSize>
#include <QString>
#include <QVector>
#include <QWidget>

class QHBoxLayout;
class QLabel;
class QPushButton;
class QSlider;
enum class ControlAction;

class CPagePlayerControl : public QWidget
{
    Q_OBJECT

public:
    explicit CPagePlayerControl(QWidget* parent);

    bool eventFilter(QObject* watched, QEvent* event) override; // of the five buttons

    void showControl(); // on top; the focus goes back to the button that had it
    void hideControl();

    QString formatTime(int seconds) const; // "mm:ss", or "hh:mm:ss" from one hour on
    void resetTime();
    void setDuration(int seconds); // does nothing if it is shown already
    void setPosition(int seconds); // ignored unless it lies between 0 and the duration
    void updatePlayingState(bool bPlaying, bool bPause);

signals:
    void sgKeyEventUpdate(); // the bar consumed a key, so the user is active
    void sgCmdPlay();
    void sgCmdStop();
    void sgCmdForward();
    void sgCmdBackward();
    void sgCmdBack();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QHBoxLayout* createButtonRow();
    void createTimeLabel();
    QHBoxLayout* createSliderRow();
    void completeButtonRow(QHBoxLayout* buttonRow);
    void stackRows(QHBoxLayout* sliderRow, QHBoxLayout* buttonRow);

    void initButton(QPushButton* button, const QString& iconPath, QSize iconSize);
    void perform(ControlAction action, int index);
    void focusButton(int index, bool next);

    QVector<QPushButton*> m_vecButtons; // in bar order; the bar owns them as children
    QLabel* m_pTimeLabel = nullptr;
    QSlider* m_pSlider = nullptr; // its maximum is the duration that is shown, in seconds
    QString m_strDuration;
    QWidget* m_pLastFocus = nullptr; // had the focus when the bar was last hidden
};
