#include "panels/OverlayListModel.h"

#include "engine/Engine.h"

#include <QColor>
#include <QFileInfo>
#include <algorithm>

namespace selvane {

namespace {

template <typename Record> bool sameIds(const QList<Record> &a, const QList<Record> &b)
{
    return a.size() == b.size() &&
           std::equal(a.cbegin(), a.cend(), b.cbegin(),
                      [](const Record &x, const Record &y) { return x.id == y.id; });
}

} // namespace

OverlayListModel::OverlayListModel(Engine *engine, Kind kind, QObject *parent)
    : QAbstractListModel(parent), m_engine(engine), m_kind(kind)
{
    m_texts = kind == Kind::Text ? engine->textOverlays() : QList<TextOverlayData>();
    m_media = kind == Kind::Media ? engine->mediaOverlays() : QList<MediaOverlayRecord>();
    connect(engine, &Engine::overlaysChanged, this, &OverlayListModel::refresh);
}

bool OverlayListModel::editable(int id)
{
    return id >= 0 && !Engine::isScheduleOverlay(id);
}

int OverlayListModel::rowCount(const QModelIndex &parent) const
{
    if (parent.isValid())
        return 0;
    return int(m_kind == Kind::Text ? m_texts.size() : m_media.size());
}

int OverlayListModel::idAt(int row) const
{
    if (row < 0 || row >= rowCount())
        return -1;
    return m_kind == Kind::Text ? m_texts[row].id : m_media[row].id;
}

int OverlayListModel::rowOf(int id) const
{
    for (int row = 0; row < rowCount(); ++row)
        if (idAt(row) == id)
            return row;
    return -1;
}

QString OverlayListModel::words(int row) const
{
    QString words;
    if (m_kind == Kind::Text) {
        words = m_texts[row].text.simplified();
        if (words.isEmpty())
            words = tr("(no text)");
    } else {
        const MediaOverlayRecord &record = m_media[row];
        const QString kind =
            record.kind == MediaOverlayRecord::OverlayVideo ? tr("Video") : tr("Image");
        words = QString("%1  %2%3")
                    .arg(kind, QFileInfo(record.filePath).fileName(),
                         record.visible ? QString() : tr(" (hidden)"));
    }
    if (!editable(idAt(row)))
        words += tr("  [schedule]");
    return words;
}

QVariant OverlayListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const int row = index.row();
    switch (role) {
    case Qt::DisplayRole:
        return words(row);
    case Qt::ToolTipRole:
        return m_kind == Kind::Text ? m_texts[row].text : m_media[row].filePath;
    case Qt::CheckStateRole:
        if (m_kind == Kind::Text)
            return m_texts[row].enabled ? Qt::Checked : Qt::Unchecked;
        return {};
    case Qt::ForegroundRole:
        if (m_kind == Kind::Media && !editable(idAt(row)))
            return QColor(0x9a, 0xa0, 0xaa);
        return {};
    case IdRole:
        return idAt(row);
    default:
        return {};
    }
}

Qt::ItemFlags OverlayListModel::flags(const QModelIndex &index) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return Qt::NoItemFlags;
    if (!editable(idAt(index.row())))
        return m_kind == Kind::Text
                   ? Qt::ItemNeverHasChildren
                   : Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    if (m_kind == Kind::Text)
        flags |= Qt::ItemIsUserCheckable;
    return flags;
}

bool OverlayListModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (m_kind != Kind::Text || role != Qt::CheckStateRole ||
        !checkIndex(index, CheckIndexOption::IndexIsValid) || !editable(idAt(index.row())))
        return false;
    TextOverlayData text = m_texts[index.row()];
    const bool on = value.value<Qt::CheckState>() == Qt::Checked;
    if (text.enabled == on)
        return true;
    text.enabled = on;
    // The row changes when the engine tells that it took the change.
    return !m_engine->setTextOverlay(text);
}

void OverlayListModel::refresh()
{
    bool sameRows = false;
    if (m_kind == Kind::Text) {
        QList<TextOverlayData> texts = m_engine->textOverlays();
        sameRows = sameIds(texts, m_texts);
        if (!sameRows)
            beginResetModel();
        m_texts = std::move(texts);
    } else {
        QList<MediaOverlayRecord> media = m_engine->mediaOverlays();
        sameRows = sameIds(media, m_media);
        if (!sameRows)
            beginResetModel();
        m_media = std::move(media);
    }
    if (!sameRows)
        endResetModel();
    else if (rowCount() > 0)
        emit dataChanged(index(0), index(rowCount() - 1));
}

void OverlayListModel::retranslate()
{
    if (rowCount() > 0)
        emit dataChanged(index(0), index(rowCount() - 1), {Qt::DisplayRole});
}

} // namespace selvane
