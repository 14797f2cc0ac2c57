// CPagePlayerList's directory scan and its way through the directories.
#include "pages/list/CPagePlayerList.h"

#include <QDebug>
#include <QDirIterator>
#include <QListWidget>
#include <QPushButton>

namespace {

constexpr QSize kIconSize(38, 38); // px
constexpr char kDirectoryIcon[] = ":/image/openfile.png";
constexpr char kVideoIcon[] = ":/image/videoIcon.png";

QString nextName(QDirIterator& entries, const QString& path)
{
    return entries.next().remove(path).remove(QLatin1Char('/'));
}

bool isVideo(const QString& name)
{
    return name.endsWith(QLatin1String(".avi"), Qt::CaseInsensitive) ||
           name.endsWith(QLatin1String(".mp4"), Qt::CaseInsensitive);
}

// No directory with a dot in its name is ever listed, so a dot tells a row's kind.
bool namesDirectory(const QString& name)
{
    return !name.contains(QLatin1Char('.'));
}

void collectDirectories(const QString& path, QListWidget& names)
{
    QDirIterator entries(path, QDir::Dirs | QDir::NoDotAndDotDot);
    while (entries.hasNext()) {
        const QString name = nextName(entries, path);
        if (namesDirectory(name))
            names.addItem(name);
    }
}

void collectVideos(const QString& path, QListWidget& names)
{
    QDirIterator entries(path, QDir::Files);
    while (entries.hasNext()) {
        const QString name = nextName(entries, path);
        if (!isVideo(name))
            continue;
        qDebug() << "-----video listwigdetsort.item=" << name;
        names.addItem(name);
    }
}

// The scratch list takes the names in the directory's order and puts them in the list's.
int addDirectories(const QString& path, QListWidget& scratch, QListWidget* list)
{
    collectDirectories(path, scratch);
    scratch.sortItems(Qt::AscendingOrder);
    const int count = scratch.count();
    qDebug() << "-------file cout" << count;
    const QIcon icon(kDirectoryIcon); // one for all rows: each icon keeps its scaled picture
    for (int i = 0; i < count; ++i) {
        auto* row = new QListWidgetItem(scratch.item(i)->text(), list);
        row->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
        row->setIcon(icon);
    }
    scratch.clear();
    return count;
}

int addVideos(const QString& path, QListWidget& scratch, QListWidget* list)
{
    collectVideos(path, scratch);
    scratch.sortItems(Qt::AscendingOrder);
    const int count = scratch.count();
    qDebug() << "-------video cout" << count;
    const QIcon icon(kVideoIcon);
    for (int i = 0; i < count; ++i) {
        auto* row = new QListWidgetItem(scratch.item(i)->text(), list);
        row->setFlags(Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemIsEnabled);
        row->setCheckState(Qt::Unchecked);
        row->setIcon(icon);
    }
    scratch.clear();
    return count;
}

void applyViewSettings(QListWidget* list)
{
    list->setIconSize(kIconSize);
    list->setSelectionMode(QAbstractItemView::MultiSelection);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list->setSortingEnabled(false);
    list->setSelectionBehavior(QAbstractItemView::SelectRows);
}

} // namespace

void CPagePlayerList::openListFile(const QString& path)
{
    if (path.isEmpty())
        return;
    m_pListWidget->clearSelection();
    m_pListWidget->clear();
    QListWidget scratch;
    const int directories = addDirectories(path, scratch, m_pListWidget);
    const int videos = addVideos(path, scratch, m_pListWidget);
    applyViewSettings(m_pListWidget);
    qDebug() << "-------ItemCount" << directories + videos;
}

void CPagePlayerList::openListFile(QListWidgetItem* item)
{
    const QString name = item->text(); // the scan deletes the item
    const QString path = m_strPath + QLatin1Char('/') + name;
    qDebug() << "----ListViewFile" << path;
    if (!namesDirectory(name))
        return;
    m_strPath = path;
    ++m_nDepth;
    openListFile(m_strPath);
    if (m_pListWidget->count() == 0) {
        focusNextPrevChild(true);
        m_pBtnBack->setFocus(Qt::OtherFocusReason);
    } else if (m_pListWidget->hasFocus()) {
        makeCurrent(0);
    }
    m_pListWidget->show();
}

void CPagePlayerList::backListViewFile()
{
    if (m_nDepth == 0)
        return;
    --m_nDepth;
    const QString last = m_strPath.split(QLatin1Char('/')).last();
    m_strPath = m_strPath.left(m_strPath.size() - last.size() - 1);
    qDebug() << "path-----  " << m_strPath;
    openListFile(m_strPath);
    m_pListWidget->show();
}

void CPagePlayerList::enterPage()
{
    openListFile(m_strPath);
    placeFocus();
}

void CPagePlayerList::leavePage() {}

void CPagePlayerList::placeFocus()
{
    if (m_pListWidget->count() == 0) {
        m_pBtnExit->setFocus(Qt::OtherFocusReason);
        return;
    }
    m_pListWidget->setFocus(Qt::OtherFocusReason);
    makeCurrent(0);
}
