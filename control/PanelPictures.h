#pragma once

// The pictures the remote control hands out as JPEGs: the program (fitted into 640x360) and
// each channel's thumbnail (320x180), for snapshots and for the web panel, which asks several
// times a second.
//
// A request waits for the next picture of its source; one made less than a tenth of a second
// ago (a third, for thumbnails) is answered at once, so many panels cost one encode. Only while
// somebody asks (a request within the last three seconds) does this listen to the engine's
// pictures at all: otherwise the engine makes no previews for it and nothing is encoded. The
// scaling and JPEG encoding run on a worker thread of their own, never on the program thread or
// the GUI thread; a frame is let go as soon as it is scaled (the pools are bounded), and at most
// one encode per source is under way (newer pictures are skipped while it is, counted).
//
// Owns: the worker pool (one thread), the newest JPEG of each source, the waiting sockets (at
// most 16 per source; more are refused with 503). GUI thread for every call; the worker hands
// its result back through the event loop. Emits nothing.

#include "media/FrameToken.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QThreadPool>
#include <array>

class QTcpSocket;
class QTimer;

namespace selvane {
class Engine;
}

namespace selvane::control {

class PanelPictures : public QObject
{
    Q_OBJECT

public:
    static constexpr int kProgram = -1;

    explicit PanelPictures(Engine &engine, QObject *parent = nullptr);
    ~PanelPictures() override;

    // Answers `socket` with the picture of the program (kProgram) or a channel (0..3): at once
    // when one is fresh, else with the next one, else (after two seconds for the program, one
    // for a channel) with the last one made or a 503.
    void request(QTcpSocket *socket, int source);
    // Every waiting request is dropped (the show is ending).
    void closeAll();
    // Pictures that came while their source's encode was still under way.
    qint64 skippedPictures() const { return m_skipped; }

private:
    struct Wait
    {
        QPointer<QTcpSocket> socket;
        QDeadlineTimer deadline;
    };
    struct Source
    {
        QByteArray jpeg;
        qint64 madeMs = -1; // steady milliseconds
        bool encoding = false;
        QList<Wait> waits;
    };

    void listen(bool on);
    void offer(int index, const FrameTokenPtr &frame);
    void encoded(int index, const QByteArray &jpeg);
    void expire();
    Source &source(int index) { return m_sources[std::size_t(index)]; }

    Engine &m_engine;
    QThreadPool m_pool;
    std::array<Source, 5> m_sources; // 0: the program, 1..4: the channels
    QTimer *m_timer = nullptr;
    qint64 m_lastRequestMs = -1;
    bool m_listening = false;
    qint64 m_skipped = 0;
    std::array<bool, 4> m_empty{}; // channels told idle (no source)
};

} // namespace selvane::control
