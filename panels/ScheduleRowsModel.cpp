#include "panels/ScheduleRowsModel.h"

#include <QDir>

namespace selvane {

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

QString BaseRowsModel::sourceHeader() const
{
    return tr("Source");
}

QString BaseRowsModel::sourceText(const ScheduleBaseRow &row) const
{
    switch (row.clip.kind) {
    case SceneClip::ImagePlay:
        return tr("Image playback");
    case SceneClip::SceneVideo:
        return tr("Video");
    default:
        return tr("Channel %1").arg(row.clip.channel + 1);
    }
}

QString BaseRowsModel::detailsText(const ScheduleBaseRow &row) const
{
    const SceneClip &clip = row.clip;
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
}

// ---- overlay clips ----

QString OverlayRowsModel::sourceHeader() const
{
    return tr("Kind");
}

QString OverlayRowsModel::sourceText(const ScheduleOverlayRow &row) const
{
    switch (row.clip.kind) {
    case OverlayClip::Text:
        return tr("Text");
    case OverlayClip::Video:
        return tr("Video");
    default:
        return tr("Image");
    }
}

QString OverlayRowsModel::detailsText(const ScheduleOverlayRow &row) const
{
    const OverlayClip &clip = row.clip;
    if (clip.kind == OverlayClip::Text)
        return QStringLiteral("\"%1\"").arg(clip.textData.text);
    return tr("%1 at %2, %3 size %4 x %5, opacity %6")
        .arg(QDir::toNativeSeparators(clip.path))
        .arg(clip.x, 0, 'f', 2)
        .arg(clip.y, 0, 'f', 2)
        .arg(clip.w, 0, 'f', 2)
        .arg(clip.h, 0, 'f', 2)
        .arg(clip.opacity, 0, 'f', 2);
}

} // namespace selvane
