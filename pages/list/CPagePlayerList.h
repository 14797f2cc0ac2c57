// The page that the device shows first: the directories and videos of one directory, three buttons
// and a clock. The user enters directories, marks videos and presses Play, which puts the marked
// ones into the play list. It never goes above the root directory that the device's configuration
// names. Driven by keys or by touch. GUI thread only; a scan reads one directory's names at once.
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

    void openListFile(const QString& path); // fills the list anew; nothing when path is empty
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
    void openListFile(QListWidgetItem* item); // a directory's row; the item is gone afterwards
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
    bool perform(ListAction action); // false: the key is for others after all
    void moveFocus(ListAction move);
    bool confirm();
    void confirmRow();
    void toggleMark(QListWidgetItem* item);
    void makeCurrent(int row); // a row that does not exist: no row is current
    FocusPlace focusPlace() const;
    QWidget* widgetAt(FocusPlace place) const;

    QPushButton* m_pBtnOpenVideo = nullptr;
    QPushButton* m_pBtnBack = nullptr;
    QPushButton* m_pBtnExit = nullptr;
    QTimer* m_pTimer = nullptr; // no Qt parent; deleted by the destructor
    QLabel* m_pLabelTime = nullptr;
    QString m_strPath; // the directory that is shown
    int m_nDepth = 0;  // its levels below the root
    QListWidget* m_pListWidget = nullptr;
};
