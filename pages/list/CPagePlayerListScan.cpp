// CPagePlayerList's directory scan, and the steps into a directory and back.
#include "pages/list/CPagePlayerList.h"

#include "pages/list/RowStyle.h"

#include <QCollator>
#include <QDebug>
#include <QDirIterator>
#include <QListWidget>
#include <QPushButton>

#include <algorithm>
#include <dirent.h>
#include <memory>
#include <utility>

namespace {

// One kind of row: how its entries are found, logged and shown.
struct RowKind
{
    QDir::Filters entries;
    bool (*accepts)(const QString& name);
    const char* nameLine; // null: names are not logged
    const char* countLine;
    const char* icon;
    Qt::ItemFlags flags;
};

bool isVideo(const QString& name)
{
    return name.endsWith(QLatin1String(".avi"), Qt::CaseInsensitive) ||
           name.endsWith(QLatin1String(".mp4"), Qt::CaseInsensitive);
}

// Directories with a dot in their name are not listed, so a dot tells the kind of a row.
bool namesDirectory(const QString& name)
{
    return !name.contains(QLatin1Char('.'));
}

const RowKind kDirectories{QDir::Dirs | QDir::NoDotAndDotDot,
                           namesDirectory,
                           nullptr,
                           "-------file cout",
                           ":/image/openfile.png",
                           Qt::ItemIsSelectable | Qt::ItemIsEnabled};
const RowKind kVideos{QDir::Files,
                      isVideo,
                      "-----video listwigdetsort.item=",
                      "-------video cout",
                      ":/image/videoIcon.png",
                      Qt::ItemIsSelectable | Qt::ItemIsUserCheckable | Qt::ItemIsEnabled};

// QDir::Files accepts links to FIFOs and devices, and opening one of those may block for ever.
bool isFileOrDirectory(const QFileInfo& entry)
{
    return entry.isFile() || entry.isDir();
}

QStringList collect(const QString& path, const RowKind& kind)
{
    QStringList names;
    QDirIterator entries(path, kind.entries);
    while (entries.hasNext()) {
        const QString name = entries.next().remove(path).remove(QLatin1Char('/'));
        if (!kind.accepts(name) || !isFileOrDirectory(entries.fileInfo()))
            continue;
        if (kind.nameLine)
            qDebug() << kind.nameLine << name;
        names << name;
    }
    return names;
}

// QDirIterator skips these silently: no QString can name them, so Qt cannot open them. readdir()
// would fail on a 32-bit processor, because file systems have 64-bit directory offsets.
int countUndecodable(const QString& path)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(QFile::encodeName(path)), closedir);
    int count = 0;
    while (const dirent64* entry = folder ? readdir64(folder.get()) : nullptr)
        count += QFile::encodeName(QFile::decodeName(entry->d_name)) != entry->d_name;
    return count;
}

// The row is complete before the list gets it, or the list would look at it after each change.
QListWidgetItem* makeRow(const QString& name, const QIcon& icon, Qt::ItemFlags flags)
{
    auto* row = new QListWidgetItem(icon, name);
    row->setFlags(flags);
    if (flags.testFlag(Qt::ItemIsUserCheckable))
        row->setCheckState(Qt::Unchecked);
    return row;
}

// Sorted by the locale, as QListWidget::sortItems() does.
int addRows(const QString& path, const RowKind& kind, QListWidget* list)
{
    QStringList names = collect(path, kind);
    std::stable_sort(names.begin(), names.end(), QCollator());
    qDebug() << kind.countLine << names.size();
    // All rows share one icon, because each icon keeps scaled pictures of its own.
    const QIcon icon{QPixmap(kind.icon)};
    for (const QString& name : std::as_const(names))
        list->addItem(makeRow(name, icon, kind.flags));
    return names.size();
}

void applyViewSettings(QListWidget* list)
{
    list->setIconSize(kRowIconSize);
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
    const int directories = addRows(path, kDirectories, m_pListWidget);
    const int videos = addRows(path, kVideos, m_pListWidget);
    applyViewSettings(m_pListWidget);
    qDebug() << "-------ItemCount" << directories + videos;
    if (const int undecodable = countUndecodable(path))
        qDebug() << "-------not listed, as their names are not UTF-8:" << undecodable;
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
