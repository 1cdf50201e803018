#include "engine/StingerCache.h"

#include "input/StingerLoad.h"

#include <QDebug>
#include <QMutex>
#include <QThreadPool>

namespace selvane {

struct StingerCache::Guard
{
    QMutex mutex;
    StingerCache *cache = nullptr;
};

StingerCache::StingerCache(QObject *parent) : QObject(parent), m_guard(std::make_shared<Guard>())
{
    qRegisterMetaType<StingerClipPtr>("selvane::StingerClipPtr");
    m_guard->cache = this;
}

StingerCache::~StingerCache()
{
    for (Entry &entry : m_entries)
        if (entry.cancel)
            entry.cancel->store(true);
    QMutexLocker lock(&m_guard->mutex);
    m_guard->cache = nullptr;
}

void StingerCache::setSize(QSize size)
{
    if (size == m_size)
        return;
    m_size = size;
    for (Entry &entry : m_entries)
        start(entry);
}

void StingerCache::prepare(const QString &file, int cutMs)
{
    if (file.isEmpty())
        return;
    qsizetype index = -1;
    for (qsizetype i = 0; i < m_entries.size(); ++i)
        if (m_entries[i].file == file && m_entries[i].cutMs == cutMs)
            index = i;
    if (index >= 0) {
        m_entries.move(index, m_entries.size() - 1);
        Entry &entry = m_entries.last();
        if (entry.state == State::Failed)
            start(entry); // the file may have been fixed since
        return;
    }
    if (m_entries.size() >= kMaxClips) {
        Entry &oldest = m_entries.first();
        if (oldest.cancel)
            oldest.cancel->store(true);
        qInfo("Stinger %s: dropped from memory", qPrintable(oldest.file));
        m_entries.removeFirst();
    }
    Entry entry;
    entry.file = file;
    entry.cutMs = cutMs;
    m_entries.append(entry);
    start(m_entries.last());
}

void StingerCache::start(Entry &entry)
{
    if (entry.cancel)
        entry.cancel->store(true);
    entry.generation = ++m_generations;
    entry.cancel = std::make_shared<std::atomic<bool>>(false);
    entry.clip.reset();
    entry.failure.clear();
    entry.state = State::Loading;
    if (!m_size.isValid()) {
        entry.state = State::Failed;
        entry.failure = QStringLiteral("the program has no size yet");
        return;
    }
    const QString file = entry.file;
    const int cutMs = entry.cutMs;
    const quint64 generation = entry.generation;
    const QSize size = m_size;
    std::shared_ptr<std::atomic<bool>> cancel = entry.cancel;
    std::shared_ptr<Guard> guard = m_guard;
    QThreadPool::globalInstance()->start([=] {
        QString error;
        StingerClipPtr clip = loadStinger(file, size, cutMs, &error, cancel.get());
        QMutexLocker lock(&guard->mutex);
        if (!guard->cache || cancel->load())
            return;
        QMetaObject::invokeMethod(
            guard->cache,
            [cache = guard->cache, file, cutMs, generation, clip, error] {
                cache->finish(file, cutMs, generation, clip, error);
            },
            Qt::QueuedConnection);
    });
}

void StingerCache::finish(const QString &file, int cutMs, quint64 generation, StingerClipPtr clip,
                          QString detail)
{
    for (Entry &entry : m_entries) {
        if (entry.file != file || entry.cutMs != cutMs || entry.generation != generation)
            continue;
        entry.cancel.reset();
        if (!clip) {
            entry.state = State::Failed;
            entry.failure = detail;
            qWarning("Stinger %s cannot be used: %s", qPrintable(file), qPrintable(detail));
            emit failed(file, cutMs, detail);
            return;
        }
        entry.state = State::Ready;
        entry.clip = clip;
        qInfo("Stinger %s: %d ms, %zu pictures%s, cut at %lld ms, %lld MB in memory",
              qPrintable(file), clip->durationMs(), clip->pictures.size(),
              clip->hasAlpha ? " with alpha" : " without alpha (it covers the picture)",
              clip->cutUs / 1000, clip->bytes >> 20);
        emit loaded(file, cutMs, clip);
        return;
    }
}

const StingerCache::Entry *StingerCache::find(const QString &file, int cutMs) const
{
    for (const Entry &entry : m_entries)
        if (entry.file == file && entry.cutMs == cutMs)
            return &entry;
    return nullptr;
}

StingerClipPtr StingerCache::clip(const QString &file, int cutMs) const
{
    const Entry *entry = find(file, cutMs);
    return entry && entry->state == State::Ready ? entry->clip : nullptr;
}

StingerCache::State StingerCache::state(const QString &file, int cutMs) const
{
    const Entry *entry = find(file, cutMs);
    return entry ? entry->state : State::Absent;
}

QString StingerCache::failure(const QString &file, int cutMs) const
{
    const Entry *entry = find(file, cutMs);
    return entry ? entry->failure : QString();
}

} // namespace selvane
