#pragma once

// One run of a decoder: everything that lives from opening a source to the end of its decode
// loop (demuxer, decoders, picture converter, packet queue, pacer). Created and used on the
// decoder's worker thread only. It reads the operator's controls (DecoderControls, atomics
// written from any thread) and reports to its DecodeHost.

#include "input/AudioConverter.h"
#include "input/MediaOpen.h"
#include "input/Pacer.h"
#include "input/PacketQueue.h"
#include "input/PictureConverter.h"
#include "input/VideoDecoderChoice.h"
#include "media/FrameToken.h"

#include <QSize>
#include <QString>
#include <atomic>
#include <memory>
#include <thread>

namespace selvane {

// What the operator's controls write and a run reads, at the top of its loop.
struct DecoderControls
{
    std::atomic<bool> playing{true};
    std::atomic<bool> resumed{false}; // set by resume(): re-anchor the pacing clock
    std::atomic<qint64> seekRequestMs{-1};
    std::atomic<bool> seekFlag{false}; // a seek made while playing
    std::atomic<bool> loop{false};
    std::atomic<bool> flushRequest{false};
    std::atomic<int> targetWidth{0};
    std::atomic<int> targetHeight{0};
};

// What a run reports to its decoder. Called on the run's threads.
class DecodeHost
{
public:
    virtual ~DecodeHost() = default;
    // This run must end (a new source, stop, or shutdown).
    virtual bool cancelled() const = 0;
    virtual FrameWriter acquireFrame() = 0;
    virtual void deliverFrame(FrameTokenPtr frame) = 0;
    virtual void deliverAudio(const std::int16_t *samples, int frames) = 0;
    virtual void opened(qint64 durationMs, bool live) = 0;
    virtual void videoInfo(QSize coded, QSize display) = 0;
    virtual void failed(SourceError error, const QString &detail) = 0;
    // The end of a file without loop; once, until a seek plays again.
    virtual void endedNaturally() = 0;
    virtual void pictureDropped() = 0;
    // Where the run counts the packets its queue drops and the decoders refuse.
    virtual std::atomic<qint64> &packetDropCounter() = 0;
};

class DecodeRun
{
public:
    DecodeRun(DecoderControls &controls, DecodeHost &host, SteadyNow now = {});
    ~DecodeRun();
    DecodeRun(const DecodeRun &) = delete;
    DecodeRun &operator=(const DecodeRun &) = delete;

    // Opens the source and its decoders; reports failures to the host. False on failure.
    bool open(const QString &source, bool separateAudio);
    // The Linux microphone named together with the camera, to be opened beside it.
    QString deviceMicrophone() const { return m_input.deviceMicrophone; }
    // Runs until the host cancels the run or the source fails.
    void decodeLoop();

    // The I/O interrupt: FFmpeg polls it during blocking calls.
    static AVIOInterruptCB interruptFor(const DecodeHost &host);

private:
    int nextPacket(AVPacket *packet);
    void readerLoop();
    void stopReader();

    void processPacket(AVPacket *packet);
    void sendPacket(AVCodecContext *codec, AVPacket *packet);
    void decodeAudioPacket(AVPacket *packet);
    void receiveVideoFrames();
    void receiveAudioFrames();
    void paceAndDeliver(const AVFrame *frame);
    bool waitUntil(SteadyClock::time_point deadline);
    void readAheadWhileWaiting();
    void convertAndDeliver(const AVFrame *frame);
    bool beforeSeekTarget(const AVFrame *frame, const AVStream *stream) const;
    qint64 frameTimeUs(const AVFrame *frame, const AVStream *stream) const;

    void seekTo(qint64 positionMs);
    void handleEndOfFile();
    void drainDecoders();
    void showOneFrameAfterSeek();

    DecoderControls &m_controls;
    DecodeHost &m_host;
    OpenedInput m_input;
    AVStream *m_videoStream = nullptr;
    AVStream *m_audioStream = nullptr;
    OpenedVideoDecoder m_video;
    ffsupport::CodecContextPtr m_audioCodec;
    ffsupport::FramePtr m_frame;
    ffsupport::FramePtr m_keptFrame;
    ffsupport::FramePtr m_audioFrame;
    ffsupport::PacketPtr m_packet;
    ffsupport::PacketPtr m_readAheadPacket;
    AudioConverter m_audio;
    std::unique_ptr<PictureConverter> m_pictures;
    PictureConverter::Sizes m_lastSizes;
    Pacer m_pacer;
    PacketQueue m_queue;

    bool m_useReader = false;
    std::thread m_reader;
    bool m_readAheadEnded = false;

    qint64 m_seekTargetUs = -1;
    bool m_drained = false;
    bool m_endReported = false;
    bool m_haveKeptFrame = false;
    qint64 m_delivered = 0;
    qint64 m_refusedPackets = 0;
};

} // namespace selvane
