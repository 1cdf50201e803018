#pragma once

// The four input channels: one decoder each, wired to the program switcher (pictures), the
// audio inputs (sound) and the channel previews. Remembers what each channel plays and the size
// of its pictures, and reports state changes, errors and natural ends by channel.
//
// Threads: lives on the GUI thread; every method and signal is there. No method waits for a
// decoder: a source change or a clear only asks, and the decoder's worker does the rest.
// Decoder reports of an earlier source are recognised by their generation and ignored.

#include "engine/EngineTypes.h"
#include "media/FrameMailbox.h"
#include "media/FramePool.h"

#include <QObject>
#include <array>
#include <memory>

class FFmpegVideoDecoder;

namespace selvane {

class AudioInputs;
class ProgramSwitcher;

class ChannelSet : public QObject
{
    Q_OBJECT

public:
    ChannelSet(const FramePool &pool, AudioInputs &audio, ProgramSwitcher &switcher,
               QObject *parent = nullptr);
    ~ChannelSet() override;

    static bool isChannel(int channel) { return channel >= 0 && channel < kChannelCount; }

    // An empty source clears the channel.
    void setSource(int channel, const QString &source, const QString &audioSource = {});
    QString source(int channel) const;
    QSize displaySize(int channel) const;
    ChannelState state(int channel) const;

    void pause(int channel);
    void resume(int channel);
    void seek(int channel, qint64 positionMs);
    void setLoop(int channel, bool loop);

    // The channel's counters and state (no rates; the engine measures those).
    ChannelStats stats(int channel) const;

signals:
    void displaySizeChanged(int channel, QSize size);
    void stateChanged(int channel, selvane::ChannelState state);
    void error(int channel, selvane::SourceError error, QString detail);
    void ended(int channel);
    void preview(int channel, FrameTokenPtr frame);

private:
    struct Channel
    {
        std::unique_ptr<FFmpegVideoDecoder> decoder;
        quint64 generation = 0;
        QString source;
        QSize displaySize;
    };

    void flushPreviews();

    AudioInputs &m_audio;
    std::array<Channel, kChannelCount> m_channels;
    FrameMailbox<kChannelCount> m_previews;
};

ChannelState channelStateOf(int decoderState);

} // namespace selvane
