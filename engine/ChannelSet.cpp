#include "engine/ChannelSet.h"

#include "input/FFmpegVideoDecoder.h"
#include "media/FramePool.h"
#include "media/SourceFeeds.h"

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
    case FFmpegVideoDecoder::State::Reconnecting:
        return ChannelState::Reconnecting;
    }
    return ChannelState::Idle;
}

QString channelStateWord(ChannelState state, bool live)
{
    switch (state) {
    case ChannelState::Idle:
        return QStringLiteral("idle");
    case ChannelState::Opening:
        return QStringLiteral("connecting");
    case ChannelState::Playing:
        return live ? QStringLiteral("live") : QStringLiteral("playing");
    case ChannelState::Paused:
        return QStringLiteral("paused");
    case ChannelState::Ended:
        return QStringLiteral("ended");
    case ChannelState::Failed:
        return QStringLiteral("failed");
    case ChannelState::Reconnecting:
        return QStringLiteral("reconnecting");
    }
    return {};
}

namespace {
// Pictures a channel may have in flight: its queue, the picture on air, the previews.
constexpr qint32 kChannelPoolBase = 48;
} // namespace

ChannelSet::ChannelSet(SourceFeeds &feeds, QObject *parent) : QObject(parent)
{
    qRegisterMetaType<selvane::ChannelState>("selvane::ChannelState");
    qRegisterMetaType<FrameTokenPtr>("FrameTokenPtr");
    for (int c = 0; c < kChannelCount; ++c) {
        Channel &channel = m_channels[std::size_t(c)];
        channel.decoder = std::make_unique<FFmpegVideoDecoder>();
        FFmpegVideoDecoder *decoder = channel.decoder.get();
        channel.pool = std::make_unique<FramePool>(kChannelPoolBase, 1920, 1080);
        decoder->setFramePool(*channel.pool);
        decoder->setFeed(&feeds.channel(c));
        connect(decoder, &FFmpegVideoDecoder::decodeError, this,
                [this, c](SourceError code, const QString &detail, quint64 generation) {
                    if (generation != m_channels[std::size_t(c)].generation)
                        return;
                    const QString text =
                        sourceErrorLogText(code) + (detail.isEmpty() ? QString() : ": " + detail);
                    qWarning().noquote() << "Channel" << c + 1 << "decoder:" << text;
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
    for (Channel &channel : m_channels)
        channel.decoder->stop();
    // The decoders' destructors join their workers; each run was asked to end above, so the
    // joins overlap instead of adding up.
}

void ChannelSet::setSource(int channel, const SourceAddress &source,
                           const SourceAddress &audioSource)
{
    if (!isChannel(channel))
        return;
    Channel &ch = m_channels[std::size_t(channel)];
    ch.source = source;
    ch.displaySize = {};
    ch.generation = ch.decoder->setSource(source, audioSource);
    emit stateChanged(channel, source.isEmpty() ? ChannelState::Idle : ChannelState::Opening);
}

SourceAddress ChannelSet::source(int channel) const
{
    return isChannel(channel) ? m_channels[std::size_t(channel)].source : SourceAddress();
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

void ChannelSet::setHeldByConsumers(int count)
{
    for (Channel &channel : m_channels)
        channel.pool->setHeldByConsumers(count);
}

void ChannelSet::setTargetSize(QSize size)
{
    for (Channel &channel : m_channels)
        channel.decoder->setTargetSize(size);
}

ChannelStats ChannelSet::stats(int channel) const
{
    ChannelStats s;
    if (!isChannel(channel))
        return s;
    const Channel &ch = m_channels[std::size_t(channel)];
    const FFmpegVideoDecoder &d = *ch.decoder;
    s.state = channelStateOf(int(d.state()));
    s.source = ch.source.text();
    s.size = ch.displaySize;
    s.framesDelivered = d.framesDelivered();
    s.framesDropped = d.framesDropped();
    s.packetsDropped = d.packetsDropped();
    s.durationMs = d.durationMs();
    s.positionMs = d.positionMs();
    s.live = d.isLive();
    s.loop = d.loop();
    s.lastError = d.lastError();
    s.reconnects = d.reconnects();
    s.deinterlacing = d.isDeinterlacing();
    return s;
}

} // namespace selvane
