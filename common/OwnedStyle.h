// Styles with an owner: QWidget::setStyle() takes none.
#pragma once

class QStyle;
class QWidget;

// Gives the widget a style of its own and the style the widget as its owner. A style given by an
// earlier call is released.
void setOwnedStyle(QWidget* widget, QStyle* style);
