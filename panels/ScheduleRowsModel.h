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

    // How the rows and the origin show a date and time.
    static constexpr const char *kTimeFormat = "yyyy/MM/dd HH:mm:ss";

protected:
    // The words of one cell.
    virtual QString cell(int row, int column) const = 0;
    // The header of the source column ("Source" for base clips, "Kind" for overlays).
    virtual QString sourceHeader() const = 0;
};

// The rows of one kind: the id and the times are read alike; the source and the details are the
// kind's own.
template <typename Row> class ScheduleRowList : public ScheduleRowsModel
{
public:
    using ScheduleRowsModel::ScheduleRowsModel;

    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : int(m_rows.size());
    }
    const QList<Row> &rows() const { return m_rows; }
    void setRows(const QList<Row> &rows)
    {
        beginResetModel();
        m_rows = rows;
        endResetModel();
    }

protected:
    QString cell(int row, int column) const override
    {
        const Row &r = m_rows[row];
        switch (column) {
        case IdColumn:
            return r.clip.id;
        case StartColumn:
            return r.start.toString(kTimeFormat);
        case EndColumn:
            return r.openEnded ? QStringLiteral("∞") : r.end.toString(kTimeFormat);
        case SourceColumn:
            return sourceText(r);
        case DetailsColumn:
            return detailsText(r);
        default:
            return {};
        }
    }
    virtual QString sourceText(const Row &row) const = 0;
    virtual QString detailsText(const Row &row) const = 0;

private:
    QList<Row> m_rows;
};

class BaseRowsModel : public ScheduleRowList<ScheduleBaseRow>
{
    Q_OBJECT

public:
    using ScheduleRowList::ScheduleRowList;

protected:
    QString sourceHeader() const override;
    QString sourceText(const ScheduleBaseRow &row) const override;
    QString detailsText(const ScheduleBaseRow &row) const override;
};

class OverlayRowsModel : public ScheduleRowList<ScheduleOverlayRow>
{
    Q_OBJECT

public:
    using ScheduleRowList::ScheduleRowList;

protected:
    QString sourceHeader() const override;
    QString sourceText(const ScheduleOverlayRow &row) const override;
    QString detailsText(const ScheduleOverlayRow &row) const override;
};

} // namespace selvane
