// The style sheet of the list page. %1 and %2 are the paths of the check marks: checked, unchecked.
#pragma once

constexpr char kListStyleSheet[] =
    "QPushButton{background-color: rgb(255, 255, 241); border: 3px groove gray; border-radius: "
    "5px; padding: 1px 1px; border-style: outset;border-width: 3px; }"
    "QListWidget{color: rgb(127, 0, 63);background-color: rgb(255, 255, 241);border: 3px solid "
    "gray;border-radius: 10px;padding: 5px 4px;background-image: url(:/image/background3.jpg);"
    "background-attachment: fixed;}"
    "QListWidget::indicator{width: 25px;  height: 25px;}"
    "QListWidget::indicator:checked{border-image:url(%1);}"
    "QListWidget::indicator:unchecked{border-image:url(%2);}"
    "QListWidget::item:selected:active{background: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1, "
    "stop: 0 #6a6ea9, stop: 1 #888dd9);}"
    "QListWidget::item:selected:!active{background: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1, "
    "stop: 0 #ABAFE5, stop: 1 #8588B2);}";

static_assert(sizeof(kListStyleSheet) - 1 == 773, "a blank or a rule was lost");
