#pragma once

// Display images of program and channel pictures, scaled off the GUI thread, so that a face
// shows live pictures at display rate for the cost of one blit a frame.
//
// Owns: one worker thread and, per stream (any small integer the face chooses, e.g. 0 for the
// program and 1..4 for the channels), the wanted size, the newest picture waiting, a swscale
// context and the finished image.
//
// Threads: setSize(), take() and the destructor on the thread that made the object (the GUI
// thread), submit() from any thread (the program thread hands pictures in directly); scaling
// runs on the worker. `ready(stream)` is emitted on the owner's thread,
// at most one waiting per stream. Drop rule: the newest picture wins; a picture replaced before
// the worker took it is counted in dropped(). A stream may be limited to a rate (thumbnails):
// pictures that come sooner after the last one taken are not even queued (not counted as
// drops).

#include "media/FrameToken.h"

#include <QImage>
#include <QObject>
#include <QSize>
#include <atomic>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

namespace selvane {

class PreviewImages : public QObject
{
    Q_OBJECT

public:
    explicit PreviewImages(QObject *parent = nullptr);
    ~PreviewImages() override;

    // How an image is fitted into the stream's size: scaled to fill it, or shrunk by the
    // smallest whole factor (1, 2, 3 ...) that makes it fit, which costs a small part of a scaler's
    // pass (the image is then shown as it is, centred).
    enum class Fit
    {
        Scale,
        WholeSteps
    };
    // The size images of this stream are made at or within (an empty size: none are made), and
    // the most pictures a second (0: every one).
    void setSize(int stream, QSize size, int maxPerSecond = 0, Fit fit = Fit::Scale);
    void submit(int stream, FrameTokenPtr frame);
    // The newest finished image of the stream (null when none is new since the last take).
    QImage take(int stream);
    qint64 dropped() const { return m_dropped.load(); }
    qint64 made() const { return m_made.load(); }

signals:
    void ready(int stream);

private:
    struct Stream;
    void run();

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::map<int, std::unique_ptr<Stream>> m_streams;
    bool m_stop = false;
    std::atomic<qint64> m_dropped{0};
    std::atomic<qint64> m_made{0};
    std::thread m_worker;
};

} // namespace selvane
