#pragma once

// The four input channels: one decoder each, with a frame pool of its own (one channel can
// never starve another), feeding its pictures and sound into the channel's source feed.
// Remembers what each channel plays and the size of its pictures, and reports state changes,
// errors and natural ends by channel. Channels are 0..3 here; the operator sees 1..4.
//
// Threads: lives on the GUI thread; every method and signal is there. No method waits for a
// decoder: a source change or a clear only asks, and the decoder's worker does the rest.
// Decoder reports of an earlier source are recognised by their generation and ignored.

#include "engine/EngineTypes.h"
#include "input/SourceAddress.h"
#include "media/FramePool.h"

#include <QObject>
#include <array>
#include <memory>

class FFmpegVideoDecoder;

namespace selvane {

class SourceFeeds;

class ChannelSet : public QObject
{
    Q_OBJECT

public:
    explicit ChannelSet(SourceFeeds &feeds, QObject *parent = nullptr);
    ~ChannelSet() override;

    static bool isChannel(int channel) { return channel >= 0 && channel < kChannelCount; }

    // An empty source clears the channel.
    void setSource(int channel, const SourceAddress &source, const SourceAddress &audioSource = {});
    SourceAddress source(int channel) const;
    QSize displaySize(int channel) const;
    ChannelState state(int channel) const;

    void pause(int channel);
    void resume(int channel);
    void seek(int channel, qint64 positionMs);
    void setLoop(int channel, bool loop);
    // Pictures larger than this are shrunk to fit it as they are decoded (the program's size).
    void setTargetSize(QSize size);
    // Pictures that downstream queues (the encoder's) may hold on top of each pool's cap.
    void setHeldByConsumers(int count);

    // The channel's counters and state (no rates; the engine measures those).
    ChannelStats stats(int channel) const;

signals:
    void displaySizeChanged(int channel, QSize size);
    void stateChanged(int channel, selvane::ChannelState state);
    void error(int channel, selvane::SourceError error, QString detail);
    void ended(int channel);

private:
    struct Channel
    {
        std::unique_ptr<FFmpegVideoDecoder> decoder;
        std::unique_ptr<FramePool> pool;
        quint64 generation = 0;
        SourceAddress source;
        QSize displaySize;
    };

    std::array<Channel, kChannelCount> m_channels;
};

ChannelState channelStateOf(int decoderState);

} // namespace selvane
