#include "output/MuxContext.h"

#include "output/StreamUrl.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>

extern "C" {
#include <libavutil/opt.h>
}

#include <algorithm>

namespace selvane {

namespace {

constexpr std::size_t kMaxEarlyAudioPackets = 256; // about five seconds of AAC

bool muxerKnowsMovFlag(const AVOutputFormat *format, const char *flag)
{
    if (!format || !format->priv_class)
        return false;
    const AVClass *priv = format->priv_class;
    return av_opt_find(&priv, flag, "movflags", 0, AV_OPT_SEARCH_FAKE_OBJ) != nullptr;
}

bool isMp4Family(const AVOutputFormat *format)
{
    const QString name = QString::fromLatin1(format->name);
    return name == "mp4" || name == "mov" || name == "ismv" || name == "ipod" || name == "psp";
}

} // namespace

MuxContext::MuxContext(Use use, std::shared_ptr<EncodedStreams> streams,
                       const std::atomic<bool> *stopping)
    : m_use(use), m_streams(std::move(streams)), m_stopping(stopping)
{
}

int MuxContext::open(const Setup &setup)
{
    const bool stream = m_use == Use::Stream;
    const QString masked = maskStreamUrl(setup.url);
    const QByteArray urlBytes = setup.url.toUtf8();
    AVFormatContext *raw = nullptr;
    const int allocErr = avformat_alloc_output_context2(
        &raw, nullptr, setup.container.isEmpty() ? nullptr : setup.container.constData(),
        urlBytes.constData());
    ffsupport::OutputContextPtr context(raw);
    if (allocErr < 0 || !context) {
        qWarning().noquote() << "FfmpegEncoderSink: avformat_alloc_output_context2 failed"
                             << "fmt="
                             << (setup.container.isEmpty() ? "(null)" : setup.container.constData())
                             << "url=" << masked;
        return allocErr < 0 ? allocErr : AVERROR(ENOMEM);
    }
    context->interrupt_callback = setup.interrupt;
    if (stream) {
        // A missing sound stream must not hold the pictures back for long.
        context->max_interleave_delta = 500000;
    }
    if (!addStreams(context.get()))
        return AVERROR(EINVAL);

    if (const int err = openIo(context.get(), setup, masked); err < 0)
        return err;

    ffsupport::Dictionary muxerOptions;
    const QString formatName = QString::fromLatin1(context->oformat->name);
    if (!stream && (formatName == "mp4" || formatName == "mov")) {
        // Crash-safe recording: fragments at every keyframe, so a file cut off at any moment
        // plays up to its last fragment.
        muxerOptions.set("movflags",
                         muxerKnowsMovFlag(context->oformat, "hybrid_fragmented")
                             ? "+hybrid_fragmented+frag_keyframe+empty_moov+default_base_moof"
                             : "+frag_keyframe+empty_moov+default_base_moof");
    } else if (formatName == "ismv" || (stream && isMp4Family(context->oformat))) {
        muxerOptions.set("movflags", "+frag_keyframe+empty_moov+default_base_moof");
    } else if (formatName == "flv") {
        muxerOptions.set("flvflags", "no_duration_filesize");
    }
    if (setup.muxerOptions)
        setup.muxerOptions(muxerOptions);
    if (!setup.timecode.isEmpty())
        av_dict_set(&context->metadata, "timecode", setup.timecode.toLatin1().constData(), 0);
    const int err = avformat_write_header(context.get(), muxerOptions.address());
    if (err < 0) {
        if (!quiet())
            qWarning().noquote() << "FfmpegEncoderSink: avformat_write_header failed for" << masked
                                 << "original:" << maskStreamUrl(setup.originalUrl) << "-"
                                 << ffsupport::errorText("avformat_write_header", err);
        return err;
    }
    m_context = std::move(context);
    // The header (for a fragmented MP4, the whole index) reaches the disk at once.
    m_headerEnd = m_wholeEnd = 0;
    if (flushWhole())
        m_headerEnd = m_wholeEnd;
    m_bytesSinceOpen = 0;
    m_earlyAudio.clear();
    {
        std::lock_guard lock(m_urlMutex);
        m_openedUrl = setup.url;
    }
    m_offsetUs = -1;
    return 0;
}

bool MuxContext::addStreams(AVFormatContext *context)
{
    std::lock_guard lock(m_streams->mutex);
    AVStream *video = avformat_new_stream(context, nullptr);
    if (!video || avcodec_parameters_copy(video->codecpar, m_streams->video.get()) < 0) {
        qWarning("FfmpegEncoderSink: failed to cache video codec parameters for stream");
        return false;
    }
    video->time_base = m_streams->videoTimeBase;
    video->avg_frame_rate = m_streams->frameRate;
    video->r_frame_rate = m_streams->frameRate;
    m_videoTimeBase = m_streams->videoTimeBase;
    m_audioTimeBase = m_streams->audioTimeBase;
    m_videoIndex = video->index;
    m_audioIndex = -1;
    if (m_streams->audio) {
        AVStream *audio = avformat_new_stream(context, nullptr);
        if (!audio || avcodec_parameters_copy(audio->codecpar, m_streams->audio.get()) < 0) {
            qWarning("FfmpegEncoderSink: failed to cache audio codec parameters for stream");
            return false;
        }
        audio->time_base = m_streams->audioTimeBase;
        m_audioIndex = audio->index;
    }
    return true;
}

int MuxContext::openIo(AVFormatContext *context, const Setup &setup, const QString &masked)
{
    ffsupport::Dictionary options;
    if (setup.ioOptions)
        setup.ioOptions(options);
    if (context->oformat->flags & AVFMT_NOFILE)
        return 0;
    const QByteArray urlBytes = setup.url.toUtf8();
    int err = 0;
    if (m_use == Use::Stream) {
        err = avio_open2(&context->pb, urlBytes.constData(), AVIO_FLAG_WRITE,
                         &context->interrupt_callback, options.address());
    } else {
        ffsupport::Dictionary fileOptions;
        fileOptions.set("write_buffer_size", "4194304");
        err = avio_open2(&context->pb, urlBytes.constData(), AVIO_FLAG_WRITE,
                         &context->interrupt_callback, fileOptions.address());
        if (err < 0)
            err = avio_open2(&context->pb, urlBytes.constData(), AVIO_FLAG_WRITE,
                             &context->interrupt_callback, nullptr);
    }
    if (err < 0 && !quiet())
        qWarning().noquote()
            << "FfmpegEncoderSink: avio_open failed:" << ffsupport::errorText("avio_open2", err)
            << "url:" << masked
            << "| check Tools>Settings proxy (socks5://127.0.0.1:10808) or VPN TUN";
    return err;
}

int MuxContext::writeTrailer()
{
    return m_context ? av_write_trailer(m_context.get()) : 0;
}

void MuxContext::close(bool writeTrailer)
{
    if (!m_context)
        return;
    if (writeTrailer) {
        const int err = av_write_trailer(m_context.get());
        if (err < 0 && !quiet())
            qWarning().noquote() << "FfmpegEncoderSink: av_write_trailer failed:"
                                 << ffsupport::errorText("av_write_trailer", err);
    }
    // Whatever is still buffered goes out now rather than unchecked in the I/O's close.
    const bool torn = m_context->pb && !flushWhole();
    m_context.reset();
    m_packetsDropped.fetch_add(qint64(m_earlyAudio.size()));
    m_earlyAudio.clear();
    if (torn && m_use == Use::Recording)
        cutBackToWholeEnd(openedUrl());
}

bool MuxContext::flushWhole()
{
    AVIOContext *io = m_context ? m_context->pb : nullptr;
    if (!io)
        return false;
    avio_flush(io);
    // Writing stops at the first error (the I/O keeps it), so this position stays where the
    // last flush that fully succeeded left it. The furthest such position: a muxer that went
    // back to fill in a field has not made the file shorter.
    if (io->error < 0)
        return false;
    m_wholeEnd = std::max<qint64>(m_wholeEnd, avio_tell(io));
    return true;
}

void MuxContext::cutBackToWholeEnd(const QString &path) const
{
    // Never into the header: a file whose header never got to the disk has nothing to keep.
    if (m_headerEnd <= 0 || m_wholeEnd < m_headerEnd)
        return;
    QFile file(path);
    const QFileInfo info(path);
    if (!info.isFile() || info.size() <= m_wholeEnd)
        return;
    if (file.resize(m_wholeEnd)) {
        qInfo().noquote() << "FfmpegEncoderSink: recording" << path << "cut back to" << m_wholeEnd
                          << "bytes, the end of its last whole fragment, from" << info.size();
        return;
    }
    qWarning().noquote() << "FfmpegEncoderSink: recording" << path
                         << "could not be cut back to the end of its last whole fragment ("
                         << m_wholeEnd << "bytes):" << file.errorString()
                         << "- it ends in a torn fragment";
}

bool MuxContext::ioHealthy() const
{
    return m_context && m_context->pb && !m_context->pb->error;
}

qint64 MuxContext::sizeSoFar() const
{
    if (!m_context)
        return 0;
    return std::max<qint64>(m_context->pb ? avio_tell(m_context->pb) : 0, m_bytesSinceOpen);
}

QString MuxContext::openedUrl() const
{
    std::lock_guard lock(m_urlMutex);
    return m_openedUrl;
}

int MuxContext::write(AVPacket *packet, bool video)
{
    const int err = writeOne(packet, video);
    AVIOContext *io = m_context ? m_context->pb : nullptr;
    return err < 0 ? err : (io && io->error < 0 ? io->error : err);
}

int MuxContext::writeOne(AVPacket *packet, bool video)
{
    if (!m_context) {
        m_packetsDropped.fetch_add(1);
        return 0;
    }
    const int index = video ? m_videoIndex : m_audioIndex;
    if (index < 0)
        return 0;
    const AVRational encoderBase = video ? m_videoTimeBase : m_audioTimeBase;
    if (packet->pts == AV_NOPTS_VALUE && packet->dts == AV_NOPTS_VALUE)
        packet->dts = 0;
    if (packet->dts == AV_NOPTS_VALUE)
        packet->dts = packet->pts;
    if (packet->pts == AV_NOPTS_VALUE)
        packet->pts = packet->dts;
    // Every output starts at a video keyframe near time zero. The encoder may hand out sound
    // before that picture (pictures take longer to encode): such sound waits, and what belongs
    // after the keyframe is written once it is known.
    bool flushEarlyAudio = false;
    if (m_offsetUs < 0) {
        if (!video) {
            if (m_earlyAudio.size() >= kMaxEarlyAudioPackets) {
                m_earlyAudio.pop_front();
                m_packetsDropped.fetch_add(1);
            }
            m_earlyAudio.emplace_back(av_packet_clone(packet));
            return 0;
        }
        if (!(packet->flags & AV_PKT_FLAG_KEY)) {
            m_packetsDropped.fetch_add(1);
            return 0;
        }
        m_offsetUs = av_rescale_q(packet->pts, encoderBase, AV_TIME_BASE_Q);
        flushEarlyAudio = true;
    }
    const int64_t offset = av_rescale_q(m_offsetUs, AV_TIME_BASE_Q, encoderBase);
    packet->pts -= offset;
    packet->dts -= offset;
    if (!video && (packet->pts < 0 || packet->dts < 0)) {
        m_packetsDropped.fetch_add(1); // sound from before the first picture of this output
        return 0;
    }
    packet->pts = std::max<int64_t>(0, packet->pts);
    packet->dts = std::max<int64_t>(0, packet->dts);
    packet->stream_index = index;
    av_packet_rescale_ts(packet, encoderBase, m_context->streams[index]->time_base);
    const bool keyframe = video && (packet->flags & AV_PKT_FLAG_KEY);
    m_bytesSinceOpen += packet->size;
    const int size = packet->size;
    int err = av_interleaved_write_frame(m_context.get(), packet);
    if (err >= 0)
        m_bytesWritten.fetch_add(size);
    if (flushEarlyAudio) {
        std::deque<ffsupport::PacketPtr> early;
        early.swap(m_earlyAudio);
        for (ffsupport::PacketPtr &audio : early) {
            if (audio && err >= 0)
                err = std::min(err, write(audio.get(), false));
            else
                m_packetsDropped.fetch_add(1);
        }
    }
    if (err >= 0)
        m_packetsWritten.fetch_add(1);
    // A keyframe closes the previous fragment: pushing it to the disk now means a recording cut
    // off at any moment plays up to its last fragment. The muxer hands its I/O whole units only
    // (a fragmented MP4 keeps the fragment being built in memory, Matroska its cluster), so once
    // this flush succeeds the file ends with a whole one.
    if (keyframe && m_use == Use::Recording)
        flushWhole();
    return err;
}

} // namespace selvane
