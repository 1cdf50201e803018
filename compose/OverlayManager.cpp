#include "compose/OverlayManager.h"

#include <QDebug>
#include <QImageReader>
#include <QMutex>
#include <QMutexLocker>
#include <QPainter>
#include <QPen>
#include <QPolygonF>
#include <QThreadPool>
#include <algorithm>
#include <utility>

// The loads in flight hold this weakly. The destructor clears `manager` under the mutex, and a
// load posts its result only while holding that mutex, so nothing is ever posted to a manager
// that is being destroyed; a result posted just before is discarded with the object's events.
struct OverlayManager::LoadGuard
{
    QMutex mutex;
    OverlayManager *manager = nullptr;
};

namespace {

// The same reader the image overlay editor uses: EXIF orientation applied, so an image looks the
// same in the panel and on the program.
QImage loadOverlayImage(const QString &path)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    QImage image = reader.read();
    if (image.isNull()) {
        qWarning().noquote() << "OverlayManager: cannot load image overlay" << path << "-"
                             << reader.errorString();
        return image;
    }
    // Decoded once, drawn on every frame: convert here, off the GUI thread, to the format the
    // painter blends fastest.
    return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

// A change of the words or of the way they move starts the scroll from the beginning.
bool restartsScroll(const TextOverlayData &before, const TextOverlayData &after)
{
    return before.text != after.text || before.enabled != after.enabled ||
           before.scrollable != after.scrollable ||
           before.scrollDirection != after.scrollDirection ||
           before.scrollStep != after.scrollStep || before.scrollTimes != after.scrollTimes;
}

} // namespace

OverlayManager::OverlayManager(QObject *parent)
    : QObject(parent), m_loadGuard(std::make_shared<LoadGuard>())
{
    m_loadGuard->manager = this;
    m_monotonic.start();
}

OverlayManager::~OverlayManager()
{
    QMutexLocker lock(&m_loadGuard->mutex);
    m_loadGuard->manager = nullptr;
}

qint64 OverlayManager::nowUs() const
{
    return m_clock ? m_clock() : m_monotonic.nsecsElapsed() / 1000;
}

void OverlayManager::setClock(ClockUs clock)
{
    m_clock = std::move(clock);
    // Start times taken on the old clock mean nothing on the new one.
    const qint64 now = nowUs();
    for (auto it = m_scrollStartUs.begin(); it != m_scrollStartUs.end(); ++it)
        it.value() = now;
}

// --- text overlays ---

const TextOverlayData *OverlayManager::textOverlay(int id) const
{
    for (const TextOverlayData &data : m_texts)
        if (data.id == id)
            return &data;
    return nullptr;
}

void OverlayManager::setTextOverlay(const TextOverlayData &data)
{
    if (data.id < 0)
        return;
    bool restart = false;
    bool stored = false;
    for (TextOverlayData &existing : m_texts) {
        if (existing.id != data.id)
            continue;
        restart = restartsScroll(existing, data);
        existing = data;
        stored = true;
        break;
    }
    if (!stored) {
        if (m_texts.size() >= kMaxTextOverlays) {
            qWarning() << "OverlayManager: max" << kMaxTextOverlays << "text overlays"
                       << "— ignoring id" << data.id;
        } else {
            m_texts.append(data);
            stored = true;
            restart = true;
        }
    }
    if (stored && restart)
        m_scrollStartUs.insert(data.id, nowUs());
    emit textOverlaysChanged();
    emit overlayChanged();
}

void OverlayManager::removeTextOverlay(int id)
{
    for (qsizetype i = 0; i < m_texts.size(); ++i) {
        if (m_texts[i].id != id)
            continue;
        m_texts.removeAt(i);
        m_scrollStartUs.remove(id);
        emit textOverlaysChanged();
        emit overlayChanged();
        return;
    }
}

void OverlayManager::clearTextOverlays()
{
    if (m_texts.isEmpty())
        return;
    m_texts.clear();
    m_scrollStartUs.clear();
    emit textOverlaysChanged();
    emit overlayChanged();
}

qint64 OverlayManager::textScrollElapsedUs(int id) const
{
    const auto it = m_scrollStartUs.constFind(id);
    if (it == m_scrollStartUs.constEnd())
        return 0;
    return std::max<qint64>(0, nowUs() - it.value());
}

// --- media overlays ---

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
    const bool isImage = record.kind == MediaOverlayRecord::StillImage;
    for (MediaOverlayRecord &existing : m_media) {
        if (existing.id != record.id)
            continue;
        const bool placementChanged = existing.rect != record.rect;
        const bool sourceChanged =
            existing.kind != record.kind || existing.filePath != record.filePath;
        existing = record;
        if (sourceChanged) {
            // The old picture shows the wrong file; better nothing until the new one is decoded.
            m_imageCache.remove(record.id);
            if (isImage && !record.filePath.isEmpty())
                startImageLoad(record.id, record.filePath);
        }
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
    if (isImage && !record.filePath.isEmpty())
        startImageLoad(record.id, record.filePath);
    emit mediaOverlaysChanged();
    emit overlayChanged();
}

void OverlayManager::removeMediaOverlay(int id)
{
    for (qsizetype i = 0; i < m_media.size(); ++i) {
        if (m_media[i].id != id)
            continue;
        m_media.removeAt(i);
        // The generation stays: a load still in flight must not match a later record.
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

void OverlayManager::startImageLoad(int mediaId, const QString &path)
{
    const int generation = m_imageGenerations.value(mediaId, 0) + 1;
    m_imageGenerations.insert(mediaId, generation);
    const std::weak_ptr<LoadGuard> weakGuard = m_loadGuard;
    QThreadPool::globalInstance()->start([weakGuard, mediaId, path, generation] {
        const QImage image = loadOverlayImage(path);
        const std::shared_ptr<LoadGuard> guard = weakGuard.lock();
        if (!guard)
            return;
        QMutexLocker lock(&guard->mutex);
        if (!guard->manager)
            return;
        QMetaObject::invokeMethod(guard->manager, "tryCommitImageOverlayCache",
                                  Qt::QueuedConnection, Q_ARG(int, mediaId), Q_ARG(QString, path),
                                  Q_ARG(int, generation), Q_ARG(QImage, image));
    });
}

void OverlayManager::tryCommitImageOverlayCache(int mediaId, QString path, int generation,
                                                QImage image)
{
    if (image.isNull())
        return;
    if (m_imageGenerations.value(mediaId, -1) != generation)
        return; // a newer load was started: this result is stale
    const MediaOverlayRecord *record = mediaOverlay(mediaId);
    if (!record || record->kind != MediaOverlayRecord::StillImage || record->filePath != path)
        return; // removed, turned into a video, or pointed at another file meanwhile
    m_imageCache.insert(mediaId, image);
    emit mediaOverlaysChanged();
    emit overlayChanged();
}

// --- doodle layer ---

void OverlayManager::setDoodleLayer(const QList<DoodleStroke> &strokes)
{
    m_doodleStrokes = strokes;
    m_doodleCacheValid = false;
    emit doodleOverlayChanged();
    emit overlayChanged();
}

void OverlayManager::setDoodleVisible(bool visible)
{
    if (m_doodleVisible == visible)
        return;
    m_doodleVisible = visible;
    emit doodleOverlayChanged();
    emit overlayChanged();
}

void OverlayManager::clearDoodleLayer()
{
    if (m_doodleStrokes.isEmpty())
        return;
    m_doodleStrokes.clear();
    m_doodleCacheValid = false;
    m_doodleCache = QImage();
    emit doodleOverlayChanged();
    emit overlayChanged();
}

QImage OverlayManager::doodlePicture() const
{
    if (!hasDoodle() || m_outputSize.width() < 1 || m_outputSize.height() < 1)
        return QImage();
    if (m_doodleCacheValid && m_doodleCache.size() == m_outputSize)
        return m_doodleCache;

    QImage picture(m_outputSize, QImage::Format_RGBA8888_Premultiplied);
    picture.fill(Qt::transparent);
    const double sx = m_outputSize.width() / 640.0;
    const double sy = m_outputSize.height() / 360.0;
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing, true);
    for (const DoodleStroke &stroke : m_doodleStrokes) {
        if (stroke.points.isEmpty())
            continue;
        // Line weight follows the vertical factor, as text does, so both keep their proportion.
        QPen pen(stroke.color, std::max(1.0, stroke.width * sy), Qt::SolidLine, Qt::RoundCap,
                 Qt::RoundJoin);
        painter.setPen(pen);
        QPolygonF line;
        line.reserve(stroke.points.size());
        for (const QPointF &p : stroke.points)
            line.append(QPointF(p.x() * sx, p.y() * sy));
        if (line.size() == 1)
            painter.drawPoint(line.first()); // a tap leaves a dot
        else
            painter.drawPolyline(line);
    }
    painter.end();
    m_doodleCache = picture;
    m_doodleCacheValid = true;
    return m_doodleCache;
}

void OverlayManager::setOutputSize(QSize size)
{
    if (size == m_outputSize)
        return;
    m_outputSize = size;
    m_doodleCacheValid = false;
}

// --- summaries for the compositor ---

bool OverlayManager::hasAnythingToDraw() const
{
    return overlayCount() > 0;
}

int OverlayManager::overlayCount() const
{
    int count = hasDoodle() ? 1 : 0;
    for (const TextOverlayData &data : m_texts)
        if (data.isDrawable())
            ++count;
    for (const MediaOverlayRecord &record : m_media) {
        if (!record.visible || record.filePath.isEmpty())
            continue;
        const QImage picture = record.kind == MediaOverlayRecord::OverlayVideo
                                   ? m_videoPictures.value(record.id)
                                   : m_imageCache.value(record.id);
        if (!picture.isNull())
            ++count;
    }
    return count;
}
