// CPagePlayerList's rows, marks and buttons.
#include "pages/list/CPagePlayerList.h"

#include "common/CPlayerDatas.h"
#include "pages/list/RowStyle.h"

#include <QDateTime>
#include <QLabel>
#include <QListWidget>

namespace {

const QRgb kCurrentBackground = qRgb(255, 233, 231);

void dress(QListWidgetItem* row, const QBrush& background, const QFont& font)
{
    row->setBackground(background);
    row->setFont(font);
}

bool isVideoRow(const QListWidgetItem* row)
{
    return row->flags().testFlag(Qt::ItemIsUserCheckable);
}

} // namespace

void CPagePlayerList::currentItem(QListWidgetItem* current, QListWidgetItem* previous)
{
    if (current && m_pListWidget->row(current) >= 0)
        dress(current, QColor(kCurrentBackground), fontOfSize(kCurrentRowFontSize, QFont::Bold));
    if (previous && m_pListWidget->row(previous) != -1)
        dress(previous, QBrush(Qt::transparent), fontOfSize(kRowFontSize));
}

void CPagePlayerList::makeCurrent(int row)
{
    m_pListWidget->setCurrentRow(row, QItemSelectionModel::NoUpdate);
}

void CPagePlayerList::slotListWidgetClicked(QListWidgetItem* item)
{
    makeCurrent(m_pListWidget->row(item));
    item->setSelected(false);
    confirmRow();
}

// OK and a tap do this to the current row. Entering a directory deletes its row.
void CPagePlayerList::confirmRow()
{
    QListWidgetItem* row = m_pListWidget->currentItem();
    if (!row)
        return;
    if (isVideoRow(row))
        toggleMark(row);
    else
        openListFile(row);
}

void CPagePlayerList::toggleMark(QListWidgetItem* item)
{
    if (item->checkState() == Qt::Unchecked)
        item->setCheckState(Qt::Checked);
    else if (item->checkState() == Qt::Checked)
        item->setCheckState(Qt::Unchecked);
}

void CPagePlayerList::openVideoButton()
{
    CPlayerDatas* files = CPlayerDatas::getInstance();
    files->clearFiles();
    for (int i = 0; i < m_pListWidget->count(); ++i) {
        const QListWidgetItem* row = m_pListWidget->item(i);
        if (isVideoRow(row) && row->checkState() == Qt::Checked)
            files->addFile(m_strPath + QLatin1Char('/') + row->text());
    }
    emit sgSwitchToPagePlayer();
    emit sgStartToPlay();
}

void CPagePlayerList::time_slot()
{
    const QDateTime now = QDateTime::currentDateTime();
    m_pLabelTime->setText(now.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")));
}
