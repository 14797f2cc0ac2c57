// The list widget of the list page. Its rows are never selected, however the user walks or drags
// over them: the current row is the one that stands out, and a selection would be painted over it.
// Every tap is a click of its own, the second one of a quick pair too. GUI thread only.
//
// The base measures and places all rows anew whenever one changes its font, as each step of the
// current row does. Here the base takes all rows as equally high and places them once; that the
// current row may be higher, and those below it lower down, is put on top of that. So a step costs
// the same in a list of any length. Rows change one at a time, none is hidden, and only the current
// one has a font that is larger than the list's.
#pragma once

#include <QListWidget>

class RowDelegate;

class CTouchList : public QListWidget
{
    Q_OBJECT

public:
    explicit CTouchList(QWidget* parent = nullptr);

    QRect visualRect(const QModelIndex& index) const override;
    QModelIndex indexAt(const QPoint& point) const override;
    void doItemsLayout() override;

public slots:
    void selectAll() override;

protected:
    QItemSelectionModel::SelectionFlags
    selectionCommand(const QModelIndex& index, const QEvent* event = nullptr) const override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    int verticalOffset() const override;

protected slots:
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QVector<int>& roles) override;
    void updateGeometries() override;

private:
    int topOf(int row) const; // counted from the first row's top
    void measureRows();
    void measureCurrentRow();

    RowDelegate* m_pRows;
    QSize m_rowSize;  // the height of all rows, and the width that the widest one asks for
    int m_nExtra = 0; // by which the current row is higher
    int m_nWidth = 0; // that the rows ask for, the current one included
};
