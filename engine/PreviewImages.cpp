#include "engine/PreviewImages.h"

#include "media/FrameConvert.h"
#include "media/PlaneShrink.h"
#include "media/SteadyClock.h"
#include "media/ThreadName.h"

#include <QMetaObject>
#include <algorithm>

namespace selvane {

struct PreviewImages::Stream
{
    QSize size;
    Fit fit = Fit::Scale;
    ShrunkPlanes shrunk; // the worker's own
    qint64 minGapUs = 0;
    qint64 lastQueuedUs = -1;
    FrameTokenPtr waiting;
    bool posted = false;   // a ready() is on its way and the image not yet taken
    QImage finished;       // guarded by the mutex
    QImage work[3];        // the worker's own; one the face no longer holds is reused
    ffsupport::SwsPtr sws; // the worker's own
};

PreviewImages::PreviewImages(QObject *parent) : QObject(parent)
{
    m_worker = std::thread([this] { run(); });
}

PreviewImages::~PreviewImages()
{
    {
        std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_wake.notify_all();
    m_worker.join();
}

void PreviewImages::setSize(int stream, QSize size, int maxPerSecond, Fit fit)
{
    std::lock_guard lock(m_mutex);
    std::unique_ptr<Stream> &s = m_streams[stream];
    if (!s)
        s = std::make_unique<Stream>();
    s->size = size;
    s->fit = fit;
    s->minGapUs = maxPerSecond > 0 ? 1000000 / maxPerSecond : 0;
    if (size.isEmpty())
        s->waiting.reset();
}

void PreviewImages::submit(int stream, FrameTokenPtr frame)
{
    if (!frame)
        return;
    {
        std::lock_guard lock(m_mutex);
        const auto it = m_streams.find(stream);
        if (it == m_streams.end() || it->second->size.isEmpty())
            return;
        Stream &s = *it->second;
        const qint64 now = std::chrono::duration_cast<std::chrono::microseconds>(
                               SteadyClock::now().time_since_epoch())
                               .count();
        if (s.minGapUs > 0 && s.lastQueuedUs >= 0 && now - s.lastQueuedUs < s.minGapUs)
            return;
        s.lastQueuedUs = now;
        if (s.waiting)
            m_dropped.fetch_add(1);
        s.waiting = std::move(frame);
    }
    m_wake.notify_one();
}

QImage PreviewImages::take(int stream)
{
    std::lock_guard lock(m_mutex);
    const auto it = m_streams.find(stream);
    if (it == m_streams.end())
        return {};
    it->second->posted = false;
    m_wake.notify_one();
    return std::exchange(it->second->finished, QImage());
}

void PreviewImages::run()
{
    nameThisThread("preview");
    std::unique_lock lock(m_mutex);
    for (;;) {
        Stream *next = nullptr;
        int nextId = 0;
        m_wake.wait(lock, [&] {
            if (m_stop)
                return true;
            for (auto &[id, stream] : m_streams) {
                if (stream->waiting && !stream->posted) {
                    next = stream.get();
                    nextId = id;
                    return true;
                }
            }
            return false;
        });
        if (m_stop)
            return;
        FrameTokenPtr frame = std::move(next->waiting);
        const QSize size = next->size;
        const Fit fit = next->fit;
        lock.unlock();
        QImage *out = &next->work[0];
        for (QImage &candidate : next->work) {
            if (candidate.isNull() || candidate.isDetached()) {
                out = &candidate;
                break;
            }
        }
        bool ok = false;
        if (fit == Fit::WholeSteps && frame->isI420()) {
            const int factor =
                std::max({1, (frame->width + size.width() - 1) / std::max(1, size.width()),
                          (frame->height + size.height() - 1) / std::max(1, size.height())});
            ok = shrinkToImage(next->sws, next->shrunk, *frame, factor, *out);
        } else {
            // Keep the aspect: the image fits inside the wanted size.
            const QSize fitted =
                QSize(frame->width, frame->height).scaled(size, Qt::KeepAspectRatio) / 2 * 2;
            ok = !fitted.isEmpty() && scaleToImage(next->sws, *frame, fitted, *out);
        }
        frame.reset();
        lock.lock();
        if (!ok)
            continue;
        next->finished = *out; // shared until the face lets go of it
        m_made.fetch_add(1);
        if (!next->posted) {
            next->posted = true;
            QMetaObject::invokeMethod(
                this, [this, nextId] { emit ready(nextId); }, Qt::QueuedConnection);
        }
    }
}

} // namespace selvane
