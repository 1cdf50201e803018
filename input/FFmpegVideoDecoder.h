#pragma once

// Turns one source address into pictures and sound at the pace of the source.
//
// Ownership and threads: the decoder owns one worker thread for its whole life; each source is
// one run of that worker (DecodeRun), plus, for a live camera with its microphone, a packet
// reader, and for a separate or Linux device microphone, a microphone thread, both started and
// joined by the worker. No method blocks on a run: setSource() and stop() only record what is
// wanted and raise the generation, and the worker ends the old run (its blocking calls are
// interrupted) before it starts the next. Only the destructor joins the worker.
// Controls (pause, resume, seek, loop, target size, sinks) may be called from any thread.
//
// Pictures become I420 tokens of the pool it is given (copied as they are when they are 4:2:0
// already); they and the sound (resampled to 48 kHz stereo s16) go into the source feed it is
// given, stamped with the source's continuous time and timeline. A file's run waits when the
// feed's picture queue is full; a live source never waits. The feed never receives anything of
// a run that setSource() or stop() has already replaced.
//
// A network stream (RTMP, RTSP, SRT, HLS/HTTP, UDP ...) that cannot be opened, fails, or (when
// live) ends is opened again by the same worker, forever, after 0.5 s, 1 s, 2 s ... at most 10 s
// (back to 0.5 s once it delivered pictures); every attempt starts a new timeline. A file that
// ends is never opened again. A display or window is grabbed through x11grab (ScreenCapture);
// a captured window is watched by a thread of the run: a new size opens the grab again, and a
// window that goes away ends the source with CaptureWindowClosed.
//
// A decoder stopped, or given an empty source, frees the pictures its pool keeps, and those
// still out when they come back; a second later, still without a source, it has the C library
// give the freed heap back to the system (releaseFreeHeap).
//
// Signals are emitted from the worker thread (receivers get them queued) and carry the
// generation of the run they belong to, so that late reports of an old source can be ignored.

#include "input/SourceAddress.h"
#include "input/SourceError.h"
#include "media/FramePool.h"

#include <QObject>
#include <QSize>
#include <QString>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace selvane {
struct DecoderControls;
class SourceFeed;
} // namespace selvane

class FFmpegVideoDecoder : public QObject
{
    Q_OBJECT

public:
    enum class State
    {
        Idle,    // no source
        Opening, // connecting or probing
        Playing,
        Paused,
        Ended,        // a file reached its end without loop
        Failed,       // the source could not be opened, or stopped delivering
        Reconnecting, // a network stream is lost and being opened again
    };
    Q_ENUM(State)

    explicit FFmpegVideoDecoder(QObject *parent = nullptr);
    ~FFmpegVideoDecoder() override;

    // Installed by the owner before setSource: the pool pictures are taken from, and the feed
    // they and the sound go to (it must outlive the decoder's runs; null disconnects).
    void setFramePool(const FramePool &pool);
    void setFeed(selvane::SourceFeed *feed);
    // Pictures are scaled to fit inside this size keeping their aspect ratio; an empty size
    // keeps the display size of the source.
    void setTargetSize(QSize size);

    // Plays `source` (with the microphone of a separate audio address when `audioSource` is
    // given) from the next run on; an empty source stops. Returns the new generation at once.
    quint64 setSource(const selvane::SourceAddress &source,
                      const selvane::SourceAddress &audioSource = {});
    // Stops the current run without waiting.
    void stop() { setSource({}); }
    // Waits until the worker has no run (tests, shutdown); false on time-out.
    bool waitUntilIdle(int timeoutMs);

    void pause();
    void resume();
    bool isPaused() const;
    void seek(qint64 positionMs);
    void setLoop(bool loop);
    bool loop() const;
    void requestFlush();

    quint64 generation() const { return m_generation.load(); }
    State state() const;
    qint64 durationMs() const { return m_durationMs.load(); }
    // Position of the newest decoded picture (a little ahead of what is on air).
    qint64 positionMs() const { return m_positionMs.load(); }
    bool isLive() const { return m_live.load(); }
    bool hasEnded() const { return state() == State::Ended; }
    // True while a run is under way.
    bool isRunning() const { return m_running.load(); }
    selvane::SourceError lastError() const { return selvane::SourceError(m_lastError.load()); }

    // Interlaced pictures are being deinterlaced.
    bool isDeinterlacing() const { return m_deinterlacing.load(); }

    // Counters since the last setSource.
    qint64 framesDelivered() const { return m_framesDelivered.load(); }
    qint64 framesDropped() const { return m_framesDropped.load(); }
    // Packets dropped by the read-ahead queue or refused by the decoders.
    qint64 packetsDropped() const { return m_packetsDropped.load(); }
    // Times a network stream was lost and opened again.
    qint64 reconnects() const { return m_reconnects.load(); }

signals:
    void decodeError(selvane::SourceError error, QString detail, quint64 generation);
    void sourceVideoInfoChanged(int codedWidth, int codedHeight, int displayWidth,
                                int displayHeight, quint64 generation);
    void playbackEndedNaturally(quint64 generation);
    void stateChanged(FFmpegVideoDecoder::State state, quint64 generation);
    // The run of this generation has ended and released everything it held.
    void runEnded(quint64 generation);

private:
    // A picture waiting for room in the feed's queue notices a seek, a flush or the end at once.
    void wakeWaitingPicture();

    class Run;

    void workerLoop();
    using Address = selvane::SourceAddress;
    void runSource(const Address &source, const Address &audioSource, quint64 generation);
    // One attempt; true when it delivered pictures. `logFailure`: its failure is reported.
    bool runOnce(const Address &source, const Address &audioSource, quint64 generation,
                 bool retrying, bool logFailure);
    // One opening of the source; `again`: open it once more at once (a captured window's size
    // changed).
    bool runAttempt(const Address &source, const Address &audioSource, quint64 generation,
                    bool retrying, bool logFailure, bool *again);
    void setState(State state, quint64 generation);
    bool isCurrent(quint64 generation) const;

    std::unique_ptr<selvane::DecoderControls> m_controls;

    // What the operator wants; guarded by m_controlMutex, read by the worker.
    mutable std::mutex m_controlMutex;
    std::condition_variable m_wake;
    Address m_source;
    Address m_audioSource;
    bool m_shutdown = false;
    std::atomic<quint64> m_generation{0};
    std::atomic<bool> m_shuttingDown{false};

    std::atomic<bool> m_running{false};
    std::atomic<int> m_state{int(State::Idle)};
    std::atomic<int> m_lastError{int(selvane::SourceError::None)};
    std::atomic<qint64> m_durationMs{0};
    std::atomic<qint64> m_positionMs{0};
    std::atomic<bool> m_live{false};
    std::atomic<qint64> m_framesDelivered{0};
    std::atomic<qint64> m_framesDropped{0};
    std::atomic<qint64> m_packetsDropped{0};
    std::atomic<qint64> m_reconnects{0};
    std::atomic<bool> m_deinterlacing{false};
    // The source's timelines: a new one for every run, seek and resume.
    std::atomic<quint64> m_timeline{0};

    // The feed and the pool; the sink mutex also orders deliveries against setSource().
    std::mutex m_sinkMutex;
    selvane::SourceFeed *m_feed = nullptr;
    FramePool m_pool{6, 1920, 1080};

    std::thread m_worker; // last member: started once everything above exists
};
