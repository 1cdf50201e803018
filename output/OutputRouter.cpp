#include "output/OutputRouter.h"

#include "media/FrameSizes.h"
#include "media/ReconnectPolicy.h"
#include "media/ThreadName.h"
#include "output/FfmpegEncoderSink.h"
#include "output/StreamUrl.h"

#include <QDebug>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <cmath>

namespace {

// The worker wakes for every picture; sound waits for the next picture (a frame at most) unless
// this many chunks of it (10 ms each) are queued, so a steady show wakes it once a frame.
constexpr std::size_t kAudioChunksPerWake = 4;
// The longest the worker sleeps when nothing wakes it.
constexpr auto kWorkerWait = std::chrono::milliseconds(100);

} // namespace

OutputRouter::EncodeWorkerState::~EncodeWorkerState() = default;

OutputRouter::OutputRouter() = default;

OutputRouter::~OutputRouter()
{
    stop();
}

int OutputRouter::queueDepthFor(QSize size, bool live)
{
    if (live)
        return 4; // a live stream must stay current: a short queue
    const qint64 pixels = selvane::frames::pixelsOf(size.width(), size.height());
    if (pixels < selvane::frames::kPixels4K)
        return 32;
    if (pixels < selvane::frames::kPixels8K)
        return 8;
    return 3;
}

bool OutputRouter::start()
{
    stop();
    auto state = std::make_shared<EncodeWorkerState>();
    state->audio.reserve(kMaxQueuedAudioChunks);
    state->spare.reserve(kMaxQueuedAudioChunks);
    state->settings = m_settings;
    state->size = m_size;
    state->sink = std::make_unique<FfmpegEncoderSink>();
    state->sink->setClock(m_now);
    state->sink->setOutputSize(m_size.width(), m_size.height());
    if (!state->sink->probe(m_settings, m_size.width(), m_size.height())) {
        qWarning().noquote() << "OutputRouter: selected encoder does not support"
                             << QStringLiteral("%1x%2@%3 mode %4")
                                    .arg(m_size.width())
                                    .arg(m_size.height())
                                    .arg(m_settings.fps)
                                    .arg(m_settings.encoderMode);
        return false;
    }
    if (m_settings.fileEnabled && !m_settings.filePath.trimmed().isEmpty()) {
        // The same checks as before a run, whichever face starts the outputs; a folder that
        // does not exist yet is made here.
        const QString path = m_settings.filePath.trimmed();
        QDir().mkpath(QFileInfo(path).absolutePath());
        if (selvane::recordingProblem(path) != selvane::OutputProblem::None) {
            qWarning().noquote() << "OutputRouter: the recording cannot be written:" << path;
            return false;
        }
    }
    state->live = !m_settings.streamTargets.isEmpty();
    if (m_sourceFps > m_settings.fps + 0.01)
        state->keepFps = m_settings.fps;
    state->depth = queueDepthFor(m_size, state->live);
    qInfo().noquote() << "OutputRouter: encode queue depth" << state->depth << "for"
                      << (state->live ? "live output" : "file recording");
    // The callbacks capture nothing of the router, so late reports after a stop are harmless.
    state->status = m_status;
    state->failure = m_failure;
    state->sink->setStatusCallback(
        [weak = std::weak_ptr<EncodeWorkerState>(state)](int index, const QString &word) {
            if (auto s = weak.lock(); s && s->status)
                s->status(index, word);
        });
    state->running = true;
    {
        std::lock_guard lock(m_stateMutex);
        m_state = state;
    }
    m_worker = std::thread(encodeWorker, state);
    return true;
}

namespace {
std::atomic<qint64> g_stallUntilNs{0};

qint64 steadyNs()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}
} // namespace

void OutputRouter::injectEncoderStall(int milliseconds)
{
    g_stallUntilNs.store(steadyNs() + qint64(milliseconds) * 1000000);
}

void OutputRouter::encodeWorker(std::shared_ptr<EncodeWorkerState> state)
{
    selvane::nameThisThread("encode");
    FfmpegEncoderSink &sink = *state->sink;
    if (!sink.open(state->settings)) {
        if (!state->failureReported.exchange(true) && state->failure)
            state->failure(Failure::OpenFailed, "no output could be opened");
        std::unique_lock lock(state->mutex);
        state->wake.wait(lock, [&] { return state->stop; });
        state->frames.clear();
        return;
    }
    state->sinkOpen.store(true);
    std::vector<AudioChunk> audio;
    audio.reserve(kMaxQueuedAudioChunks);
    for (;;) {
        while (steadyNs() < g_stallUntilNs.load()) {
            {
                std::lock_guard lock(state->mutex);
                if (state->stop)
                    break;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        std::unique_lock lock(state->mutex);
        state->wake.wait_for(lock, kWorkerWait, [&] {
            return state->stop || !state->frames.empty() ||
                   state->audio.size() >= kAudioChunksPerWake;
        });
        // Swapped with the worker's own list: neither allocates once both have their capacity.
        audio.swap(state->audio);
        std::pair<FrameTokenPtr, qint64> frame;
        const bool haveFrame = !state->frames.empty();
        if (haveFrame) {
            frame = std::move(state->frames.front());
            state->frames.pop_front();
        }
        // What is queued when the stop comes is still encoded: a clean stop loses nothing.
        const bool stopping = state->stop && state->frames.empty() && audio.empty() && !haveFrame;
        lock.unlock();
        if (stopping)
            break;
        for (AudioChunk &chunk : audio)
            sink.pushAudio(chunk.samples.data(), int(chunk.samples.size() / 2), chunk.ptsUs);
        if (!audio.empty()) {
            std::lock_guard spareLock(state->mutex);
            for (AudioChunk &chunk : audio)
                if (state->spare.size() < kMaxQueuedAudioChunks)
                    state->spare.push_back(std::move(chunk.samples));
            audio.clear();
        }
        if (haveFrame)
            sink.pushVideoFrame(std::move(frame.first), frame.second);
    }
    sink.close();
    state->sinkOpen.store(false);
}

void OutputRouter::enqueueFrame(FrameTokenPtr frame, qint64 ptsUs)
{
    const std::shared_ptr<EncodeWorkerState> state = currentState();
    if (!state || !frame)
        return;
    qint64 dropped = 0;
    bool live = false;
    {
        std::lock_guard lock(state->mutex);
        if (!state->running || state->stop)
            return;
        if (state->keepFps > 0) {
            // A profile of a lower rate takes the first picture of each of its own slots.
            const auto slot = qint64(std::floor(double(ptsUs) * state->keepFps / 1e6 + 1e-3));
            if (slot == state->lastSlot)
                return;
            state->lastSlot = slot;
        }
        if (int(state->frames.size()) >= state->depth) {
            // Live output drops the oldest picture so the stream stays current; a recording
            // keeps what it has and drops the newest queued one.
            if (state->live)
                state->frames.pop_front();
            else
                state->frames.pop_back();
            dropped = ++state->droppedFrames;
            live = state->live;
        }
        ++state->sequence;
        state->frames.emplace_back(std::move(frame), ptsUs);
    }
    state->wake.notify_one();
    if (dropped > 0 && selvane::reconnect::shouldLog(dropped, 5, 120))
        qWarning().noquote() << "OutputRouter: encode queue overloaded; dropped frame count"
                             << dropped << "live=" << (live ? "true" : "false");
}

void OutputRouter::pushAudio(const std::int16_t *samples, int frames, qint64 ptsUs)
{
    const std::shared_ptr<EncodeWorkerState> state = currentState();
    if (!state || frames <= 0)
        return;
    qint64 dropped = 0;
    bool wake = false;
    {
        std::lock_guard lock(state->mutex);
        if (!state->running || state->stop)
            return;
        std::vector<std::int16_t> buffer;
        if (state->audio.size() >= kMaxQueuedAudioChunks) {
            // The newest sound is what the outputs need next; the oldest chunk gives way.
            buffer = std::move(state->audio.front().samples);
            state->audio.erase(state->audio.begin());
            dropped = ++state->droppedAudioChunks;
        } else if (!state->spare.empty()) {
            buffer = std::move(state->spare.back());
            state->spare.pop_back();
        }
        buffer.assign(samples, samples + std::size_t(frames) * 2);
        state->audio.push_back({std::move(buffer), ptsUs});
        wake = state->audio.size() == kAudioChunksPerWake;
    }
    if (wake)
        state->wake.notify_one();
    if (dropped > 0 && selvane::shouldLog(dropped, 5, 100))
        qWarning().noquote() << "OutputRouter: program audio queue full; dropped chunk count"
                             << dropped;
}

void OutputRouter::stop()
{
    const std::shared_ptr<EncodeWorkerState> state = currentState();
    if (!m_worker.joinable() || !state)
        return;
    QElapsedTimer timer;
    timer.start();
    {
        std::lock_guard lock(state->mutex);
        state->stop = true;
    }
    state->wake.notify_all();
    m_worker.join();
    {
        std::lock_guard lock(state->mutex);
        state->running = false;
    }
    qInfo().noquote() << "OutputRouter: encode worker stopped in" << timer.elapsed() << "ms";
}

bool OutputRouter::isRunning() const
{
    const std::shared_ptr<EncodeWorkerState> state = currentState();
    if (!state)
        return false;
    std::lock_guard lock(state->mutex);
    return state->running && !state->stop;
}

int OutputRouter::queueDepth() const
{
    const std::shared_ptr<EncodeWorkerState> state = currentState();
    return state ? state->depth : 0;
}

std::shared_ptr<OutputRouter::EncodeWorkerState> OutputRouter::currentState() const
{
    std::lock_guard lock(m_stateMutex);
    return m_state;
}

qint64 OutputRouter::droppedFrames() const
{
    const std::shared_ptr<EncodeWorkerState> state = currentState();
    if (!state)
        return 0;
    std::lock_guard lock(state->mutex);
    return state->droppedFrames;
}

qint64 OutputRouter::droppedAudioChunks() const
{
    const std::shared_ptr<EncodeWorkerState> state = currentState();
    if (!state)
        return 0;
    std::lock_guard lock(state->mutex);
    return state->droppedAudioChunks;
}

qint64 OutputRouter::bytesEncoded() const
{
    const std::shared_ptr<EncodeWorkerState> state = currentState();
    return state && state->sink ? state->sink->bytesEncoded() : 0;
}

qint64 OutputRouter::framesEncoded() const
{
    const std::shared_ptr<EncodeWorkerState> state = currentState();
    return state && state->sink ? state->sink->framesEncoded() : 0;
}

bool OutputRouter::isSinkOpen() const
{
    const std::shared_ptr<EncodeWorkerState> state = currentState();
    return state && state->sinkOpen.load();
}

QString OutputRouter::encoderName() const
{
    const std::shared_ptr<EncodeWorkerState> state = currentState();
    return state && state->sink ? state->sink->encoderName() : QString();
}

qint64 OutputRouter::currentKbps() const
{
    const std::shared_ptr<EncodeWorkerState> state = currentState();
    return state && state->sink ? state->sink->currentKbps() : 0;
}

qint64 OutputRouter::setKbps() const
{
    const std::shared_ptr<EncodeWorkerState> state = currentState();
    return state && state->sink ? state->sink->setKbps() : 0;
}

int OutputRouter::bitrateSteps() const
{
    const std::shared_ptr<EncodeWorkerState> state = currentState();
    return state && state->sink ? state->sink->bitrateSteps() : 0;
}

bool OutputRouter::reconnectTargetNow(int index)
{
    const std::shared_ptr<EncodeWorkerState> state = currentState();
    return state && state->sink && state->sinkOpen.load() && state->sink->reconnectTargetNow(index);
}

std::vector<FfmpegEncoderSink::OutputStats> OutputRouter::destinationStats() const
{
    const std::shared_ptr<EncodeWorkerState> state = currentState();
    if (!state || !state->sink)
        return {};
    return state->sink->outputStats();
}
