#include "input/FFmpegVideoDecoder.h"

#include "input/DecodeRun.h"
#include "input/MicrophoneRun.h"

#include <QDebug>
#include <QUrl>
#include <chrono>

using namespace selvane;

// The decoder's side of one run: forwards the run's reports, and tells it when it is over.
class FFmpegVideoDecoder::Run : public DecodeHost
{
public:
    Run(FFmpegVideoDecoder &decoder, quint64 generation)
        : m_decoder(decoder), m_generation(generation)
    {
    }

    bool cancelled() const override { return m_over.load() || !m_decoder.isCurrent(m_generation); }
    // The main source's run is over: helpers (a microphone) end with it.
    void finish() { m_over.store(true); }

    FrameWriter acquireFrame() override
    {
        std::lock_guard lock(m_decoder.m_sinkMutex);
        return m_decoder.m_pool.acquire();
    }

    void deliverFrame(FrameTokenPtr frame) override
    {
        {
            std::lock_guard lock(m_decoder.m_sinkMutex);
            if (!m_decoder.isCurrent(m_generation))
                return;
            m_decoder.m_framesDelivered.fetch_add(1);
            if (m_decoder.m_frameSink)
                m_decoder.m_frameSink(std::move(frame));
        }
        const State now = m_decoder.state();
        if (now == State::Opening || now == State::Ended)
            m_decoder.setState(State::Playing, m_generation);
    }

    void deliverAudio(const std::int16_t *samples, int frames) override
    {
        std::lock_guard lock(m_decoder.m_sinkMutex);
        if (m_decoder.isCurrent(m_generation) && m_decoder.m_audioSink)
            m_decoder.m_audioSink(samples, frames);
    }

    void opened(qint64 durationMs, bool live) override
    {
        m_decoder.m_durationMs.store(durationMs);
        m_decoder.m_live.store(live);
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
        if (error == SourceError::ReadFailed)
            qWarning().noquote() << "FFmpegVideoDecoder: read ended:" << detail;
        m_decoder.m_lastError.store(int(error));
        // A separate microphone that fails leaves the pictures playing.
        const bool microphone =
            error >= SourceError::MicAddressInvalid && error <= SourceError::MicDecoderFailed;
        if (!microphone)
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

private:
    FFmpegVideoDecoder &m_decoder;
    const quint64 m_generation;
    std::atomic<bool> m_over{false};
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
    if (m_worker.joinable())
        m_worker.join();
}

void FFmpegVideoDecoder::setFramePool(const FramePool &pool)
{
    std::lock_guard lock(m_sinkMutex);
    m_pool = pool;
}

void FFmpegVideoDecoder::setFrameSink(FrameSink sink)
{
    std::lock_guard lock(m_sinkMutex);
    m_frameSink = std::move(sink);
}

void FFmpegVideoDecoder::setAudioSink(AudioSink sink)
{
    std::lock_guard lock(m_sinkMutex);
    m_audioSink = std::move(sink);
}

void FFmpegVideoDecoder::setTargetSize(QSize size)
{
    m_controls->targetWidth.store(size.isValid() ? size.width() : 0);
    m_controls->targetHeight.store(size.isValid() ? size.height() : 0);
}

quint64 FFmpegVideoDecoder::setSource(const QString &source, const QString &audioSource)
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
        m_durationMs.store(0);
        m_live.store(false);
        m_lastError.store(int(SourceError::None));
        m_controls->seekFlag.store(false);
        m_controls->seekRequestMs.store(-1);
        m_state.store(int(source.isEmpty() ? State::Idle : State::Opening));
    }
    m_wake.notify_all();
    return generation;
}

QString FFmpegVideoDecoder::source() const
{
    std::lock_guard lock(m_controlMutex);
    return m_source;
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
}

void FFmpegVideoDecoder::workerLoop()
{
    quint64 done = 0;
    for (;;) {
        QString source;
        QString audioSource;
        quint64 generation = 0;
        {
            std::unique_lock lock(m_controlMutex);
            m_wake.wait(lock, [&] { return m_shutdown || m_generation.load() != done; });
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
        }
        emit runEnded(generation);
    }
}

void FFmpegVideoDecoder::runSource(const QString &source, const QString &audioSource,
                                   quint64 generation)
{
    Run host(*this, generation);
    std::thread microphone;
    if (!audioSource.isEmpty())
        microphone = std::thread([&host, audioSource] { runMicrophone(audioSource, false, host); });

    const QString scheme = QUrl(source, QUrl::TolerantMode).scheme().toLower();
    if (scheme == "desktop" || scheme == "wgc") {
        host.failed(SourceError::CaptureUnavailable, scheme + "://");
    } else {
        DecodeRun run(*m_controls, host);
        if (run.open(source, !audioSource.isEmpty())) {
            if (!run.deviceMicrophone().isEmpty() && !microphone.joinable()) {
                const QString name = run.deviceMicrophone();
                microphone = std::thread([&host, name] { runMicrophone(name, true, host); });
            }
            run.decodeLoop();
        }
    }
    host.finish();
    if (microphone.joinable())
        microphone.join();
}
