#pragma once

// Connects the program picture and the program audio to the encoder sink. Every program frame
// is queued (bounded, with a drop rule) for one encode worker thread that owns the sink; the
// compositing thread never waits on encoding.
//
// Threads: start/stop/setters on the owner's thread (stop may run on a helper thread);
// enqueueFrame on the compositing thread; pushAudio from the thread that delivers program audio.
// Status and failure callbacks come from the encode worker and the network workers.
//
// The outputs fail as a whole only when the sink cannot be opened (nothing to write to). Once
// running, no destination stops another: the recording retries into new files, stream targets
// reconnect, for as long as the output runs.

#include "output/EncoderSettings.h"
#include "output/FfmpegEncoderSink.h"

#include <QSize>
#include <QString>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class OutputRouter
{
public:
    using StatusCallback = std::function<void(int index, const QString &status)>;
    enum class Failure
    {
        OpenFailed, // the outputs could not be opened
    };
    using FailureCallback = std::function<void(Failure failure, const QString &detail)>;

    struct AudioChunk
    {
        std::vector<std::int16_t> samples;
        qint64 ptsUs = 0;
    };

    struct EncodeWorkerState
    {
        std::mutex mutex;
        std::condition_variable wake;
        std::deque<std::pair<FrameTokenPtr, qint64>> frames;
        std::vector<AudioChunk> audio; // at most kMaxQueuedAudioChunks; the oldest gives way
        // Sample buffers of chunks already encoded, reused so that no block allocates.
        std::vector<std::vector<std::int16_t>> spare;
        int depth = 4;
        bool live = false;
        bool running = false;
        bool stop = false;
        qint64 droppedFrames = 0;
        qint64 droppedAudioChunks = 0;
        quint64 sequence = 0;
        double keepFps = 0; // above 0: only the first picture of each 1/keepFps slot
        qint64 lastSlot = -1;
        std::unique_ptr<FfmpegEncoderSink> sink;
        EncoderSettings settings;
        QSize size;
        std::atomic<bool> sinkOpen{false};
        std::atomic<bool> failureReported{false};
        StatusCallback status;
        FailureCallback failure;
        ~EncodeWorkerState();
    };

    OutputRouter();
    ~OutputRouter();

    void setSettings(const EncoderSettings &settings) { m_settings = settings; }
    const EncoderSettings &settings() const { return m_settings; }
    void setOutputSize(QSize size) { m_size = size; }
    void setStatusCallback(StatusCallback callback) { m_status = std::move(callback); }
    void setFailureCallback(FailureCallback callback) { m_failure = std::move(callback); }
    void setClock(SteadyNow now) { m_now = std::move(now); }
    // The rate pictures are handed in at; when the settings ask for fewer a second, the
    // pictures between are left out as they come (before queueing).
    void setSourceFps(double fps) { m_sourceFps = fps; }

    bool start();
    void stop();
    bool isRunning() const;
    void enqueueFrame(FrameTokenPtr frame, qint64 ptsUs);
    // The program audio tap: interleaved stereo s16 at 48 kHz.
    void pushAudio(const std::int16_t *samples, int frames, qint64 ptsUs);

    int queueDepth() const;
    qint64 droppedFrames() const;
    // Program audio chunks dropped because the encode worker fell too far behind.
    qint64 droppedAudioChunks() const;
    qint64 bytesEncoded() const;
    // Pictures the encoder has written since start().
    qint64 framesEncoded() const;
    bool isSinkOpen() const;
    QString encoderName() const;
    // The sink's video bitrate now and as set (kbit/s), and the adaptive steps so far.
    qint64 currentKbps() const;
    qint64 setKbps() const;
    int bitrateSteps() const;
    // Per destination, the sink's view (any thread): recording first, then the targets.
    std::vector<FfmpegEncoderSink::OutputStats> destinationStats() const;
    // See FfmpegEncoderSink::reconnectTargetNow. Any thread.
    bool reconnectTargetNow(int index);

    static int queueDepthFor(QSize size, bool live);
    // About two seconds of the audio thread's 10 ms chunks: sound older than that is of no use
    // to a stream and means the encoder cannot keep up anyway.
    static constexpr std::size_t kMaxQueuedAudioChunks = 200;

    // A fault for tests: every running encode worker stops taking pictures for this long (as a
    // machine that cannot keep up would), starting with its next picture. Any thread.
    static void injectEncoderStall(int milliseconds);

private:
    static void encodeWorker(std::shared_ptr<EncodeWorkerState> state);
    std::shared_ptr<EncodeWorkerState> currentState() const;

    EncoderSettings m_settings;
    QSize m_size{1920, 1080};
    double m_sourceFps = 0;
    StatusCallback m_status;
    FailureCallback m_failure;
    SteadyNow m_now;
    mutable std::mutex m_stateMutex; // guards the pointer; the state has its own mutex
    std::shared_ptr<EncodeWorkerState> m_state;
    std::thread m_worker;
};
