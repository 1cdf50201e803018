#include "input/FFmpegVideoDecoder.h"

#include "input/AudioConverter.h"
#include "input/DecodeRun.h"
#include "input/MediaOpen.h"
#include "input/SourceAddress.h"

#include <QDebug>
#include <QMetaObject>
#include <QUrl>

FFmpegVideoDecoder::FFmpegVideoDecoder(QObject *parent) : QObject(parent) {}

FFmpegVideoDecoder::~FFmpegVideoDecoder() { stop(); }

void FFmpegVideoDecoder::setFramePool(const FramePool &pool) { m_pool = pool; }

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
    m_targetWidth.store(size.isValid() ? size.width() : 0);
    m_targetHeight.store(size.isValid() ? size.height() : 0);
}

void FFmpegVideoDecoder::setSource(const QString &source)
{
    std::lock_guard lifecycle(m_lifecycleMutex);
    requestStop();
    joinWorker();
    {
        QMutexLocker lock(&m_sourceMutex);
        m_source = source;
    }
    startWorker();
}

void FFmpegVideoDecoder::setAudioSource(const QString &audioSource)
{
    QMutexLocker lock(&m_sourceMutex);
    m_audioSource = audioSource;
}

QString FFmpegVideoDecoder::source() const
{
    QMutexLocker lock(&m_sourceMutex);
    return m_source;
}

void FFmpegVideoDecoder::startWorker()
{
    m_generation.fetch_add(1);
    m_stop.store(false);
    m_framesDelivered.store(0);
    m_framesDropped.store(0);
    m_durationMs.store(0);
    m_live.store(false);
    m_seekFlag.store(false);
    m_running.store(true);
    m_worker = std::thread([this] { threadFunc(); });
}

void FFmpegVideoDecoder::requestStop()
{
    m_stop.store(true);
    m_queueCv.notify_all();
}

void FFmpegVideoDecoder::stop()
{
    std::lock_guard lifecycle(m_lifecycleMutex);
    requestStop();
    joinWorker();
}

void FFmpegVideoDecoder::stopGeneration(quint64 generation)
{
    std::lock_guard lifecycle(m_lifecycleMutex);
    if (m_generation.load() != generation)
        return;
    requestStop();
    joinWorker();
}

void FFmpegVideoDecoder::joinWorker()
{
    if (m_worker.joinable())
        m_worker.join();
    if (m_microphone.joinable())
        m_microphone.join();
    m_running.store(false);
}

void FFmpegVideoDecoder::pause() { m_playing.store(false); }

void FFmpegVideoDecoder::resume()
{
    if (!m_playing.exchange(true))
        m_resumed.store(true);
}

void FFmpegVideoDecoder::seek(qint64 positionMs)
{
    m_seekRequestMs.store(std::max<qint64>(0, positionMs));
    if (m_playing.load())
        m_seekFlag.store(true);
}

void FFmpegVideoDecoder::deliverFrame(FrameTokenPtr frame)
{
    m_framesDelivered.fetch_add(1);
    std::lock_guard lock(m_sinkMutex);
    if (m_frameSink)
        m_frameSink(std::move(frame));
}

void FFmpegVideoDecoder::deliverAudio(const std::int16_t *samples, int frames)
{
    std::lock_guard lock(m_sinkMutex);
    if (m_audioSink)
        m_audioSink(samples, frames);
}

void FFmpegVideoDecoder::reportError(const QString &message) { emit decodeError(message); }

void FFmpegVideoDecoder::postEndedNaturally()
{
    QMetaObject::invokeMethod(this, [this] { emit playbackEndedNaturally(); },
                              Qt::QueuedConnection);
}

void FFmpegVideoDecoder::threadFunc()
{
    QString source;
    QString audioSource;
    {
        QMutexLocker lock(&m_sourceMutex);
        source = m_source;
        audioSource = m_audioSource;
    }
    if (source.isEmpty())
        return;
    m_ended.store(false);
    m_seekRequestMs.store(-1);

    if (!audioSource.isEmpty())
        m_microphone = std::thread([this, audioSource] { microphoneThreadFunc(audioSource, false); });

    const QString scheme = QUrl(source, QUrl::TolerantMode).scheme().toLower();
    if (scheme == "desktop" || scheme == "wgc") {
        reportError(QStringLiteral("%1:// capture is not available in this build").arg(scheme));
        return;
    }

    DecodeRun run(*this, m_generation.load());
    if (!run.open(source, !audioSource.isEmpty()))
        return;
    if (!run.deviceMicrophone().isEmpty() && !m_microphone.joinable()) {
        const QString name = run.deviceMicrophone();
        m_microphone = std::thread([this, name] { microphoneThreadFunc(name, true); });
    }
    run.decodeLoop();
}

void FFmpegVideoDecoder::microphoneThreadFunc(QString addressOrName, bool bareName)
{
    using namespace selvane;
    const AVIOInterruptCB interrupt{
        [](void *opaque) -> int { return static_cast<std::atomic<bool> *>(opaque)->load(); },
        &m_stop};
    OpenedInput input = openMicrophoneInput(addressOrName, bareName, interrupt);
    if (!input.error.isEmpty()) {
        if (!m_stop.load())
            reportError(input.error);
        return;
    }
    const int index =
        av_find_best_stream(input.context.get(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (index < 0) {
        reportError(openerror::kMicNoAudio);
        return;
    }
    AVStream *stream = input.context->streams[index];
    const AVCodec *codec = avcodec_find_decoder(stream->codecpar->codec_id);
    ffsupport::CodecContextPtr context(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!context || avcodec_parameters_to_context(context.get(), stream->codecpar) < 0 ||
        avcodec_open2(context.get(), codec, nullptr) < 0) {
        reportError(openerror::kMicDecoderFailed);
        return;
    }
    ffsupport::PacketPtr packet(av_packet_alloc());
    ffsupport::FramePtr frame(av_frame_alloc());
    AudioConverter converter;
    const AudioConverter::Sink sink = [this](const std::int16_t *samples, int frames) {
        deliverAudio(samples, frames);
    };
    while (!m_stop.load()) {
        const int err = av_read_frame(input.context.get(), packet.get());
        if (err == AVERROR(EAGAIN)) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
            continue;
        }
        if (err < 0)
            break;
        if (packet->stream_index == index && avcodec_send_packet(context.get(), packet.get()) >= 0) {
            while (avcodec_receive_frame(context.get(), frame.get()) >= 0) {
                converter.convert(frame.get(), context.get(), sink);
                av_frame_unref(frame.get());
            }
        }
        av_packet_unref(packet.get());
    }
}
