#include "panels/StreamTargetModel.h"

#include "output/StreamUrl.h"
#include "panels/OutputStatusView.h"

#include <QColor>

namespace selvane {

StreamTargetModel::StreamTargetModel(QObject *parent) : QAbstractTableModel(parent) {}

int StreamTargetModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_targets.size());
}

int StreamTargetModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant StreamTargetModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const StreamTargetEntry &target = m_targets[index.row()];
    const QString &status = m_status[index.row()];
    switch (index.column()) {
    case OnColumn:
        if (role == Qt::CheckStateRole)
            return target.enabled ? Qt::Checked : Qt::Unchecked;
        break;
    case KindColumn:
        if (role == Qt::DisplayRole)
            return StreamTargetDialog::kindText(target.kind);
        break;
    case AddressColumn:
        // The key never shows: the server, and dots where the key goes.
        if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
            return maskStreamUrl(target.server) + (target.key.isEmpty() ? QString() : "/••••");
        break;
    case ProfileColumn: {
        const bool missing = !target.profile.isEmpty() && !m_profiles.contains(target.profile);
        if (role == Qt::DisplayRole)
            return target.profile.isEmpty() ? tr("default") : target.profile;
        if (role == Qt::ForegroundRole && missing)
            return QColor("#ff5a5a");
        if (role == Qt::ToolTipRole && missing)
            return tr("There is no profile of this name: the outputs will not start");
        break;
    }
    case StatusColumn:
        if (role == Qt::DisplayRole)
            return OutputStatusView::statusWord(status);
        if (role == Qt::ForegroundRole)
            return QColor(OutputStatusView::statusColour(status));
        break;
    default:
        break;
    }
    return {};
}

QVariant StreamTargetModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    switch (section) {
    case OnColumn:
        return tr("On");
    case KindColumn:
        return tr("Kind");
    case AddressColumn:
        return tr("Address");
    case ProfileColumn:
        return tr("Profile");
    case StatusColumn:
        return tr("Status");
    default:
        return {};
    }
}

Qt::ItemFlags StreamTargetModel::flags(const QModelIndex &index) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    if (index.column() == OnColumn)
        flags |= Qt::ItemIsUserCheckable;
    return flags;
}

bool StreamTargetModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::CheckStateRole || index.column() != OnColumn ||
        !checkIndex(index, CheckIndexOption::IndexIsValid))
        return false;
    const bool on = value.value<Qt::CheckState>() == Qt::Checked;
    StreamTargetEntry &target = m_targets[index.row()];
    if (target.enabled == on)
        return true;
    target.enabled = on;
    emit dataChanged(index, index, {Qt::CheckStateRole});
    emit targetsEdited();
    return true;
}

void StreamTargetModel::setTargets(const QList<StreamTargetEntry> &targets)
{
    beginResetModel();
    m_targets = targets;
    m_status = QStringList(QList<QString>(targets.size()));
    endResetModel();
}

void StreamTargetModel::addTarget(const StreamTargetEntry &target)
{
    const int row = int(m_targets.size());
    beginInsertRows({}, row, row);
    m_targets << target;
    m_status << QString();
    endInsertRows();
    emit targetsEdited();
}

void StreamTargetModel::replaceTarget(int row, const StreamTargetEntry &target)
{
    if (row < 0 || row >= m_targets.size())
        return;
    m_targets[row] = target;
    emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
    emit targetsEdited();
}

void StreamTargetModel::removeTarget(int row)
{
    if (row < 0 || row >= m_targets.size())
        return;
    beginRemoveRows({}, row, row);
    m_targets.removeAt(row);
    m_status.removeAt(row);
    endRemoveRows();
    emit targetsEdited();
}

void StreamTargetModel::setStatus(int index, const QString &status)
{
    int enabled = -1;
    for (int row = 0; row < m_targets.size(); ++row) {
        if (!m_targets[row].enabled || m_targets[row].server.trimmed().isEmpty())
            continue;
        if (++enabled != index)
            continue;
        if (m_status[row] != status) {
            m_status[row] = status;
            const QModelIndex cell = this->index(row, StatusColumn);
            emit dataChanged(cell, cell, {Qt::DisplayRole, Qt::ForegroundRole});
        }
        return;
    }
}

void StreamTargetModel::setProfileNames(const QStringList &names)
{
    if (names == m_profiles)
        return;
    m_profiles = names;
    if (!m_targets.isEmpty())
        emit dataChanged(index(0, ProfileColumn), index(rowCount() - 1, ProfileColumn));
}

void StreamTargetModel::retranslate()
{
    emit headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
    if (!m_targets.isEmpty())
        emit dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
}

} // namespace selvane
