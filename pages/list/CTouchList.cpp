#include "pages/list/CTouchList.h"

#include <QPaintEvent>
#include <QScrollBar>
#include <QStyledItemDelegate>

#include <algorithm>

namespace {

bool breaksLine(QChar character)
{
    const QChar::Category category = character.category();
    return category == QChar::Other_Control || category == QChar::Separator_Line ||
           category == QChar::Separator_Paragraph;
}

} // namespace

class RowDelegate : public QStyledItemDelegate
{
public:
    RowDelegate(const QSize& rowSize, QObject* parent)
        : QStyledItemDelegate(parent), m_rowSize(rowSize)
    {
    }

    // QStyledItemDelegate toggles a tapped check mark, and then the page would toggle it back.
    bool editorEvent(QEvent* /*event*/, QAbstractItemModel* /*model*/,
                     const QStyleOptionViewItem& /*option*/, const QModelIndex& /*index*/) override
    {
        return false;
    }

    QSize sizeInFont(const QFont& font, QStyleOptionViewItem row, const QModelIndex& index) const
    {
        initStyleOption(&row, index);
        row.font = font;
        row.fontMetrics = QFontMetrics(font);
        const QStyle* style = row.widget->style();
        return style->sizeFromContents(QStyle::CT_ItemViewItem, &row, {}, row.widget);
    }

    // QListView lays out rows of this size.
    QSize sizeHint(const QStyleOptionViewItem& /*option*/,
                   const QModelIndex& /*index*/) const override
    {
        return m_rowSize;
    }

    // A name with newlines would make every row as high as all its lines.
    QString displayText(const QVariant& value, const QLocale& /*locale*/) const override
    {
        QString name = value.toString();
        std::replace_if(name.begin(), name.end(), breaksLine, QLatin1Char(' '));
        return name;
    }

    // Some styles fill the focus rectangle, which tints the background of the current row.
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override
    {
        QStyleOptionViewItem row(option);
        row.state &= ~QStyle::State_HasFocus;
        QStyledItemDelegate::paint(painter, row, index);
    }

private:
    const QSize& m_rowSize;
};

CTouchList::CTouchList(QWidget* parent)
    : QListWidget(parent), m_pRows(new RowDelegate(m_rowSize, this))
{
    setUniformItemSizes(true);
    setItemDelegate(m_pRows);
}

// A hidden list needs no layout before it is shown.
void CTouchList::doItemsLayout()
{
    if (!isVisible()) {
        scheduleDelayedItemsLayout();
        return;
    }
    measureRows();
    measureCurrentRow();
    QListWidget::doItemsLayout();
}

void CTouchList::measureRows()
{
    const QStyleOptionViewItem option = viewOptions();
    m_rowSize = QSize();
    for (int row = 0; row < count(); ++row)
        m_rowSize =
            m_rowSize.expandedTo(m_pRows->sizeInFont(font(), option, model()->index(row, 0)));
}

void CTouchList::measureCurrentRow()
{
    QSize size = m_rowSize;
    if (const QListWidgetItem* current = currentItem())
        size = m_pRows->sizeInFont(current->font().resolve(font()), viewOptions(), currentIndex());
    m_nExtra = std::max(size.height() - m_rowSize.height(), 0);
    m_nWidth = std::max(size.width(), m_rowSize.width());
}

int CTouchList::topOf(int row) const
{
    const int current = currentIndex().row();
    const bool below = current != -1 && row > current;
    return row * m_rowSize.height() + (below ? m_nExtra : 0);
}

// QListWidget::visualRect() lays out new rows first.
QRect CTouchList::visualRect(const QModelIndex& index) const
{
    const QRect rect = QListWidget::visualRect(index);
    if (!rect.isValid())
        return rect;
    const int top = topOf(index.row());
    return {rect.x(), top - verticalOffset(), std::max(m_nWidth, viewport()->width()),
            topOf(index.row() + 1) - top};
}

int CTouchList::verticalOffset() const
{
    return topOf(verticalScrollBar()->value());
}

QModelIndex CTouchList::indexAt(const QPoint& point) const
{
    const int height = m_rowSize.height();
    const int y = point.y() + verticalOffset();
    if (height == 0 || y < 0)
        return {};
    int row = y / height;
    if (const int current = currentIndex().row(); current != -1 && row > current)
        row = (y - m_nExtra) / height;
    return model()->index(row, 0);
}

// QListView paints the rows of the event's region, but does not know that they are shifted.
void CTouchList::paintEvent(QPaintEvent* event)
{
    QPaintEvent wider(event->region() + event->rect().adjusted(0, -m_nExtra, 0, 0));
    QListWidget::paintEvent(&wider);
}

void CTouchList::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    updateGeometries(); // the last page holds fewer rows when the current one is among them
    QListWidget::currentChanged(current, previous);
    viewport()->update(); // the rows between both have moved
}

void CTouchList::dataChanged(const QModelIndex& topLeft, const QModelIndex& /*bottomRight*/,
                             const QVector<int>& roles)
{
    const bool all = roles.isEmpty(); // QListWidget names no roles before Qt 5.10
    if ((all || roles.contains(Qt::FontRole)) && topLeft == currentIndex()) {
        measureCurrentRow();
        updateGeometries();
    }
    if (isVisible())
        update(topLeft);
}

// Show no scroll bar if everything fits without one.
void CTouchList::updateGeometries()
{
    const QSize room = maximumViewportSize();
    const QSize size = viewport()->size();
    const bool fits = m_nWidth <= room.width() && topOf(count()) <= room.height();
    const int height = std::max(m_rowSize.height(), 1);
    int page = size.height() / height;
    if (currentIndex().row() >= count() - page)
        page = (size.height() - m_nExtra) / height;
    page = std::max(page, 1);
    resizeContents(m_nWidth, contentsSize().height()); // or the current row's text is cut off
    horizontalScrollBar()->setSingleStep(m_rowSize.width());
    horizontalScrollBar()->setPageStep(size.width());
    horizontalScrollBar()->setRange(0, fits ? 0 : m_nWidth - size.width());
    verticalScrollBar()->setPageStep(page);
    verticalScrollBar()->setRange(0, fits ? 0 : count() - page);
}

void CTouchList::selectAll() {}

QItemSelectionModel::SelectionFlags CTouchList::selectionCommand(const QModelIndex& /*index*/,
                                                                 const QEvent* /*event*/) const
{
    return QItemSelectionModel::NoUpdate;
}

void CTouchList::mouseDoubleClickEvent(QMouseEvent* event)
{
    mousePressEvent(event);
}
