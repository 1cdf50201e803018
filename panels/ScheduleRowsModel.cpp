#include "panels/ScheduleRowsModel.h"

#include <QDir>

namespace selvane {

namespace {

constexpr auto kDisplayFormat = "yyyy/MM/dd HH:mm:ss";

} // namespace

QString ScheduleRowsModel::timeText(const QDateTime &time)
{
    return time.toString(kDisplayFormat);
}

int ScheduleRowsModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ScheduleRowsModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
        return cell(index.row(), index.column());
    return {};
}

QVariant ScheduleRowsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case IdColumn:
        return tr("ID");
    case SourceColumn:
        return sourceHeader();
    case StartColumn:
        return tr("Start");
    case EndColumn:
        return tr("End");
    case DetailsColumn:
        return tr("Details");
    default:
        return {};
    }
}

void ScheduleRowsModel::retranslate()
{
    emit headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
    if (rowCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
}

// ---- base clips ----

int BaseRowsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

void BaseRowsModel::setRows(const QList<ScheduleBaseRow> &rows)
{
    beginResetModel();
    m_rows = rows;
    endResetModel();
}

QString BaseRowsModel::sourceHeader() const
{
    return tr("Source");
}

QString BaseRowsModel::cell(int row, int column) const
{
    const ScheduleBaseRow &r = m_rows[row];
    const SceneClip &clip = r.clip;
    switch (column) {
    case IdColumn:
        return clip.id;
    case SourceColumn:
        switch (clip.kind) {
        case SceneClip::ImagePlay:
            return tr("Image playback");
        case SceneClip::SceneVideo:
            return tr("Video");
        default:
            return tr("Channel %1").arg(clip.channel + 1);
        }
    case StartColumn:
        return timeText(r.start);
    case EndColumn:
        return r.openEnded ? QStringLiteral("∞") : timeText(r.end);
    case DetailsColumn:
        switch (clip.kind) {
        case SceneClip::ImagePlay:
            return tr("%1 (%2 images, %3 ms each%4)")
                .arg(QDir::toNativeSeparators(clip.imageDirectory))
                .arg(clip.paths.size())
                .arg(clip.intervalMs)
                .arg(clip.imageLoop ? tr(", looping") : QString());
        case SceneClip::SceneVideo:
            return QDir::toNativeSeparators(clip.sceneVideoPath) +
                   (clip.sceneVideoLoop ? tr(" (looping)") : QString());
        default:
            return {};
        }
    default:
        return {};
    }
}

// ---- overlay clips ----

int OverlayRowsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

void OverlayRowsModel::setRows(const QList<ScheduleOverlayRow> &rows)
{
    beginResetModel();
    m_rows = rows;
    endResetModel();
}

QString OverlayRowsModel::sourceHeader() const
{
    return tr("Kind");
}

QString OverlayRowsModel::cell(int row, int column) const
{
    const ScheduleOverlayRow &r = m_rows[row];
    const OverlayClip &clip = r.clip;
    switch (column) {
    case IdColumn:
        return clip.id;
    case SourceColumn:
        switch (clip.kind) {
        case OverlayClip::Text:
            return tr("Text");
        case OverlayClip::Video:
            return tr("Video");
        default:
            return tr("Image");
        }
    case StartColumn:
        return timeText(r.start);
    case EndColumn:
        return r.openEnded ? QStringLiteral("∞") : timeText(r.end);
    case DetailsColumn:
        if (clip.kind == OverlayClip::Text)
            return QStringLiteral("\"%1\"").arg(clip.textData.text);
        return tr("%1 at %2, %3 size %4 x %5, opacity %6")
            .arg(QDir::toNativeSeparators(clip.path))
            .arg(clip.x, 0, 'f', 2)
            .arg(clip.y, 0, 'f', 2)
            .arg(clip.w, 0, 'f', 2)
            .arg(clip.h, 0, 'f', 2)
            .arg(clip.opacity, 0, 'f', 2);
    default:
        return {};
    }
}

} // namespace selvane
