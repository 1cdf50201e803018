#pragma once

// One run of a decoder: everything that lives from opening a source to the end of its decode
// loop (demuxer, decoders, deinterlacer, picture converter, packet queue, source timeline).
// Created and used on the decoder's worker thread only. It reads the operator's controls
// (DecoderControls, atomics written from any thread) and hands pictures and sound, stamped with
// the source's continuous time and timeline, to its DecodeHost.
//
// It does not pace: a file runs ahead until the host's picture queue is full, and while it waits
// for room it keeps reading, so that sound keeps flowing; the program clock takes the pictures
// when they are due. A live source is read as it comes.

#include "input/AudioConverter.h"
#include "input/Deinterlacer.h"
#include "input/MediaOpen.h"
#include "input/PacketQueue.h"
#include "input/PictureConverter.h"
#include "input/SourceTimeline.h"
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
    std::atomic<bool> resumed{false}; // set by resume(): the source's time starts a new timeline
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
    // Queues a picture; false (the picture stays with the caller) while the queue is full.
    // Pictures of a live source are always taken.
    virtual bool offerFrame(FrameTokenPtr &frame) = 0;
    virtual void waitForRoom(int ms) = 0;
    // Drops the pictures queued so far (a seek).
    virtual void discardQueued() = 0;
    virtual void deliverAudio(const std::int16_t *samples, int frames, qint64 mediaUs,
                              quint64 timeline) = 0;
    // The timeline the run starts on, and a new one after a seek or a pause.
    virtual quint64 timeline() const = 0;
    virtual quint64 newTimeline() = 0;
    // `live`: the source has no end and cannot seek. `realTime`: it also delivers at its own pace
    // (a camera, a stream pushed at us) and must be read whatever the program takes; a live
    // source read in segments (HLS, DASH) waits for the program like a file instead.
    // `fps`: the source's picture rate as its stream tells it (0 when it does not).
    virtual void opened(qint64 durationMs, bool live, bool realTime, double fps) = 0;
    virtual void videoInfo(QSize coded, QSize display) = 0;
    virtual void deinterlacing() = 0;
    virtual void failed(SourceError error, const QString &detail) = 0;
    // The end of a file without loop; once, until a seek plays again.
    virtual void endedNaturally() = 0;
    virtual void pictureDropped() = 0;
    // Where the run counts the packets its queue drops and the decoders refuse.
    virtual std::atomic<qint64> &packetDropCounter() = 0;
    // Where in the source the newest decoded picture is (ms from its start).
    virtual std::atomic<qint64> &positionMs() = 0;
};

class DecodeRun
{
public:
    DecodeRun(DecoderControls &controls, DecodeHost &host);
    ~DecodeRun();
    DecodeRun(const DecodeRun &) = delete;
    DecodeRun &operator=(const DecodeRun &) = delete;

    // Opens the source and its decoders; reports failures to the host. False on failure.
    bool open(const SourceAddress &source, bool separateAudio);
    // The Linux microphone named together with the camera, to be opened beside it.
    QString deviceMicrophone() const { return m_input.deviceMicrophone; }
    // Runs until the host cancels the run, the source fails, or a live network source ends.
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
    void showPicture(const AVFrame *frame);
    bool offerUntilTaken(FrameTokenPtr &picture);
    bool readAheadOnce();
    bool convertPicture(const AVFrame *frame, FrameTokenPtr *out);
    bool beforeSeekTarget(const AVFrame *frame, const AVStream *stream) const;
    qint64 rawTimeUs(const AVFrame *frame, const AVStream *stream) const;
    qint64 durationUs(const AVFrame *frame, const AVStream *stream) const;

    // Sound alone: black pictures every kBlackPeriodUs of the sound's own time, up to rawEndUs.
    void showBlackUpTo(qint64 rawEndUs);
    void seekTo(qint64 positionMs, bool newTimeline);
    // False when the run is over: a live network source that ended is opened again by the
    // decoder, never polled.
    bool handleEndOfFile();
    void drainDecoders();
    void showOneFrameAfterSeek();
    bool interrupted() const;

    DecoderControls &m_controls;
    DecodeHost &m_host;
    OpenedInput m_input;
    AVStream *m_videoStream = nullptr;
    AVStream *m_audioStream = nullptr;
    OpenedVideoDecoder m_video;
    ffsupport::CodecContextPtr m_audioCodec;
    ffsupport::FramePtr m_frame;
    ffsupport::FramePtr m_progressive;
    ffsupport::FramePtr m_audioFrame;
    ffsupport::PacketPtr m_packet;
    ffsupport::PacketPtr m_readAheadPacket;
    AudioConverter m_audio;
    Deinterlacer m_deinterlacer;
    std::unique_ptr<PictureConverter> m_pictures;
    PictureConverter::Sizes m_lastSizes;
    PacketQueue m_queue;
    SourceTimeline m_timeline;
    quint64 m_timelineId = 0;

    ffsupport::FramePtr m_black; // the picture of a source of sound alone
    qint64 m_nextBlackUs = SourceTimeline::kNoTime;
    static constexpr qint64 kBlackPeriodUs = 100000;
    static constexpr QSize kBlackSize{1280, 720};
    bool m_network = false; // a stream read over the network (opened again when it ends)
    bool m_useReader = false;
    bool m_realTime = false; // the source must be read at its own pace (see DecodeHost::opened)
    std::thread m_reader;
    bool m_readAheadEnded = false;

    qint64 m_seekTargetUs = -1;
    bool m_drained = false;
    bool m_endReported = false;
    bool m_reportedDeinterlacing = false;
    qint64 m_delivered = 0;
    qint64 m_refusedPackets = 0;
};

} // namespace selvane
