// The list widget of the list page. Its rows are never selected, however the user walks or drags
// over them: the current row is the one that stands out, and a selection would be painted over it.
// Every tap is a click of its own, the second one of a quick pair too. GUI thread only.
#pragma once

#include <QListWidget>

class CTouchList : public QListWidget
{
    Q_OBJECT

public:
    explicit CTouchList(QWidget* parent = nullptr);

public slots:
    void selectAll() override;

protected:
    QItemSelectionModel::SelectionFlags
    selectionCommand(const QModelIndex& index, const QEvent* event = nullptr) const override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
};
