// The list widget of the list page. No row is ever selected, because the style sheet paints a
// selection over the colour of the current row. Each press of a double click is a click of its own.
// GUI thread only.
//
// QListView lays out every row again when one font changes, and each step of the current row
// changes two. We let QListView lay out equal rows once, make the current one higher and shift
// those below it. So a step costs the same in a list of any length. This needs that one row changes
// at a time, that no row is hidden, and that only the current row has a larger font than the list.
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
    int topOf(int row) const; // px below the top of the first row
    void measureRows();
    void measureCurrentRow();

    RowDelegate* m_pRows;
    QSize m_rowSize;  // of the widest row in the list's font; all rows are equally high in it
    int m_nExtra = 0; // px by which the current row is higher
    int m_nWidth = 0; // px of the widest row, in its own font
};
