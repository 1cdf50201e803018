#pragma once

// The schedule editor's rows as table models: base clips and overlay clips, each row with its
// id, source or kind, start, end ("∞" when open-ended) and details. The models hold the rows
// the editor works on; the Program Schedule window changes them only through its undo stack,
// one whole list at a time.
//
// ScheduleRowsModel is the shared part (columns, header, tool tips); BaseRowsModel and
// OverlayRowsModel hold the rows of one kind. GUI thread only. Emit the model's own signals.

#include "panels/ClipDialogs.h"

#include <QAbstractTableModel>
#include <QList>

namespace selvane {

class ScheduleRowsModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        IdColumn,
        SourceColumn,
        StartColumn,
        EndColumn,
        DetailsColumn,
        ColumnCount
    };

    using QAbstractTableModel::QAbstractTableModel;

    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    // The words again, in the language now chosen.
    void retranslate();

    static QString timeText(const QDateTime &time);

protected:
    // The words of one cell.
    virtual QString cell(int row, int column) const = 0;
    // The header of the source column ("Source" for base clips, "Kind" for overlays).
    virtual QString sourceHeader() const = 0;
};

class BaseRowsModel : public ScheduleRowsModel
{
    Q_OBJECT

public:
    using ScheduleRowsModel::ScheduleRowsModel;
    int rowCount(const QModelIndex &parent = {}) const override;
    const QList<ScheduleBaseRow> &rows() const { return m_rows; }
    void setRows(const QList<ScheduleBaseRow> &rows);

protected:
    QString cell(int row, int column) const override;
    QString sourceHeader() const override;

private:
    QList<ScheduleBaseRow> m_rows;
};

class OverlayRowsModel : public ScheduleRowsModel
{
    Q_OBJECT

public:
    using ScheduleRowsModel::ScheduleRowsModel;
    int rowCount(const QModelIndex &parent = {}) const override;
    const QList<ScheduleOverlayRow> &rows() const { return m_rows; }
    void setRows(const QList<ScheduleOverlayRow> &rows);

protected:
    QString cell(int row, int column) const override;
    QString sourceHeader() const override;

private:
    QList<ScheduleOverlayRow> m_rows;
};

} // namespace selvane
