#pragma once

// One run of a decoder's worker: everything that lives from opening a source to the end of its
// decode loop (demuxer, decoders, converters, packet queue, pacing clock). Created and used on
// the worker thread only; reads the decoder's shared control fields.

#include "input/AudioConverter.h"
#include "input/FfmpegSupport.h"
#include "input/MediaOpen.h"

#include <QSize>
#include <QString>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

class FFmpegVideoDecoder;

class DecodeRun
{
public:
    DecodeRun(FFmpegVideoDecoder &decoder, quint64 generation);
    ~DecodeRun();
    DecodeRun(const DecodeRun &) = delete;
    DecodeRun &operator=(const DecodeRun &) = delete;

    // Opens the source and its decoders; reports failures through the decoder. False on failure.
    bool open(const QString &source, bool separateAudio);
    // The Linux microphone named together with the camera, to be opened beside it.
    QString deviceMicrophone() const { return m_input.deviceMicrophone; }
    void decodeLoop();

private:
    using Clock = std::chrono::steady_clock;

    bool openVideoDecoder();
    bool tryHardwareAv1(const AVCodecParameters *parameters);
    void openAudioDecoder();

    int nextPacket(AVPacket *packet);
    void pushPacket(AVPacket *packet);
    void clearQueue();
    void readerLoop();
    void stopReader();

    void processPacket(AVPacket *packet);
    void decodeAudioPacket(AVPacket *packet);
    void receiveVideoFrames();
    void receiveAudioFrames();
    void paceAndDeliver(AVFrame *frame);
    void readAheadWhileWaiting();
    bool waitUntil(Clock::time_point deadline);
    void convertAndDeliver(AVFrame *frame);
    bool beforeSeekTarget(const AVFrame *frame, const AVStream *stream) const;
    qint64 frameTimeUs(const AVFrame *frame, const AVStream *stream) const;

    void seekTo(qint64 positionMs);
    void resetAnchor() { m_anchorSet = false; }
    void handleEndOfFile();
    void drainDecoders();
    void showOneFrameAfterSeek();

    FFmpegVideoDecoder &m_decoder;
    const quint64 m_generation;
    selvane::OpenedInput m_input;
    AVStream *m_videoStream = nullptr;
    AVStream *m_audioStream = nullptr;
    ffsupport::CodecContextPtr m_videoCodec;
    ffsupport::CodecContextPtr m_audioCodec;
    ffsupport::BufferRefPtr m_hwDevice;
    AVPixelFormat m_hwFormat = AV_PIX_FMT_NONE;
    ffsupport::FramePtr m_frame;
    ffsupport::FramePtr m_swFrame;
    ffsupport::FramePtr m_keptFrame;
    ffsupport::FramePtr m_audioFrame;
    ffsupport::PacketPtr m_packet;
    ffsupport::PacketPtr m_readAheadPacket;
    selvane::AudioConverter m_audio;
    ffsupport::SwsPtr m_sws;
    std::vector<std::uint8_t> m_rotateScratch;

    std::deque<AVPacket *> m_queue; // guarded by the decoder's queue mutex when a reader runs
    int m_queueDepth = 200;
    bool m_useReader = false;
    std::thread m_reader;
    bool m_readerDone = false;
    int m_readerResult = 0;
    bool m_readAheadEnded = false;

    bool m_anchorSet = false;
    qint64 m_anchorPtsUs = 0;
    Clock::time_point m_anchorWall;
    qint64 m_seekTargetUs = -1;
    bool m_drained = false;
    bool m_haveKeptFrame = false;

    int m_rotation = 0;
    int m_lastCodedW = -1, m_lastCodedH = -1, m_lastDisplayW = -1, m_lastDisplayH = -1;
};
