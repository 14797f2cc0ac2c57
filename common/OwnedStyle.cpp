#include "common/OwnedStyle.h"

#include <QStyle>
#include <QWidget>

void setOwnedStyle(QWidget* widget, QStyle* style)
{
    auto* previous = widget->findChild<QStyle*>(QString(), Qt::FindDirectChildrenOnly);
    style->setParent(widget);
    widget->setStyle(style);
    delete previous; // only now: the widget uses it until it has the new one
}
