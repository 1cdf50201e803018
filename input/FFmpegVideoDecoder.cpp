#include "input/FFmpegVideoDecoder.h"

#include "input/DecodeRun.h"
#include "input/MicrophoneRun.h"
#include "input/NativeCaptureRun.h"
#include "input/ScreenCapture.h"
#include "input/SourceAddress.h"
#include "media/Heap.h"
#include "media/LogThrottle.h"
#include "media/ReconnectPolicy.h"
#include "media/SourceFeeds.h"
#include "media/ThreadName.h"

#include <QDebug>
#include <algorithm>
#include <chrono>
#include <cmath>

using namespace selvane;

namespace {
constexpr int kFileQueueDepth = 6;
// At least this many pictures of a live source are queued, and as many as its rate brings in
// SourceFeed::kLiveQueueSpanUs, so that the longest jitter margin fits at any rate.
constexpr int kLiveQueueDepth = 45;
constexpr double kFastestCountedFps = 240.0;
constexpr auto kWindowWatchInterval = std::chrono::milliseconds(250);
// A decoder left without a source gives the heap back once the pictures it had out (the one on
// air, those in the encoder's queue) have had time to come back and be freed.
constexpr auto kHeapReleaseAfterIdle = std::chrono::seconds(1);
} // namespace

// The decoder's side of one run: forwards the run's reports, and tells it when it is over.
class FFmpegVideoDecoder::Run : public DecodeHost
{
public:
    // `retrying`: failures are part of reconnecting (no Failed state); `logFailure`: this
    // attempt's failure is reported (the decoder thins out the reports of a long outage).
    Run(FFmpegVideoDecoder &decoder, quint64 generation, bool retrying, bool logFailure)
        : m_decoder(decoder), m_generation(generation), m_retrying(retrying),
          m_logFailure(logFailure)
    {
    }
    bool delivered() const { return m_delivered.load(); }

    bool cancelled() const override
    {
        return m_over.load() || m_restart.load() || !m_decoder.isCurrent(m_generation);
    }
    // A window capture: the grab is opened again when the window changes size, and a grab that
    // ends because the window went away says so.
    void watchWindow(quint64 window, QSize size)
    {
        m_window = window;
        m_windowSize = size;
    }
    void restart() { m_restart.store(true); }
    bool restarting() const { return m_restart.load(); }
    // The main source's run is over: helpers (a microphone) end with it.
    void finish() { m_over.store(true); }

    FrameWriter acquireFrame() override
    {
        std::lock_guard lock(m_decoder.m_sinkMutex);
        return m_decoder.m_pool.acquire();
    }

    bool offerFrame(FrameTokenPtr &frame) override
    {
        bool taken = true;
        {
            std::lock_guard lock(m_decoder.m_sinkMutex);
            SourceFeed *feed = m_decoder.m_feed;
            if (!m_decoder.isCurrent(m_generation) || !feed)
                return true; // nobody wants it any more
            if (m_realTime.load())
                feed->frames().push(std::move(frame), true);
            else
                taken = feed->frames().tryPush(frame);
            if (taken)
                m_decoder.m_framesDelivered.fetch_add(1);
        }
        if (taken) {
            m_delivered.store(true);
            const State now = m_decoder.state();
            if (now == State::Opening || now == State::Ended || now == State::Reconnecting) {
                if (now == State::Reconnecting)
                    qInfo().noquote() << "FFmpegVideoDecoder: source back after"
                                      << m_decoder.m_reconnects.load() << "reconnects";
                m_decoder.setState(State::Playing, m_generation);
            }
        }
        return taken;
    }

    void waitForRoom(int ms) override
    {
        SourceFeed *feed = nullptr;
        {
            std::lock_guard lock(m_decoder.m_sinkMutex);
            feed = m_decoder.isCurrent(m_generation) ? m_decoder.m_feed : nullptr;
        }
        // The feed lives as long as the decoder: waiting outside the lock is safe.
        if (feed)
            feed->frames().waitForRoom(ms);
    }

    void discardQueued() override
    {
        std::lock_guard lock(m_decoder.m_sinkMutex);
        if (m_decoder.isCurrent(m_generation) && m_decoder.m_feed)
            m_decoder.m_feed->frames().clear();
    }

    void deliverAudio(const std::int16_t *samples, int frames, qint64 mediaUs,
                      quint64 timeline) override
    {
        std::lock_guard lock(m_decoder.m_sinkMutex);
        if (m_decoder.isCurrent(m_generation) && m_decoder.m_feed)
            m_decoder.m_feed->sound().push(samples, frames, mediaUs, timeline);
    }

    quint64 timeline() const override { return m_decoder.m_timeline.load(); }
    quint64 newTimeline() override { return m_decoder.m_timeline.fetch_add(1) + 1; }

    void deinterlacing() override
    {
        if (!cancelled())
            m_decoder.m_deinterlacing.store(true);
    }

    void opened(qint64 durationMs, bool live, bool realTime, double fps) override
    {
        m_decoder.m_durationMs.store(durationMs);
        m_decoder.m_live.store(live);
        m_realTime.store(realTime);
        std::lock_guard lock(m_decoder.m_sinkMutex);
        if (m_decoder.isCurrent(m_generation) && m_decoder.m_feed) {
            m_decoder.m_feed->setLive(realTime);
            // A file runs this far ahead of the program; a real-time source holds its jitter
            // margin, and so does a segmented stream (HLS, DASH): it is read ahead like a file,
            // but opening each segment and reloading the playlist stall its reads.
            const int spanDepth = int(std::ceil(std::min(fps, kFastestCountedFps) *
                                                double(SourceFeed::kLiveQueueSpanUs) / 1e6));
            m_decoder.m_feed->frames().setDepth(live ? std::max(kLiveQueueDepth, spanDepth)
                                                     : kFileQueueDepth);
        }
    }

    void videoInfo(QSize coded, QSize display) override
    {
        emit m_decoder.sourceVideoInfoChanged(coded.width(), coded.height(), display.width(),
                                              display.height(), m_generation);
    }

    void failed(SourceError error, const QString &detail) override
    {
        if (cancelled())
            return;
        if (m_window && error == SourceError::ReadFailed) {
            const std::optional<QSize> size = captureWindowSize(m_window);
            if (size && *size != m_windowSize) {
                m_restart.store(true);
                return;
            }
            if (!size)
                error = SourceError::CaptureWindowClosed;
        }
        if (error == SourceError::CaptureWindowClosed && m_windowClosedTold.exchange(true))
            return;
        m_decoder.m_lastError.store(int(error));
        if (!m_logFailure)
            return;
        if (error == SourceError::ReadFailed)
            qWarning().noquote() << "FFmpegVideoDecoder: read ended:" << detail;
        // A separate microphone that fails leaves the pictures playing; a stream being
        // reconnected is not failed.
        const bool microphone =
            error >= SourceError::MicAddressInvalid && error <= SourceError::MicDecoderFailed;
        if (!microphone && !m_retrying)
            m_decoder.setState(State::Failed, m_generation);
        emit m_decoder.decodeError(error, detail, m_generation);
    }

    void endedNaturally() override
    {
        m_decoder.setState(State::Ended, m_generation);
        emit m_decoder.playbackEndedNaturally(m_generation);
    }

    void pictureDropped() override
    {
        if (!cancelled())
            m_decoder.m_framesDropped.fetch_add(1);
    }

    std::atomic<qint64> &packetDropCounter() override { return m_decoder.m_packetsDropped; }
    std::atomic<qint64> &positionMs() override { return m_decoder.m_positionMs; }

private:
    FFmpegVideoDecoder &m_decoder;
    const quint64 m_generation;
    const bool m_retrying;
    const bool m_logFailure;
    std::atomic<bool> m_over{false};
    std::atomic<bool> m_restart{false};
    quint64 m_window = 0;
    QSize m_windowSize;
    std::atomic<bool> m_windowClosedTold{false};
    std::atomic<bool> m_delivered{false};
    std::atomic<bool> m_realTime{false}; // the queue drops its oldest instead of waiting
};

FFmpegVideoDecoder::FFmpegVideoDecoder(QObject *parent)
    : QObject(parent), m_controls(std::make_unique<DecoderControls>())
{
    qRegisterMetaType<selvane::SourceError>("selvane::SourceError");
    qRegisterMetaType<FFmpegVideoDecoder::State>("FFmpegVideoDecoder::State");
    m_worker = std::thread([this] { workerLoop(); });
}

FFmpegVideoDecoder::~FFmpegVideoDecoder()
{
    {
        std::lock_guard lock(m_controlMutex);
        m_shutdown = true;
        m_shuttingDown.store(true);
    }
    m_wake.notify_all();
    wakeWaitingPicture();
    if (m_worker.joinable())
        m_worker.join();
}

void FFmpegVideoDecoder::setFramePool(const FramePool &pool)
{
    std::lock_guard lock(m_sinkMutex);
    m_pool = pool;
}

void FFmpegVideoDecoder::setFeed(SourceFeed *feed)
{
    std::lock_guard lock(m_sinkMutex);
    m_feed = feed;
}

void FFmpegVideoDecoder::setTargetSize(QSize size)
{
    m_controls->targetWidth.store(size.isValid() ? size.width() : 0);
    m_controls->targetHeight.store(size.isValid() ? size.height() : 0);
}

quint64 FFmpegVideoDecoder::setSource(const Address &source, const Address &audioSource)
{
    quint64 generation = 0;
    {
        std::scoped_lock lock(m_controlMutex, m_sinkMutex);
        m_source = source;
        m_audioSource = audioSource;
        // Raised under the sink mutex: no delivery of the old run can follow this call.
        generation = m_generation.fetch_add(1) + 1;
        m_framesDelivered.store(0);
        m_framesDropped.store(0);
        m_packetsDropped.store(0);
        m_reconnects.store(0);
        m_durationMs.store(0);
        m_live.store(false);
        m_lastError.store(int(SourceError::None));
        m_controls->seekFlag.store(false);
        m_controls->seekRequestMs.store(-1);
        m_deinterlacing.store(false);
        // The new source starts a timeline of its own; what its feed still holds is stale.
        m_timeline.fetch_add(1);
        if (m_feed)
            m_feed->reset();
        m_state.store(int(source.isEmpty() ? State::Idle : State::Opening));
    }
    m_wake.notify_all();
    return generation;
}

bool FFmpegVideoDecoder::waitUntilIdle(int timeoutMs)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (m_running.load()) {
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

bool FFmpegVideoDecoder::isCurrent(quint64 generation) const
{
    return !m_shuttingDown.load() && m_generation.load() == generation;
}

FFmpegVideoDecoder::State FFmpegVideoDecoder::state() const
{
    const State s = State(m_state.load());
    if (s == State::Playing && !m_controls->playing.load())
        return State::Paused;
    return s;
}

void FFmpegVideoDecoder::setState(State state, quint64 generation)
{
    if (!isCurrent(generation))
        return;
    if (State(m_state.exchange(int(state))) != state)
        emit stateChanged(state, generation);
}

void FFmpegVideoDecoder::pause()
{
    m_controls->playing.store(false);
}

void FFmpegVideoDecoder::resume()
{
    if (!m_controls->playing.exchange(true))
        m_controls->resumed.store(true);
}

bool FFmpegVideoDecoder::isPaused() const
{
    return !m_controls->playing.load();
}

void FFmpegVideoDecoder::seek(qint64 positionMs)
{
    m_controls->seekRequestMs.store(std::max<qint64>(0, positionMs));
    if (m_controls->playing.load())
        m_controls->seekFlag.store(true);
    wakeWaitingPicture();
}

void FFmpegVideoDecoder::wakeWaitingPicture()
{
    std::lock_guard lock(m_sinkMutex);
    if (m_feed)
        m_feed->frames().wakeAll();
}

void FFmpegVideoDecoder::setLoop(bool loop)
{
    m_controls->loop.store(loop);
}
bool FFmpegVideoDecoder::loop() const
{
    return m_controls->loop.load();
}
void FFmpegVideoDecoder::requestFlush()
{
    m_controls->flushRequest.store(true);
    wakeWaitingPicture();
}

void FFmpegVideoDecoder::workerLoop()
{
    nameThisThread("decode");
    quint64 done = 0;
    bool heapToRelease = false;
    for (;;) {
        Address source;
        Address audioSource;
        quint64 generation = 0;
        {
            std::unique_lock lock(m_controlMutex);
            const auto wanted = [&] {
                return m_shutdown || m_generation.load() != done;
            };
            if (heapToRelease && !m_wake.wait_for(lock, kHeapReleaseAfterIdle, wanted)) {
                lock.unlock();
                releaseFreeHeap();
                lock.lock();
            }
            heapToRelease = false;
            m_wake.wait(lock, wanted);
            if (m_shutdown)
                return;
            generation = m_generation.load();
            source = m_source;
            audioSource = m_audioSource;
        }
        done = generation;
        if (!source.isEmpty()) {
            m_running.store(true);
            runSource(source, audioSource, generation);
            m_running.store(false);
        } else {
            // No source: the pictures the pool keeps for one are of no use, and neither are
            // those still out (on air, in the encoder's queue) once they come back.
            std::lock_guard lock(m_sinkMutex);
            m_pool.releaseFree();
            heapToRelease = true;
        }
        emit runEnded(generation);
    }
}

void FFmpegVideoDecoder::runSource(const Address &source, const Address &audioSource,
                                   quint64 generation)
{
    const bool network = source.isNetwork();
    qint64 attempt = 0; // of this outage: every outage is logged, its repeated failures thinned
    for (;;) {
        if (runOnce(source, audioSource, generation, network, shouldLog(attempt + 1, 3, 30)))
            attempt = 0;
        if (!network || !isCurrent(generation))
            return;
        setState(State::Reconnecting, generation);
        const qint64 lost = m_reconnects.fetch_add(1) + 1;
        const std::chrono::milliseconds wait(reconnect::inputAfterLossMs(int(attempt)));
        if (shouldLog(++attempt, 3, 30))
            qWarning().noquote() << "FFmpegVideoDecoder: source lost; opening it again in"
                                 << wait.count() << "ms (reconnect" << lost << ")";
        {
            std::unique_lock lock(m_controlMutex);
            m_wake.wait_for(lock, wait, [&] { return m_shutdown || !isCurrent(generation); });
        }
        if (!isCurrent(generation))
            return;
        // The program takes the source up again from its first new picture.
        m_timeline.fetch_add(1);
    }
}

bool FFmpegVideoDecoder::runOnce(const Address &source, const Address &audioSource,
                                 quint64 generation, bool retrying, bool logFailure)
{
    bool delivered = false;
    bool again = true;
    while (again)
        delivered |= runAttempt(source, audioSource, generation, retrying, logFailure, &again);
    return delivered;
}

bool FFmpegVideoDecoder::runAttempt(const Address &source, const Address &audioSource,
                                    quint64 generation, bool retrying, bool logFailure, bool *again)
{
    *again = false;
    Run host(*this, generation, retrying, logFailure);
    std::thread microphone;
    if (!audioSource.isEmpty())
        microphone =
            std::thread([&host, name = audioSource.microphone()] { runMicrophone(name, host); });

    // A captured window is watched: a new size opens the grab again, and a window that is gone
    // ends the source with its own message.
    std::thread windowWatch;
    std::optional<QSize> windowSize;
    const quint64 window = source.kind() == SourceKind::WindowCapture ? source.window() : 0;
    if (window && (windowSize = captureWindowSize(window))) {
        host.watchWindow(window, *windowSize);
        windowWatch = std::thread([&host, handle = window, size = *windowSize] {
            WindowSizeWatch watch(handle);
            while (!host.cancelled()) {
                std::this_thread::sleep_for(kWindowWatchInterval);
                const std::optional<QSize> now = watch.size();
                if (!now || *now != size) {
                    if (!now)
                        host.failed(SourceError::CaptureWindowClosed, {});
                    host.restart();
                }
            }
        });
    }

    // Windows captures through the system where it offers that, and through gdigrab where it
    // refuses (no desktop duplication under a remote session or Wine, no companion library).
    bool capturedNatively = false;
    if (NativeCaptureRun::offeredFor(source)) {
        NativeCaptureRun native(*m_controls, host);
        QString why;
        capturedNatively = native.run(source, &why) == NativeCaptureRun::Outcome::Ended;
        if (!capturedNatively)
            qInfo().noquote() << "FFmpegVideoDecoder: the system's capture refused" << source.text()
                              << "(" + why + "); capturing with gdigrab";
    }
    if (!capturedNatively) {
        DecodeRun run(*m_controls, host);
        if (run.open(source, !audioSource.isEmpty())) {
            if (!run.deviceMicrophone().isEmpty() && !microphone.joinable()) {
                const QString name = run.deviceMicrophone();
                microphone = std::thread([&host, name] { runMicrophone(name, host); });
            }
            run.decodeLoop();
        }
    }
    host.finish();
    if (microphone.joinable())
        microphone.join();
    if (windowWatch.joinable())
        windowWatch.join();
    const std::optional<QSize> nowSize = window ? captureWindowSize(window) : std::nullopt;
    if (nowSize && host.restarting() && isCurrent(generation)) {
        qInfo().noquote() << QStringLiteral("FFmpegVideoDecoder: captured window now %1x%2; "
                                            "grabbing it at that size")
                                 .arg(nowSize->width())
                                 .arg(nowSize->height());
        m_timeline.fetch_add(1); // the program takes the new size up from its first picture
        *again = true;
    }
    return host.delivered();
}
