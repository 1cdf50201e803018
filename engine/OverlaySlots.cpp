#include "engine/OverlaySlots.h"

#include "engine/ProgramSwitcher.h"
#include "input/FFmpegVideoDecoder.h"
#include "media/FramePool.h"
#include "media/LogThrottle.h"
#include "media/SourceFeeds.h"

#include <QDebug>

namespace selvane {

namespace {
constexpr qint32 kSlotPoolBase = 48;
} // namespace

OverlaySlots::OverlaySlots(SourceFeeds &feeds, ProgramSwitcher &switcher, QObject *parent)
    : QObject(parent), m_switcher(switcher)
{
    for (int s = 0; s < kOverlayVideoSlots; ++s) {
        Slot &slot = m_slots[std::size_t(s)];
        slot.decoder = std::make_unique<FFmpegVideoDecoder>();
        FFmpegVideoDecoder *decoder = slot.decoder.get();
        decoder->setFramePool(FramePool(kSlotPoolBase, 1920, 1080));
        decoder->setFeed(&feeds.overlaySlot(s));
        connect(decoder, &FFmpegVideoDecoder::runEnded, this,
                [this, s](quint64 generation) { onRunEnded(s, generation); });
        connect(decoder, &FFmpegVideoDecoder::decodeError, this,
                [this, s](SourceError code, const QString &detail, quint64 generation) {
                    const Slot &slot = m_slots[std::size_t(s)];
                    if (generation != slot.generation || slot.state != SlotState::Playing)
                        return;
                    const QString text =
                        sourceErrorLogText(code) + (detail.isEmpty() ? QString() : ": " + detail);
                    qWarning().noquote() << "Overlay slot" << s + 1 << "decoder:" << text;
                    emit error(slot.mediaId, code, detail);
                });
        connect(decoder, &FFmpegVideoDecoder::playbackEndedNaturally, this,
                [this, s](quint64 generation) {
                    const Slot &slot = m_slots[std::size_t(s)];
                    if (generation == slot.generation && slot.state == SlotState::Playing)
                        emit ended(slot.mediaId);
                });
    }
}

OverlaySlots::~OverlaySlots()
{
    for (Slot &slot : m_slots)
        slot.decoder->stop();
}

int OverlaySlots::slotOf(int mediaId) const
{
    for (int s = 0; s < kOverlayVideoSlots; ++s)
        if (m_slots[std::size_t(s)].state == SlotState::Playing &&
            m_slots[std::size_t(s)].mediaId == mediaId)
            return s;
    return -1;
}

bool OverlaySlots::isWaiting(int mediaId) const
{
    for (const Request &request : m_pending)
        if (request.mediaId == mediaId)
            return true;
    return false;
}

bool OverlaySlots::isReleasing(int slot) const
{
    return slot >= 0 && slot < kOverlayVideoSlots &&
           m_slots[std::size_t(slot)].state == SlotState::Releasing;
}

void OverlaySlots::play(int mediaId, const SourceAddress &source, QSize targetSize, bool loop)
{
    if (mediaId < 0 || source.isEmpty())
        return;
    const Request request{mediaId, source, targetSize, loop};
    int slot = slotOf(mediaId);
    if (slot < 0) {
        for (int s = 0; s < kOverlayVideoSlots && slot < 0; ++s)
            if (m_slots[std::size_t(s)].state == SlotState::Free)
                slot = s;
    }
    if (slot >= 0) {
        start(slot, request);
        return;
    }
    for (Request &waiting : m_pending) {
        if (waiting.mediaId == mediaId) {
            waiting = request;
            return;
        }
    }
    bool releasing = false;
    for (const Slot &s : m_slots)
        releasing = releasing || s.state == SlotState::Releasing;
    if (!releasing) {
        qWarning("FramePipeline: overlay video slots full (max 4)");
        return;
    }
    if (m_pending.size() >= kMaxPending) {
        const Request dropped = m_pending.takeFirst();
        ++m_droppedRequests;
        if (shouldLog(m_droppedRequests, 5, 100))
            qWarning().noquote() << "FramePipeline: overlay video request for id" << dropped.mediaId
                                 << "dropped; waiting requests" << kMaxPending << "dropped in all"
                                 << m_droppedRequests;
    }
    m_pending.append(request);
}

void OverlaySlots::start(int slot, const Request &request)
{
    Slot &s = m_slots[std::size_t(slot)];
    const bool reused = s.state == SlotState::Playing && s.mediaId == request.mediaId;
    s.state = SlotState::Playing;
    s.mediaId = request.mediaId;
    s.decoder->setTargetSize(request.targetSize);
    s.decoder->setLoop(request.loop);
    s.generation = s.decoder->setSource(request.source);
    m_switcher.setOverlaySlotMedia(slot, request.mediaId);
    if (!reused)
        emit assigned(request.mediaId, slot);
}

void OverlaySlots::stop(int mediaId)
{
    m_pending.removeIf([mediaId](const Request &r) { return r.mediaId == mediaId; });
    const int slot = slotOf(mediaId);
    if (slot < 0)
        return;
    Slot &s = m_slots[std::size_t(slot)];
    s.state = SlotState::Releasing;
    // The slot is free once the decoder reports the end of this (empty) generation, which comes
    // after the old video's run has released everything.
    s.generation = s.decoder->setSource({});
    // Its pictures leave the program at once, though the slot is free only once the run ended.
    m_switcher.setOverlaySlotMedia(slot, -1);
}

void OverlaySlots::setTargetSize(int mediaId, QSize targetSize)
{
    const int slot = slotOf(mediaId);
    if (slot >= 0)
        m_slots[std::size_t(slot)].decoder->setTargetSize(targetSize);
    for (Request &waiting : m_pending)
        if (waiting.mediaId == mediaId)
            waiting.targetSize = targetSize;
}

void OverlaySlots::onRunEnded(int slot, quint64 generation)
{
    Slot &s = m_slots[std::size_t(slot)];
    if (s.state != SlotState::Releasing || generation != s.generation)
        return; // an earlier run, or the slot serves a newer request already
    const int mediaId = std::exchange(s.mediaId, -1);
    s.state = SlotState::Free;
    emit released(mediaId, slot);
    if (!m_pending.isEmpty())
        start(slot, m_pending.takeFirst());
}

} // namespace selvane
