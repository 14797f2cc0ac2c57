// A push button that asks its style for the focus frame, once, whenever it has the focus. Qt's
// styles differ here: some never ask for the frame of a flat button.
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
