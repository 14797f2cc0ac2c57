// CPagePlayerList's construction.
#include "pages/list/CPagePlayerList.h"

#include "common/DevicePaths.h"
#include "common/SystemConfig.h"
#include "common/noFocusStyle.h"
#include "pages/list/CTouchList.h"
#include "pages/list/ListStyleSheet.h"
#include "pages/list/RowStyle.h"

#include <QDebug>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>

namespace {

const QRgb kBackground = qRgb(99, 192, 249);
constexpr int kClockFontSize = 25; // px, as all lengths here
constexpr int kClockTickMs = 1000;
constexpr QSize kButtonSize(105, 35);
constexpr QSize kButtonIconSize(25, 25);
constexpr QSize kBackIconSize(22, 22);
constexpr int kRowIndent = 30;
constexpr int kRowSpacing = 15;
constexpr QMargins kMargins(40, 30, 40, 30);

} // namespace

CPagePlayerList::CPagePlayerList(QWidget* parent) : QWidget(parent)
{
    createWidgets();
    readSystemConfig();
    openListFile(m_strPath);
    paintBackground();
    m_pListWidget->setFont(fontOfSize(kRowFontSize));
    setButtonIcons();
    m_pLabelTime->setFont(fontOfSize(kClockFontSize));
    startClock();
    stackRows(createBottomRow());
    frameButtons();
    connectWidgets();
    watchKeys();
    applyStyleSheet();
    placeFocus();
}

CPagePlayerList::~CPagePlayerList()
{
    m_pTimer->stop();
    delete m_pTimer;
}

void CPagePlayerList::createWidgets()
{
    m_pListWidget = new CTouchList;
    m_pBtnOpenVideo = new QPushButton;
    m_pBtnBack = new QPushButton;
    m_pBtnExit = new QPushButton;
    m_pLabelTime = new QLabel;
    m_pTimer = new QTimer;
}

void CPagePlayerList::readSystemConfig()
{
    m_strPath = readVideoRoot();
    qDebug() << "path from cfg file: " << m_strPath;
}

void CPagePlayerList::paintBackground()
{
    QPalette colours = palette();
    colours.setBrush(QPalette::All, QPalette::Window, QBrush(QColor(kBackground)));
    setAutoFillBackground(true);
    setPalette(colours);
}

void CPagePlayerList::setButtonIcons()
{
    m_pBtnOpenVideo->setIcon(style()->standardIcon(QStyle::SP_MediaPlay));
    m_pBtnOpenVideo->setIconSize(kButtonIconSize);
    m_pBtnBack->setIcon(style()->standardIcon(QStyle::SP_DialogOkButton));
    m_pBtnBack->setIconSize(kBackIconSize);
    m_pBtnExit->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    m_pBtnExit->setIconSize(kButtonIconSize);
}

void CPagePlayerList::startClock()
{
    m_pTimer->start(kClockTickMs);
    time_slot();
}

QHBoxLayout* CPagePlayerList::createBottomRow()
{
    auto* row = new QHBoxLayout;
    row->addSpacing(kRowIndent);
    row->addWidget(m_pBtnOpenVideo);
    row->addWidget(m_pBtnBack);
    row->addWidget(m_pBtnExit);
    row->addStretch();
    row->addWidget(m_pLabelTime);
    row->addSpacing(kRowIndent);
    row->setSpacing(kRowSpacing);
    return row;
}

void CPagePlayerList::stackRows(QHBoxLayout* bottomRow)
{
    auto* rows = new QVBoxLayout;
    rows->addWidget(m_pListWidget);
    rows->addLayout(bottomRow);
    rows->setContentsMargins(kMargins);
    setLayout(rows);
}

void CPagePlayerList::frameButtons()
{
    for (QPushButton* button : {m_pBtnOpenVideo, m_pBtnBack, m_pBtnExit}) {
        button->setFixedSize(kButtonSize);
        button->setFlat(true);
        setOwnedStyle(button, new noFocusStyle_1);
    }
}

void CPagePlayerList::connectWidgets()
{
    connect(m_pBtnOpenVideo, SIGNAL(clicked()), this, SLOT(openVideoButton()));
    connect(m_pBtnBack, SIGNAL(clicked()), this, SLOT(backListViewFile()));
    connect(m_pTimer, SIGNAL(timeout()), this, SLOT(time_slot()));
    connect(m_pListWidget, SIGNAL(itemClicked(QListWidgetItem*)), this,
            SLOT(slotListWidgetClicked(QListWidgetItem*)));
    connect(m_pListWidget, SIGNAL(currentItemChanged(QListWidgetItem*, QListWidgetItem*)), this,
            SLOT(currentItem(QListWidgetItem*, QListWidgetItem*)));
    connect(m_pBtnExit, SIGNAL(clicked()), this, SIGNAL(sgExitApp()));
}

void CPagePlayerList::watchKeys()
{
    m_pListWidget->installEventFilter(this);
    m_pBtnBack->installEventFilter(this);
    m_pBtnExit->installEventFilter(this);
    m_pBtnOpenVideo->installEventFilter(this);
}

void CPagePlayerList::applyStyleSheet()
{
    setStyleSheet(QString::fromLatin1(kListStyleSheet)
                      .arg(QString::fromLocal8Bit(DevicePaths::kChecked))
                      .arg(QString::fromLocal8Bit(DevicePaths::kUnchecked)));
}
