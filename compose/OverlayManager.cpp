#include "compose/OverlayManager.h"

#include <QDebug>
#include <QImageReader>
#include <QMutex>
#include <QMutexLocker>
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
    qRegisterMetaType<OverlayScenePtr>("OverlayScenePtr");
    m_loadGuard->manager = this;
    m_monotonic.start();
    m_scene = std::make_shared<OverlayScene>();
    m_scene = editableCopy();
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

std::shared_ptr<OverlayScene> OverlayManager::editableCopy() const
{
    auto scene = std::make_shared<OverlayScene>(*m_scene);
    // The scene outlives this manager on the program thread: it carries its own clock.
    if (m_clock) {
        scene->clock = m_clock;
    } else {
        const QElapsedTimer monotonic = m_monotonic;
        scene->clock = [monotonic] {
            return monotonic.nsecsElapsed() / 1000;
        };
    }
    return scene;
}

void OverlayManager::publish(std::shared_ptr<OverlayScene> scene, bool texts, bool media,
                             bool doodle, bool layout)
{
    m_scene = std::move(scene);
    if (texts)
        emit textOverlaysChanged();
    if (media)
        emit mediaOverlaysChanged();
    if (doodle)
        emit doodleOverlayChanged();
    if (layout)
        emit overlayLayoutChanged();
    emit sceneChanged(m_scene);
    emit overlayChanged();
}

void OverlayManager::setClock(ClockUs clock)
{
    m_clock = std::move(clock);
    // Start times taken on the old clock mean nothing on the new one.
    auto scene = editableCopy();
    const qint64 now = nowUs();
    for (auto it = scene->scrollStartUs.begin(); it != scene->scrollStartUs.end(); ++it)
        it.value() = now;
    publish(std::move(scene), false, false, false, false);
}

// --- text overlays ---

const TextOverlayData *OverlayManager::textOverlay(int id) const
{
    for (const TextOverlayData &data : m_scene->texts)
        if (data.id == id)
            return &data;
    return nullptr;
}

bool OverlayManager::setTextOverlay(const TextOverlayData &data)
{
    if (data.id < 0)
        return false;
    if (data.text.size() > TextOverlayData::kMaxTextLength) {
        qWarning().noquote() << QStringLiteral("OverlayManager: text overlay %1 refused: %2 "
                                               "characters, at most %3")
                                    .arg(data.id)
                                    .arg(data.text.size())
                                    .arg(TextOverlayData::kMaxTextLength);
        return false;
    }
    auto scene = editableCopy();
    bool restart = false;
    bool stored = false;
    for (TextOverlayData &existing : scene->texts) {
        if (existing.id != data.id)
            continue;
        restart = restartsScroll(existing, data);
        existing = data;
        stored = true;
        break;
    }
    if (!stored) {
        if (scene->texts.size() >= kMaxTextOverlays) {
            qWarning() << "OverlayManager: max" << kMaxTextOverlays << "text overlays"
                       << "— ignoring id" << data.id;
            emit textOverlaysChanged();
            emit overlayChanged();
            return false;
        }
        scene->texts.append(data);
        restart = true;
    }
    if (restart)
        scene->scrollStartUs.insert(data.id, nowUs());
    publish(std::move(scene), true, false, false, false);
    return true;
}

void OverlayManager::removeTextOverlay(int id)
{
    if (!textOverlay(id))
        return;
    auto scene = editableCopy();
    scene->texts.removeIf([id](const TextOverlayData &d) { return d.id == id; });
    scene->scrollStartUs.remove(id);
    publish(std::move(scene), true, false, false, false);
}

void OverlayManager::clearTextOverlays()
{
    if (m_scene->texts.isEmpty())
        return;
    auto scene = editableCopy();
    scene->texts.clear();
    scene->scrollStartUs.clear();
    publish(std::move(scene), true, false, false, false);
}

qint64 OverlayManager::textScrollElapsedUs(int id) const
{
    return m_scene->scrollElapsedUs(id, nowUs());
}

// --- media overlays ---

const MediaOverlayRecord *OverlayManager::mediaOverlay(int id) const
{
    for (const MediaOverlayRecord &record : m_scene->media)
        if (record.id == id)
            return &record;
    return nullptr;
}

void OverlayManager::setMediaOverlay(const MediaOverlayRecord &record)
{
    if (record.id < 0)
        return;
    const bool isImage = record.kind == MediaOverlayRecord::StillImage;
    auto scene = editableCopy();
    for (MediaOverlayRecord &existing : scene->media) {
        if (existing.id != record.id)
            continue;
        const bool placementChanged = existing.rect != record.rect;
        const bool sourceChanged =
            existing.kind != record.kind || existing.filePath != record.filePath;
        existing = record;
        if (sourceChanged) {
            // The old picture shows the wrong file; better nothing until the new one is decoded.
            scene->images.remove(record.id);
            if (isImage && !record.filePath.isEmpty())
                startImageLoad(record.id, record.filePath);
        }
        publish(std::move(scene), false, true, false, placementChanged);
        return;
    }
    if (scene->media.size() > kMaxMediaOverlays - 1) {
        qWarning() << "OverlayManager: media overlay limit reached:" << kMaxMediaOverlays;
        return;
    }
    scene->media.append(record);
    if (isImage && !record.filePath.isEmpty())
        startImageLoad(record.id, record.filePath);
    publish(std::move(scene), false, true, false, false);
}

void OverlayManager::removeMediaOverlay(int id)
{
    if (!mediaOverlay(id))
        return;
    auto scene = editableCopy();
    scene->media.removeIf([id](const MediaOverlayRecord &r) { return r.id == id; });
    // The generation stays: a load still in flight must not match a later record.
    scene->images.remove(id);
    publish(std::move(scene), false, true, false, false);
}

void OverlayManager::clearMediaOverlays()
{
    if (m_scene->media.isEmpty())
        return;
    auto scene = editableCopy();
    scene->media.clear();
    scene->images.clear();
    publish(std::move(scene), false, true, false, false);
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
    auto scene = editableCopy();
    scene->images.insert(mediaId, image);
    publish(std::move(scene), false, true, false, false);
}

// --- doodle layer ---

void OverlayManager::setDoodleLayer(const QList<DoodleStroke> &strokes)
{
    auto scene = editableCopy();
    scene->doodle = strokes;
    ++scene->doodleVersion;
    publish(std::move(scene), false, false, true, false);
}

void OverlayManager::setDoodleVisible(bool visible)
{
    if (m_scene->doodleVisible == visible)
        return;
    auto scene = editableCopy();
    scene->doodleVisible = visible;
    publish(std::move(scene), false, false, true, false);
}

void OverlayManager::clearDoodleLayer()
{
    if (m_scene->doodle.isEmpty())
        return;
    auto scene = editableCopy();
    scene->doodle.clear();
    ++scene->doodleVersion;
    publish(std::move(scene), false, false, true, false);
}
