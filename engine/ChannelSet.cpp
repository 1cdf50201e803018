#include "engine/ChannelSet.h"

#include "engine/ProgramSwitcher.h"
#include "input/FFmpegVideoDecoder.h"
#include "media/AudioInputs.h"

#include <QDebug>

namespace selvane {

ChannelState channelStateOf(int decoderState)
{
    switch (FFmpegVideoDecoder::State(decoderState)) {
    case FFmpegVideoDecoder::State::Idle:
        return ChannelState::Idle;
    case FFmpegVideoDecoder::State::Opening:
        return ChannelState::Opening;
    case FFmpegVideoDecoder::State::Playing:
        return ChannelState::Playing;
    case FFmpegVideoDecoder::State::Paused:
        return ChannelState::Paused;
    case FFmpegVideoDecoder::State::Ended:
        return ChannelState::Ended;
    case FFmpegVideoDecoder::State::Failed:
        return ChannelState::Failed;
    }
    return ChannelState::Idle;
}

ChannelSet::ChannelSet(const FramePool &pool, AudioInputs &audio, ProgramSwitcher &switcher,
                       QObject *parent)
    : QObject(parent), m_audio(audio)
{
    qRegisterMetaType<selvane::ChannelState>("selvane::ChannelState");
    qRegisterMetaType<FrameTokenPtr>("FrameTokenPtr");
    for (int c = 0; c < kChannelCount; ++c) {
        Channel &channel = m_channels[std::size_t(c)];
        channel.decoder = std::make_unique<FFmpegVideoDecoder>();
        FFmpegVideoDecoder *decoder = channel.decoder.get();
        decoder->setFramePool(pool);
        decoder->setFrameSink([this, &switcher, c](FrameTokenPtr frame) {
            switcher.submitChannelFrame(c, frame);
            if (m_previews.store(c, std::move(frame)))
                QMetaObject::invokeMethod(this, &ChannelSet::flushPreviews, Qt::QueuedConnection);
        });
        SampleQueue &queue = audio.channel(c);
        decoder->setAudioSink(
            [&queue](const std::int16_t *samples, int frames) { queue.push(samples, frames); });
        connect(decoder, &FFmpegVideoDecoder::decodeError, this,
                [this, c](SourceError code, const QString &detail, quint64 generation) {
                    if (generation != m_channels[std::size_t(c)].generation)
                        return;
                    const QString text =
                        sourceErrorLogText(code) + (detail.isEmpty() ? QString() : ": " + detail);
                    qWarning().noquote() << "Channel" << c << "decoder:" << text;
                    emit error(c, code, detail);
                });
        connect(decoder, &FFmpegVideoDecoder::sourceVideoInfoChanged, this,
                [this, c](int, int, int dw, int dh, quint64 generation) {
                    Channel &ch = m_channels[std::size_t(c)];
                    if (generation != ch.generation)
                        return; // a late report about an earlier source
                    const QSize size(dw, dh);
                    if (size == ch.displaySize)
                        return;
                    ch.displaySize = size;
                    emit displaySizeChanged(c, size);
                });
        connect(decoder, &FFmpegVideoDecoder::playbackEndedNaturally, this,
                [this, c](quint64 generation) {
                    if (generation == m_channels[std::size_t(c)].generation)
                        emit ended(c);
                });
        connect(decoder, &FFmpegVideoDecoder::stateChanged, this,
                [this, c](FFmpegVideoDecoder::State state, quint64 generation) {
                    if (generation == m_channels[std::size_t(c)].generation)
                        emit stateChanged(c, channelStateOf(int(state)));
                });
    }
}

ChannelSet::~ChannelSet()
{
    for (Channel &channel : m_channels) {
        channel.decoder->setFrameSink(nullptr);
        channel.decoder->setAudioSink(nullptr);
        channel.decoder->stop();
    }
    // The decoders' destructors join their workers; each run was asked to end above, so the
    // joins overlap instead of adding up.
}

void ChannelSet::setSource(int channel, const QString &source, const QString &audioSource)
{
    if (!isChannel(channel))
        return;
    Channel &ch = m_channels[std::size_t(channel)];
    ch.source = source;
    ch.displaySize = {};
    ch.generation = ch.decoder->setSource(source, audioSource);
    m_previews.clear(channel);
    m_audio.channel(channel).clear(); // the old source's sound ended with it
    emit stateChanged(channel, source.isEmpty() ? ChannelState::Idle : ChannelState::Opening);
}

QString ChannelSet::source(int channel) const
{
    return isChannel(channel) ? m_channels[std::size_t(channel)].source : QString();
}

QSize ChannelSet::displaySize(int channel) const
{
    return isChannel(channel) ? m_channels[std::size_t(channel)].displaySize : QSize();
}

ChannelState ChannelSet::state(int channel) const
{
    return isChannel(channel)
               ? channelStateOf(int(m_channels[std::size_t(channel)].decoder->state()))
               : ChannelState::Idle;
}

void ChannelSet::pause(int channel)
{
    if (isChannel(channel))
        m_channels[std::size_t(channel)].decoder->pause();
}

void ChannelSet::resume(int channel)
{
    if (isChannel(channel))
        m_channels[std::size_t(channel)].decoder->resume();
}

void ChannelSet::seek(int channel, qint64 positionMs)
{
    if (isChannel(channel))
        m_channels[std::size_t(channel)].decoder->seek(positionMs);
}

void ChannelSet::setLoop(int channel, bool loop)
{
    if (isChannel(channel))
        m_channels[std::size_t(channel)].decoder->setLoop(loop);
}

ChannelStats ChannelSet::stats(int channel) const
{
    ChannelStats s;
    if (!isChannel(channel))
        return s;
    const Channel &ch = m_channels[std::size_t(channel)];
    const FFmpegVideoDecoder &d = *ch.decoder;
    s.state = channelStateOf(int(d.state()));
    s.source = ch.source;
    s.size = ch.displaySize;
    s.framesDelivered = d.framesDelivered();
    s.framesDropped = d.framesDropped();
    s.packetsDropped = d.packetsDropped();
    s.durationMs = d.durationMs();
    s.live = d.isLive();
    s.loop = d.loop();
    s.lastError = d.lastError();
    return s;
}

void ChannelSet::flushPreviews()
{
    const auto frames = m_previews.take();
    for (int c = 0; c < kChannelCount; ++c)
        if (frames[std::size_t(c)])
            emit preview(c, frames[std::size_t(c)]);
}

} // namespace selvane
