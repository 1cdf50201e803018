#pragma once

// The program: for every picture of the channel on air it composes one program frame (the
// picture plus the overlay scene) and hands it to the outputs and to the program preview. In
// still mode the program frames come from a still picture, repeated at the output frame rate.
// There is no composition timer for channels: the program rate is the rate of the channel on
// air.
//
// Threads: the switcher lives on the program thread, where composition, still pictures and the
// hand-over to the outputs run; the window never waits for any of it. Decoder threads call
// submitChannelFrame/submitOverlayPicture (mailboxes: the newest picture wins, at most one flush
// pending). Controls (cut, still, scene, size, outputs) may be called from any thread; they
// store values under a short lock or post to the program thread. The program preview reaches the
// owner through previewReady(), posted at most once until takePreview() is called.

#include "compose/OverlayScene.h"
#include "compose/VulkanCompositor.h"
#include "media/FrameMailbox.h"
#include "media/FramePool.h"

#include <QHash>
#include <QImage>
#include <QObject>
#include <QSize>
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

class QTimer;

namespace selvane {

class ProgramSwitcher : public QObject
{
    Q_OBJECT

public:
    // Receives every program frame with its program-clock time (on the program thread).
    using OutputSink = std::function<void(const FrameTokenPtr &frame)>;

    // Construct on the GUI thread (the compositor's OpenGL state needs it), then moveToThread.
    explicit ProgramSwitcher(const FramePool &programPool);
    ~ProgramSwitcher() override;
    void moveToProgramThread(QThread *thread);

    // Decoder threads.
    void submitChannelFrame(int channel, FrameTokenPtr frame);
    void submitOverlayPicture(int mediaId, FrameTokenPtr frame);

    // Any thread.
    void cutTo(int channel);
    int programChannel() const { return m_channel.load(); }
    // Still mode: this picture (letterboxed into the output size) is the program until the next
    // cut; a null image shows black.
    void showStill(const QImage &image);
    bool isStill() const { return m_still.load(); }
    void setScene(OverlayScenePtr scene);
    void forgetOverlayPicture(int mediaId);
    void setOutputSize(QSize size, double fps);
    void setOutputSink(OutputSink sink);

    // The newest program frame and the channel it came from (-1: still); owner's thread.
    struct Preview
    {
        FrameTokenPtr frame;
        int channel = -1;
    };
    Preview takePreview();

    qint64 programFrames() const { return m_frames.load(); }
    qint64 framesWithoutOverlays() const { return m_withoutOverlays.load(); }

signals:
    // A program frame waits in takePreview(); posted once until it is taken.
    void previewReady();

private slots:
    void flushBaseFrame();
    void pushStill();

private:
    void compose(const FrameTokenPtr &base, int channel);
    void startStillTimer();
    FrameTokenPtr stillFrame();

    FramePool m_pool;
    VulkanCompositor m_compositor;

    std::atomic<int> m_channel{0};
    std::atomic<bool> m_still{false};
    FrameMailbox<1> m_baseMailbox;
    std::atomic<int> m_baseChannel{-1}; // the channel the waiting base frame came from

    std::mutex m_mutex; // guards the values below, handed in from other threads
    OverlayScenePtr m_scene;
    QHash<int, FrameTokenPtr> m_pendingPictures;
    QList<int> m_forgottenPictures;
    QImage m_stillImage;
    quint64 m_stillVersion = 0;
    QSize m_outputSize{1920, 1080};
    double m_fps = 30.0;
    OutputSink m_outputSink;

    // Program thread only.
    QTimer *m_stillTimer = nullptr;
    QImage m_canvas;
    quint64 m_canvasVersion = 0;
    qint64 m_stillPtsUs = 0;

    std::mutex m_previewMutex;
    Preview m_preview;
    std::atomic<bool> m_previewPosted{false};

    std::atomic<qint64> m_frames{0};
    std::atomic<qint64> m_withoutOverlays{0};
};

} // namespace selvane
