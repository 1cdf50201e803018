#pragma once

// The multiview as a picture for the outputs: preview and program side by side over the four
// channels, each labelled (PREVIEW, PROGRAM, the channel's number and source), the program and
// the channel on it framed red, the preview and its channel green. Made on a thread of its own
// from the pictures of each program tick (references, nothing copied on the program thread)
// and handed to the encodes of a multiview profile with the tick's time.
//
// Threads: takeChannels/takeProgram on the program thread (they only queue); the setters from
// any thread; the composing thread owns its scalers, its frame pool and the rendered labels.
// The queue holds kQueueDepth ticks; when the thread falls behind the oldest tick is dropped
// (counted in dropped()).

#include "engine/EngineTypes.h"
#include "media/FfmpegTypes.h"
#include "media/FramePool.h"
#include "media/FrameToken.h"

#include <QImage>
#include <QSize>
#include <array>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class OutputRouter;

namespace selvane {

class MultiviewFeed
{
public:
    static constexpr int kQueueDepth = 2;

    MultiviewFeed(QSize size, std::vector<std::weak_ptr<OutputRouter>> routers);
    ~MultiviewFeed();
    MultiviewFeed(const MultiviewFeed &) = delete;
    MultiviewFeed &operator=(const MultiviewFeed &) = delete;

    void setLabels(const std::array<QString, kChannelCount> &sources);
    void setPreviewChannel(int channel) { m_preview.store(channel); }

    // The channels' pictures of this tick, then the tick's program picture (its time on the
    // outputs' clock, and the channel on air or -1).
    void takeChannels(const std::array<FrameTokenPtr, kChannelCount> &pictures);
    void takeProgram(const FrameTokenPtr &program, qint64 ptsUs, int programChannel);
    // Ends the thread; what is queued is dropped.
    void stop();

    qint64 dropped() const { return m_dropped.load(); }
    qint64 made() const { return m_made.load(); }

private:
    struct Tick
    {
        FrameTokenPtr program;
        std::array<FrameTokenPtr, kChannelCount> channels;
        qint64 ptsUs = 0;
        int programChannel = -1;
        int previewChannel = -1;
    };
    struct Tile
    {
        QRect rect;
        ffsupport::SwsPtr scaler;
        QImage label; // grey levels: the label's letters over its box
        QString text;
    };

    void run();
    FrameTokenPtr compose(const Tick &tick);
    void drawPicture(Tile &tile, const FrameToken *picture, FrameWriter &out);
    void drawLabel(Tile &tile, const QString &text, FrameWriter &out);
    static void drawFrame(const QRect &rect, int yuv[3], FrameWriter &out);

    const QSize m_size;
    const std::vector<std::weak_ptr<OutputRouter>> m_routers;
    FramePool m_pool;
    std::array<Tile, 2 + kChannelCount> m_tiles; // preview, program, channels 1-4
    std::atomic<int> m_preview{-1};
    std::atomic<qint64> m_dropped{0};
    std::atomic<qint64> m_made{0};

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Tick> m_queue;
    std::array<FrameTokenPtr, kChannelCount> m_channels; // the latest takeChannels()
    std::array<QString, kChannelCount> m_sources;
    bool m_stop = false;
    std::thread m_thread;
};

} // namespace selvane
