#include "pages/player/CPagePlayerControl.h"

#include "common/noFocusStyle.h"
#include "pages/player/CFrameButton.h"
#include "pages/player/SliderStyleSheet.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <QSlider>
#include <QVBoxLayout>

namespace {

constexpr QSize kIconSize(38, 38); // px, as all lengths here
constexpr int kTimeFontSize = 23;
constexpr int kRowIndent = 20;
constexpr QMargins kMargins(10, 0, 10, 11);
constexpr int kStretchBeforeTime = 3;
constexpr int kStretchAfterTime = 1;
constexpr QRgb kBackground = qRgb(79, 101, 118);

constexpr int kRangeWithoutFile = 1000;
constexpr int kSecondsPerMinute = 60;
constexpr int kSecondsPerHour = 3600;

constexpr char kPlayIcon[] = ":/image/play.png";
constexpr char kPauseIcon[] = ":/image/pause.png";

struct Button
{
    const char* icon;
    const char* command;
};

const Button kButtons[] = {
    {kPlayIcon, SIGNAL(sgCmdPlay())},
    {":/image/stop.png", SIGNAL(sgCmdStop())},
    {":/image/backward.png", SIGNAL(sgCmdBackward())},
    {":/image/step.png", SIGNAL(sgCmdForward())},
    {":/image/openfile.png", SIGNAL(sgCmdBack())},
};

} // namespace

CPagePlayerControl::CPagePlayerControl(QWidget* parent) : QWidget(parent)
{
    QHBoxLayout* buttonRow = createButtonRow();
    createTimeLabel();
    QHBoxLayout* sliderRow = createSliderRow();
    completeButtonRow(buttonRow);
    stackRows(sliderRow, buttonRow);
    setFocusPolicy(Qt::StrongFocus);
    m_vecButtons.first()->setFocus(Qt::OtherFocusReason);
}

QHBoxLayout* CPagePlayerControl::createButtonRow()
{
    auto* row = new QHBoxLayout;
    row->addSpacing(kRowIndent);
    for (const Button& entry : kButtons) {
        auto* button = new CFrameButton;
        initButton(button, QString::fromLatin1(entry.icon), kIconSize);
        button->installEventFilter(this);
        m_vecButtons.append(button);
        row->addWidget(button);
        connect(button, SIGNAL(clicked()), this, entry.command);
    }
    return row;
}

void CPagePlayerControl::initButton(QPushButton* button, const QString& iconPath, QSize iconSize)
{
    // QPixmap caches the file. A QIcon of the path would add a scaled picture to Qt's cache with
    // each playback.
    button->setIcon(QIcon(QPixmap(iconPath)));
    button->setIconSize(iconSize);
    button->setFlat(true);
    setOwnedStyle(button, new noFocusStyle);
}

void CPagePlayerControl::createTimeLabel()
{
    m_pTimeLabel = new QLabel;
    QFont font;
    font.setWeight(QFont::Bold);
    font.setPixelSize(kTimeFontSize);
    m_pTimeLabel->setFont(font);
}

QHBoxLayout* CPagePlayerControl::createSliderRow()
{
    m_pSlider = new QSlider(Qt::Horizontal);
    m_pSlider->setFocusPolicy(Qt::NoFocus);
    m_pSlider->setStyleSheet(QString::fromLatin1(kSliderStyleSheet));
    auto* row = new QHBoxLayout;
    row->addWidget(m_pSlider);
    return row;
}

void CPagePlayerControl::completeButtonRow(QHBoxLayout* buttonRow)
{
    buttonRow->addStretch(kStretchBeforeTime);
    buttonRow->addWidget(m_pTimeLabel);
    buttonRow->addStretch(kStretchAfterTime);
    buttonRow->setSpacing(0);
}

void CPagePlayerControl::stackRows(QHBoxLayout* sliderRow, QHBoxLayout* buttonRow)
{
    auto* rows = new QVBoxLayout;
    rows->addLayout(sliderRow);
    rows->addLayout(buttonRow);
    rows->setContentsMargins(kMargins);
    setLayout(rows);
}

void CPagePlayerControl::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(kBackground));
    painter.drawRect(rect());
}

QString CPagePlayerControl::formatTime(int seconds) const
{
    const int hours = seconds / kSecondsPerHour;
    const int minutes = seconds % kSecondsPerHour / kSecondsPerMinute;
    const int secs = seconds % kSecondsPerHour % kSecondsPerMinute;
    if (hours != 0)
        return QString::asprintf("%02d%c%02d%c%02d", hours, ':', minutes, ':', secs);
    return QString::asprintf("%02d%c%02d", minutes, ':', secs);
}

void CPagePlayerControl::resetTime()
{
    m_pTimeLabel->setText(QStringLiteral("0:00:00/0:00:00"));
    m_pSlider->setRange(0, kRangeWithoutFile);
    m_pSlider->setValue(0);
}

void CPagePlayerControl::setDuration(int seconds)
{
    if (m_pSlider->maximum() == seconds)
        return;
    m_pSlider->setRange(0, seconds);
    m_strDuration = formatTime(seconds);
    m_pTimeLabel->setText(QStringLiteral("00:00/") + m_strDuration);
}

void CPagePlayerControl::setPosition(int seconds)
{
    if (seconds <= 0 || seconds >= m_pSlider->maximum())
        return;
    m_pSlider->setValue(seconds);
    m_pTimeLabel->setText(formatTime(seconds) + QLatin1Char('/') + m_strDuration);
}

// The first button shows what a click on it does.
void CPagePlayerControl::updatePlayingState(bool bPlaying, bool bPause)
{
    const char* icon = bPlaying && !bPause ? kPauseIcon : kPlayIcon;
    initButton(m_vecButtons.first(), QString::fromLatin1(icon), kIconSize);
    if (!bPlaying)
        resetTime();
}
