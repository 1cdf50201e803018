#pragma once

// The four overlay-video slots: each plays one overlay video (by media id) on its own decoder,
// whose pictures and sound go to the slot's source feed; the program switcher is told which
// overlay each slot's pictures belong to.
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
#include "input/SourceAddress.h"

#include <QList>
#include <QObject>
#include <QSize>
#include <array>
#include <memory>

class FFmpegVideoDecoder;

namespace selvane {

class ProgramSwitcher;
class SourceFeeds;

class OverlaySlots : public QObject
{
    Q_OBJECT

public:
    static constexpr int kMaxPending = 8;

    OverlaySlots(SourceFeeds &feeds, ProgramSwitcher &switcher, QObject *parent = nullptr);
    ~OverlaySlots() override;

    // Plays `source` for `mediaId`, scaled to fit `targetSize`; a slot already playing the id is
    // reused in place.
    void play(int mediaId, const SourceAddress &source, QSize targetSize, bool loop);
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
        SourceAddress source;
        QSize targetSize;
        bool loop = true;
    };
    struct Slot
    {
        std::unique_ptr<FFmpegVideoDecoder> decoder;
        SlotState state = SlotState::Free;
        int mediaId = -1;
        quint64 generation = 0;
    };

    void start(int slot, const Request &request);
    void onRunEnded(int slot, quint64 generation);

    ProgramSwitcher &m_switcher;
    std::array<Slot, kOverlayVideoSlots> m_slots;
    QList<Request> m_pending;
    qint64 m_droppedRequests = 0;
};

} // namespace selvane
