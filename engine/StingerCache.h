#pragma once

// The stinger clips a show may take to air, decoded ahead at the program's size so that a take
// starts on the tick it is asked for. A clip is known by its file and cut point; at most
// kMaxClips are kept (the least recently asked for goes first), each within the clip's own
// memory bound. A new program size loads every kept clip again at that size.
//
// Threads: lives on the GUI thread; every method and signal is there. Loads run on the global
// thread pool and come back as queued calls; a load whose clip was dropped, or asked for at
// another size since, is cancelled or ignored (a per-entry generation). Nothing here waits.

#include "media/StingerClip.h"

#include <QList>
#include <QObject>
#include <QSize>
#include <QString>
#include <atomic>
#include <memory>

namespace selvane {

class StingerCache : public QObject
{
    Q_OBJECT

public:
    static constexpr int kMaxClips = 3;

    enum class State
    {
        Absent,
        Loading,
        Ready,
        Failed,
    };

    explicit StingerCache(QObject *parent = nullptr);
    ~StingerCache() override;

    void setSize(QSize size);
    // Starts loading the clip unless it is loaded or loading; it becomes the most recent.
    void prepare(const QString &file, int cutMs);
    // The loaded clip, or null while it loads, failed or was never asked for.
    StingerClipPtr clip(const QString &file, int cutMs) const;
    State state(const QString &file, int cutMs) const;
    // Why the clip failed (empty otherwise).
    QString failure(const QString &file, int cutMs) const;

signals:
    void loaded(QString file, int cutMs, selvane::StingerClipPtr clip);
    void failed(QString file, int cutMs, QString detail);

private:
    struct Guard;
    struct Entry
    {
        QString file;
        int cutMs = -1;
        State state = State::Absent;
        StingerClipPtr clip;
        QString failure;
        quint64 generation = 0;
        std::shared_ptr<std::atomic<bool>> cancel;
    };

    void start(Entry &entry);
    void finish(const QString &file, int cutMs, quint64 generation, StingerClipPtr clip,
                QString detail);
    const Entry *find(const QString &file, int cutMs) const;

    QSize m_size;
    QList<Entry> m_entries; // most recent last
    quint64 m_generations = 0;
    std::shared_ptr<Guard> m_guard;
};

} // namespace selvane

Q_DECLARE_METATYPE(selvane::StingerClipPtr)
