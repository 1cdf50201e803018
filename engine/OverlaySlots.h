#pragma once

// The four overlay-video slots: each plays one overlay video (by media id) on its own decoder,
// whose pictures go to the program switcher and the overlay previews and whose sound goes to
// the slot's audio queue.
//
// A slot is free, playing, or releasing: a stopped overlay keeps its slot until its decoder's
// run has ended (the decoder reports the end of the stop's generation), so that a late picture
// of the old video can never show under a new overlay. A request that finds every slot taken
// while one is releasing waits in a queue and takes the first slot that frees up, in order.
// Drop rule: the queue holds at most kMaxPending requests; a new one beyond that pushes out
// the oldest (counted and logged). A request for an id that already waits replaces it; stopping
// an id removes its waiting request. With all four slots playing, a request is refused with the
// slots-full warning.
//
// Threads: lives on the GUI thread; every method and signal is there. Nothing here waits.

#include "engine/EngineTypes.h"
#include "media/FrameMailbox.h"
#include "media/FramePool.h"

#include <QList>
#include <QObject>
#include <QSize>
#include <array>
#include <atomic>
#include <memory>

class FFmpegVideoDecoder;

namespace selvane {

class AudioInputs;
class ProgramSwitcher;

class OverlaySlots : public QObject
{
    Q_OBJECT

public:
    static constexpr int kMaxPending = 8;

    OverlaySlots(const FramePool &pool, AudioInputs &audio, ProgramSwitcher &switcher,
                 QObject *parent = nullptr);
    ~OverlaySlots() override;

    // Plays `path` for `mediaId`, scaled to fit `targetSize`; a slot already playing the id is
    // reused in place.
    void play(int mediaId, const QString &path, QSize targetSize, bool loop);
    void stop(int mediaId);
    void setTargetSize(int mediaId, QSize targetSize);

    // The slot playing the id, or -1 (also while it only waits).
    int slotOf(int mediaId) const;
    bool isWaiting(int mediaId) const;
    bool isReleasing(int slot) const;
    qint64 droppedRequests() const { return m_droppedRequests; }

signals:
    // A slot started playing an id (the mixer's per-slot volumes follow the id).
    void assigned(int mediaId, int slot);
    void released(int mediaId, int slot);
    void error(int mediaId, selvane::SourceError error, QString detail);
    void ended(int mediaId);
    void preview(int mediaId, FrameTokenPtr frame);

private:
    enum class SlotState
    {
        Free,
        Playing,
        Releasing,
    };
    struct Request
    {
        int mediaId = -1;
        QString path;
        QSize targetSize;
        bool loop = true;
    };
    struct Slot
    {
        std::unique_ptr<FFmpegVideoDecoder> decoder;
        SlotState state = SlotState::Free;
        std::atomic<int> mediaId{-1}; // read by the decoder thread
        quint64 generation = 0;
    };

    void start(int slot, const Request &request);
    void onRunEnded(int slot, quint64 generation);
    void flushPreviews();

    AudioInputs &m_audio;
    ProgramSwitcher &m_switcher;
    std::array<Slot, kOverlayVideoSlots> m_slots;
    QList<Request> m_pending;
    qint64 m_droppedRequests = 0;
    FrameMailbox<kOverlayVideoSlots> m_previews;
};

} // namespace selvane
