#pragma once

// Turns one source address into pictures and audio at the pace of the source.
//
// Ownership and threads: the decoder owns one worker thread per source (plus, for a live capture
// device, a packet-reader thread, and for a separate or Linux device microphone, a microphone
// thread). The GUI thread calls setSource/stop/pause/resume/seek/setters; they only write shared
// fields (strings under a mutex, the rest atomics) that the worker reads at the top of its loop.
// Pictures are converted to RGBA straight into tokens of the pool it is given and handed to the
// frame sink on the worker thread; audio is resampled to 48 kHz stereo s16 and handed to the
// audio sink on the worker (or microphone) thread. Signals are emitted from the worker thread
// (receivers get them queued), except playbackEndedNaturally, which is posted to the decoder's
// own thread.

#include "compose/FramePool.h"

#include <QMutex>
#include <QObject>
#include <QSize>
#include <QString>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>

class FFmpegVideoDecoder : public QObject
{
    Q_OBJECT

public:
    using FrameSink = std::function<void(FrameTokenPtr)>;
    // Interleaved stereo signed 16-bit samples at 48000 Hz; `frames` sample pairs.
    using AudioSink = std::function<void(const std::int16_t *samples, int frames)>;

    explicit FFmpegVideoDecoder(QObject *parent = nullptr);
    ~FFmpegVideoDecoder() override;

    // Installed by the owner. Frame sink and audio sink may be replaced at any time (thread-safe;
    // an empty sink disconnects); the pool before setSource.
    void setFramePool(const FramePool &pool);
    void setFrameSink(FrameSink sink);
    void setAudioSink(AudioSink sink);
    // Pictures are scaled to fit inside this size keeping their aspect ratio; an empty size
    // keeps the display size of the source.
    void setTargetSize(QSize size);

    // Stores the address and (re)starts the worker; a running worker is stopped and joined first.
    void setSource(const QString &source);
    void setAudioSource(const QString &audioSource);
    QString source() const;
    // Asks the worker to stop without waiting.
    void requestStop();
    // Stops and joins the worker (and its helper threads).
    void stop();
    // Stops and joins only if the source of this generation is still the current one: a
    // teardown that arrives after a newer setSource leaves the newer run alone.
    void stopGeneration(quint64 generation);

    void pause();
    void resume();
    bool isPaused() const { return !m_playing.load(); }
    void seek(qint64 positionMs);
    void setLoop(bool loop) { m_loop.store(loop); }
    bool loop() const { return m_loop.load(); }
    void requestFlush() { m_flushRequest.store(true); }

    quint64 generation() const { return m_generation.load(); }
    qint64 durationMs() const { return m_durationMs.load(); }
    bool isLive() const { return m_live.load(); }
    bool hasEnded() const { return m_ended.load(); }
    bool isRunning() const { return m_running.load(); }

    // Counters since the last setSource.
    qint64 framesDelivered() const { return m_framesDelivered.load(); }
    qint64 framesDropped() const { return m_framesDropped.load(); }

signals:
    void decodeError(QString message);
    void sourceVideoInfoChanged(int codedWidth, int codedHeight, int displayWidth,
                                int displayHeight, quint64 generation);
    void playbackEndedNaturally();

private:
    friend class DecodeRun;
    void threadFunc();
    void microphoneThreadFunc(QString addressOrName, bool bareName);
    void startWorker();
    void joinWorker();
    void deliverFrame(FrameTokenPtr frame);
    void deliverAudio(const std::int16_t *samples, int frames);
    void reportError(const QString &message);
    void postEndedNaturally();

    mutable QMutex m_sourceMutex;
    QString m_source;
    QString m_audioSource;

    // Serialises setSource/stop between the GUI thread and teardown tasks on the thread pool.
    std::mutex m_lifecycleMutex;
    std::thread m_worker;
    std::thread m_microphone;
    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_running{false};

    std::atomic<bool> m_playing{true};
    std::atomic<bool> m_resumed{false};
    std::atomic<qint64> m_seekRequestMs{-1};
    std::atomic<bool> m_seekFlag{false};
    std::atomic<bool> m_loop{false};
    std::atomic<bool> m_ended{false};
    std::atomic<bool> m_flushRequest{false};
    std::atomic<qint64> m_durationMs{0};
    std::atomic<bool> m_live{false};
    std::atomic<quint64> m_generation{0};
    std::atomic<qint64> m_framesDelivered{0};
    std::atomic<qint64> m_framesDropped{0};

    // The current run's packet queue is guarded by these when a reader thread fills it; stop()
    // wakes both sides.
    std::mutex m_queueMutex;
    std::condition_variable m_queueCv;

    std::mutex m_sinkMutex;
    FrameSink m_frameSink;
    AudioSink m_audioSink;
    FramePool m_pool{6, 1920, 1080};
    std::atomic<int> m_targetWidth{0};
    std::atomic<int> m_targetHeight{0};
};
