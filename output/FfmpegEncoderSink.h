#pragma once

// Encodes the program once and feeds every destination: one video encoder (hardware when it
// opens, software otherwise), one AAC encoder, the recording file (FileRecorder) and any number
// of stream targets (StreamPublisher, each with its own network worker).
//
// Threads: every method is called from the router's encode worker only, except the observers
// (bytesEncoded, framesEncoded, encoderErrors, encoderName, outputStats), which are safe from
// any thread. The status callback is called from the encode worker and the network workers.

#include "media/FfmpegTypes.h"
#include "output/AdaptiveBitrate.h"
#include "output/EncoderFrameConverter.h"
#include "output/EncoderSettings.h"
#include "output/FileRecorder.h"
#include "output/StreamPublisher.h"

#include <QSize>
#include <QString>
#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

class FfmpegEncoderSink : public IEncoderSink
{
public:
    using StatusCallback = selvane::StreamPublisher::StatusCallback;

    FfmpegEncoderSink();
    ~FfmpegEncoderSink() override;

    void setStatusCallback(StatusCallback callback) { m_status = std::move(callback); }
    void setClock(SteadyNow now) { m_now = std::move(now); }
    // The program size the next open() uses.
    void setOutputSize(int width, int height) { m_requestedSize = QSize(width, height); }

    // Can the stored settings be encoded at this size? Run before the outputs open.
    bool probe(const EncoderSettings &settings, int width, int height);

    bool open(const EncoderSettings &settings) override;
    // ptsUs: the program clock. Returns 0 when encoded, 1 when skipped (same time slot, or not
    // open), negative on an encoder error.
    int pushVideoFrame(FrameTokenPtr frame, qint64 ptsUs) override;
    // Interleaved stereo s16 at 48 kHz; ptsUs: the program clock of the first sample.
    void pushAudio(const std::int16_t *samples, int frames, qint64 ptsUs);
    void close() override;

    bool isOpen() const { return m_open; }
    QString encoderName() const;
    QSize encodedSize() const { return m_encodedSize; }
    bool hasAudio() const { return bool(m_audioCodec); }
    qint64 bytesEncoded() const { return m_bytesEncoded.load(); }
    qint64 framesEncoded() const { return m_framesEncoded.load(); }
    // Frames the encoders refused and packets they failed to hand out.
    qint64 encoderErrors() const { return m_encoderErrors.load(); }
    // The video bitrate asked of the encoder now and as set (kbit/s), and how many times an
    // adaptive bitrate has changed it. Any thread.
    qint64 currentKbps() const { return m_currentKbps.load(); }
    qint64 setKbps() const { return m_setKbps.load(); }
    int bitrateSteps() const { return m_bitrateSteps.load(); }
    struct OutputStats
    {
        static constexpr int kRecording = -1;
        static constexpr int kTwin = -2;
        int targetIndex = kRecording; // kRecording, kTwin (the recording's copy), or a target
        QString path;                 // the file (segment) written now, or the masked URL
        qint64 packetsWritten = 0;
        qint64 bytesWritten = 0;
        qint64 queueResets = 0;
        qint64 reconnects = 0;
        // Packets this destination was handed but never wrote: queue resets, outages and the
        // wait for a keyframe after them, sound held too long before the first keyframe.
        qint64 packetsDropped = 0;
        bool failed = false;   // the recording cannot be written right now ...
        QString failureReason; // ... for this reason (the last one seen)
        int failures = 0;      // times it went from writing to failed
        int resumes = 0;       // times a new file was begun after a failure
    };
    // Safe from any thread.
    std::vector<OutputStats> outputStats() const;
    // Stream target `index` tries to connect at once if it is waiting to reconnect. Any thread.
    bool reconnectTargetNow(int index);

private:
    bool needsGlobalHeader(const EncoderSettings &settings) const;
    bool openVideo(int width, int height, bool globalHeader);
    bool reopenVideoEncoderForNewSize(int width, int height);
    void openAudio(bool globalHeader);
    bool cacheStreamParameters();
    bool openOutputs();
    void closeOutputs();
    // 0, or the encoder's error for this frame.
    int encodeAndDistribute(AVCodecContext *codec, AVFrame *frame, bool video);
    void distribute(AVCodecContext *codec, bool video);
    void noteEncoderError(const char *call, bool video, int err);
    void encodeAudioFrames();
    void alignAudioTo(qint64 videoStartUs);
    void finishAudioWithPicture();
    // With an adaptive bitrate: reads the targets' queues and changes the bitrate when due.
    void adaptBitrate();

    EncoderSettings m_settings;
    StatusCallback m_status;
    SteadyNow m_now;
    QSize m_requestedSize;
    QSize m_encodedSize;
    bool m_open = false;
    bool m_sizeWarningGiven = false;

    ffsupport::CodecContextPtr m_videoCodec;
    mutable std::mutex m_nameMutex;
    QString m_encoderName;
    selvane::EncoderFrameConverter m_converter;
    bool m_encoderCopiesInput = false; // the picture may be sent as it is (borrowPicture)
    ffsupport::FramePtr m_videoFrame;
    int64_t m_lastVideoPts = AV_NOPTS_VALUE;

    ffsupport::CodecContextPtr m_audioCodec;
    ffsupport::FramePtr m_audioFrame;
    std::vector<std::int16_t> m_audioPending; // interleaved, not yet a full encoder frame
    int64_t m_nextAudioPts = AV_NOPTS_VALUE;
    bool m_audioAligned = false;            // the sound's timeline is anchored to the first picture
    qint64 m_pendingStartUs = 0;            // program time of the first pending sample before that
    qint64 m_inputEndUs = AV_NOPTS_VALUE;   // program time where the sound received so far ends
    qint64 m_videoStartUs = AV_NOPTS_VALUE; // the first picture's time, which the sound starts at

    ffsupport::PacketPtr m_packet;
    std::shared_ptr<selvane::EncodedStreams> m_streams;
    mutable std::mutex m_outputsMutex; // guards the pointers themselves against outputStats()
    std::unique_ptr<selvane::FileRecorder> m_recorder;
    std::unique_ptr<selvane::FileRecorder> m_twin;
    std::vector<std::unique_ptr<selvane::StreamPublisher>> m_targets;
    std::atomic<qint64> m_bytesEncoded{0};
    std::atomic<qint64> m_framesEncoded{0};
    std::atomic<qint64> m_encoderErrors{0};
    selvane::AdaptiveBitrate m_adaptive;
    std::atomic<qint64> m_currentKbps{0};
    std::atomic<qint64> m_setKbps{0};
    std::atomic<int> m_bitrateSteps{0};
};
