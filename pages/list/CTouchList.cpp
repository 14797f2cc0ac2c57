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

    // The page toggles the marks; the base would toggle a tapped one before the page hears of it.
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

    // What the base hears: all rows are equal.
    QSize sizeHint(const QStyleOptionViewItem& /*option*/,
                   const QModelIndex& /*index*/) const override
    {
        return m_rowSize;
    }

    // One line a row, or a name with newlines would make all rows as high as its lines.
    QString displayText(const QVariant& value, const QLocale& /*locale*/) const override
    {
        QString name = value.toString();
        std::replace_if(name.begin(), name.end(), breaksLine, QLatin1Char(' '));
        return name;
    }

    // Some styles fill the focus rectangle, which would tint the current row's background.
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

// Nobody asks for the places of a hidden list's rows before it shows.
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

// The base places new rows before it answers.
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
        row = std::max((y - m_nExtra) / height, current);
    return model()->index(row, 0);
}

// The base looks for the rows of the event's region where they would be without the extra height.
void CTouchList::paintEvent(QPaintEvent* event)
{
    QPaintEvent wider(event->region() + event->rect().adjusted(0, -m_nExtra, 0, 0));
    QListWidget::paintEvent(&wider);
}

void CTouchList::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    updateGeometries(); // the last page holds less with the current row on it
    QListWidget::currentChanged(current, previous);
    viewport()->update(); // rows below either of them may have moved
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

// Neither bar where all fits without them: each could need the room that the other one takes.
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
    resizeContents(m_nWidth, contentsSize().height()); // or the base cuts the current row's text
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
