#include "pages/list/CTouchList.h"

#include <QStyledItemDelegate>

namespace {

// The page toggles the marks; the delegate would toggle a tapped one before the page hears of it.
class PassiveDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    bool editorEvent(QEvent* /*event*/, QAbstractItemModel* /*model*/,
                     const QStyleOptionViewItem& /*option*/, const QModelIndex& /*index*/) override
    {
        return false;
    }
};

} // namespace

CTouchList::CTouchList(QWidget* parent) : QListWidget(parent)
{
    setItemDelegate(new PassiveDelegate(this));
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
