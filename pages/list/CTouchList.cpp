#include "pages/list/CTouchList.h"

#include <QStyledItemDelegate>

namespace {

class RowDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    // The page toggles the marks; the base would toggle a tapped one before the page hears of it.
    bool editorEvent(QEvent* /*event*/, QAbstractItemModel* /*model*/,
                     const QStyleOptionViewItem& /*option*/, const QModelIndex& /*index*/) override
    {
        return false;
    }

    // Some styles fill the focus rectangle, which would tint the current row's background.
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override
    {
        QStyleOptionViewItem row(option);
        row.state &= ~QStyle::State_HasFocus;
        QStyledItemDelegate::paint(painter, row, index);
    }
};

} // namespace

CTouchList::CTouchList(QWidget* parent) : QListWidget(parent)
{
    setItemDelegate(new RowDelegate(this));
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
