#include "compose/OverlayManager.h"

#include <QDebug>

OverlayManager::OverlayManager(QObject *parent) : QObject(parent) {}

const MediaOverlayRecord *OverlayManager::mediaOverlay(int id) const
{
    for (const MediaOverlayRecord &record : m_media)
        if (record.id == id)
            return &record;
    return nullptr;
}

void OverlayManager::setMediaOverlay(const MediaOverlayRecord &record)
{
    if (record.id < 0)
        return;
    for (MediaOverlayRecord &existing : m_media) {
        if (existing.id != record.id)
            continue;
        const bool placementChanged = existing.rect != record.rect;
        existing = record;
        emit mediaOverlaysChanged();
        if (placementChanged)
            emit overlayLayoutChanged();
        emit overlayChanged();
        return;
    }
    if (m_media.size() > kMaxMediaOverlays - 1) {
        qWarning() << "OverlayManager: media overlay limit reached:" << kMaxMediaOverlays;
        return;
    }
    m_media.append(record);
    emit mediaOverlaysChanged();
    emit overlayChanged();
}

void OverlayManager::removeMediaOverlay(int id)
{
    for (qsizetype i = 0; i < m_media.size(); ++i) {
        if (m_media[i].id != id)
            continue;
        m_media.removeAt(i);
        m_imageCache.remove(id);
        m_videoPictures.remove(id);
        emit mediaOverlaysChanged();
        emit overlayChanged();
        return;
    }
}

void OverlayManager::clearMediaOverlays()
{
    if (m_media.isEmpty())
        return;
    m_media.clear();
    m_imageCache.clear();
    m_videoPictures.clear();
    emit mediaOverlaysChanged();
    emit overlayChanged();
}

void OverlayManager::setOverlayVideoPicture(int id, const QImage &picture)
{
    m_videoPictures.insert(id, picture);
}

void OverlayManager::forgetOverlayVideo(int id)
{
    if (m_videoPictures.remove(id) > 0)
        emit overlayChanged();
}

bool OverlayManager::hasAnythingToDraw() const
{
    for (const MediaOverlayRecord &record : m_media) {
        if (!record.visible || record.filePath.isEmpty())
            continue;
        const QImage picture = record.kind == MediaOverlayRecord::OverlayVideo
                                   ? m_videoPictures.value(record.id)
                                   : m_imageCache.value(record.id);
        if (!picture.isNull())
            return true;
    }
    return false;
}

int OverlayManager::overlayCount() const { return int(m_media.size()); }
