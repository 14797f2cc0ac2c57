// A push button that draws its style's focus frame whenever it has the focus. Some of Qt's styles
// never draw one for a flat button.
#pragma once

#include <QPushButton>

class CFrameButton : public QPushButton
{
    Q_OBJECT

public:
    using QPushButton::QPushButton;

protected:
    void paintEvent(QPaintEvent* event) override;
};
