// The page that the device shows first: the directories and videos of one directory, three buttons
// and a clock. The user enters directories, marks videos and presses Play, which puts the marked
// videos into the play list. The page never goes above the root directory of the device's
// configuration. GUI thread only, which a scan of a directory blocks until it is done.
#pragma once

#include <QString>
#include <QWidget>

class QHBoxLayout;
class QLabel;
class QListWidget;
class QListWidgetItem;
class QPushButton;
class QTimer;
enum class FocusPlace;
enum class ListAction;

class CPagePlayerList : public QWidget
{
    Q_OBJECT

public:
    explicit CPagePlayerList(QWidget* parent);
    ~CPagePlayerList() override;

    bool eventFilter(QObject* watched, QEvent* event) override; // of the list and the buttons

    void openListFile(const QString& path); // scans it into the list; an empty path is ignored
    void enterPage();                       // before the page is shown
    void leavePage();                       // before it is hidden
    void placeFocus();                      // on the first row, or on Exit when there is none

signals:
    void sgExitApp();
    void sgSwitchToPagePlayer();
    void sgStartToPlay(); // after sgSwitchToPagePlayer()

private slots:
    void openVideoButton();
    void backListViewFile();
    void openListFile(QListWidgetItem* item); // enters a directory and deletes the item
    void currentItem(QListWidgetItem* current, QListWidgetItem* previous);
    void time_slot();
    void slotListWidgetClicked(QListWidgetItem* item);

private:
    void createWidgets();
    void readSystemConfig();
    void paintBackground();
    void setButtonIcons();
    void startClock();
    QHBoxLayout* createBottomRow();
    void stackRows(QHBoxLayout* bottomRow);
    void frameButtons();
    void connectWidgets();
    void watchKeys();
    void applyStyleSheet();

    bool watches(const QObject* object) const;
    bool perform(ListAction action); // false: the page does not consume the key
    void moveFocus(ListAction move);
    bool confirm();
    void confirmRow();
    void toggleMark(QListWidgetItem* item);
    void makeCurrent(int row); // no row, if there is none of that number
    FocusPlace focusPlace() const;
    QWidget* widgetAt(FocusPlace place) const;

    QPushButton* m_pBtnOpenVideo = nullptr;
    QPushButton* m_pBtnBack = nullptr;
    QPushButton* m_pBtnExit = nullptr;
    QTimer* m_pTimer = nullptr; // has no Qt parent; the destructor deletes it
    QLabel* m_pLabelTime = nullptr;
    QString m_strPath; // of the directory that the list shows
    int m_nDepth = 0;  // levels of that directory below the root
    QListWidget* m_pListWidget = nullptr;
};
