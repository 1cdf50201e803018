#include "engine/OverlaySlots.h"

#include "engine/ProgramSwitcher.h"
#include "input/FFmpegVideoDecoder.h"
#include "media/AudioInputs.h"
#include "media/LogThrottle.h"

#include <QDebug>

namespace selvane {

OverlaySlots::OverlaySlots(const FramePool &pool, AudioInputs &audio, ProgramSwitcher &switcher,
                           QObject *parent)
    : QObject(parent), m_audio(audio), m_switcher(switcher)
{
    for (int s = 0; s < kOverlayVideoSlots; ++s) {
        Slot &slot = m_slots[std::size_t(s)];
        slot.decoder = std::make_unique<FFmpegVideoDecoder>();
        FFmpegVideoDecoder *decoder = slot.decoder.get();
        decoder->setFramePool(pool);
        decoder->setFrameSink([this, s](FrameTokenPtr frame) {
            const int mediaId = m_slots[std::size_t(s)].mediaId.load();
            if (mediaId < 0)
                return;
            m_switcher.submitOverlayPicture(mediaId, frame);
            if (m_previews.store(s, std::move(frame)))
                QMetaObject::invokeMethod(this, &OverlaySlots::flushPreviews, Qt::QueuedConnection);
        });
        SampleQueue &queue = audio.overlaySlot(s);
        decoder->setAudioSink(
            [&queue](const std::int16_t *samples, int frames) { queue.push(samples, frames); });
        connect(decoder, &FFmpegVideoDecoder::runEnded, this,
                [this, s](quint64 generation) { onRunEnded(s, generation); });
        connect(decoder, &FFmpegVideoDecoder::decodeError, this,
                [this, s](SourceError code, const QString &detail, quint64 generation) {
                    const Slot &slot = m_slots[std::size_t(s)];
                    if (generation != slot.generation || slot.state != SlotState::Playing)
                        return;
                    const QString text =
                        sourceErrorLogText(code) + (detail.isEmpty() ? QString() : ": " + detail);
                    qWarning().noquote() << "Overlay slot" << s << "decoder:" << text;
                    emit error(slot.mediaId.load(), code, detail);
                });
        connect(decoder, &FFmpegVideoDecoder::playbackEndedNaturally, this,
                [this, s](quint64 generation) {
                    const Slot &slot = m_slots[std::size_t(s)];
                    if (generation == slot.generation && slot.state == SlotState::Playing)
                        emit ended(slot.mediaId.load());
                });
    }
}

OverlaySlots::~OverlaySlots()
{
    for (Slot &slot : m_slots) {
        slot.decoder->setFrameSink(nullptr);
        slot.decoder->setAudioSink(nullptr);
        slot.decoder->stop();
    }
}

int OverlaySlots::slotOf(int mediaId) const
{
    for (int s = 0; s < kOverlayVideoSlots; ++s)
        if (m_slots[std::size_t(s)].state == SlotState::Playing &&
            m_slots[std::size_t(s)].mediaId.load() == mediaId)
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

void OverlaySlots::play(int mediaId, const QString &path, QSize targetSize, bool loop)
{
    if (mediaId < 0 || path.isEmpty())
        return;
    const Request request{mediaId, path, targetSize, loop};
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
    const bool reused = s.state == SlotState::Playing && s.mediaId.load() == request.mediaId;
    s.state = SlotState::Playing;
    s.mediaId.store(request.mediaId);
    s.decoder->setTargetSize(request.targetSize);
    s.decoder->setLoop(request.loop);
    s.generation = s.decoder->setSource(request.path);
    m_audio.overlaySlot(slot).clear();
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
    s.generation = s.decoder->setSource(QString());
    m_previews.clear(slot);
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
    const int mediaId = s.mediaId.exchange(-1);
    s.state = SlotState::Free;
    m_audio.overlaySlot(slot).clear();
    m_switcher.forgetOverlayPicture(mediaId);
    emit released(mediaId, slot);
    if (!m_pending.isEmpty())
        start(slot, m_pending.takeFirst());
}

void OverlaySlots::flushPreviews()
{
    const auto frames = m_previews.take();
    for (int s = 0; s < kOverlayVideoSlots; ++s) {
        const FrameTokenPtr &frame = frames[std::size_t(s)];
        const Slot &slot = m_slots[std::size_t(s)];
        if (frame && slot.state == SlotState::Playing)
            emit preview(slot.mediaId.load(), frame);
    }
}

} // namespace selvane
