#pragma once

// Still pictures as the program: a list of image files shown in turn, each for an interval,
// restarting at the end when looping. Image files are decoded on the global thread pool, the
// next one while the current one shows; a picture that cannot be read keeps the previous one.
//
// Threads: lives on the GUI thread (its timer and signals); decoding never runs there.

#include <QImage>
#include <QObject>
#include <QStringList>
#include <memory>

class QTimer;

namespace selvane {

class SlideShow : public QObject
{
    Q_OBJECT

public:
    explicit SlideShow(QObject *parent = nullptr);
    ~SlideShow() override;

    void play(const QStringList &paths, int intervalMs, bool loop);
    void stop();
    bool isPlaying() const { return m_playing; }

signals:
    // The picture to put on air; `shown` counts the slides shown so far, from 0.
    void slide(QImage image, int shown);

private:
    void load(int index);
    void onLoaded(quint64 generation, int index, QImage image);
    void advance();
    void putReadyOnAir();

    QTimer *m_timer = nullptr;
    QStringList m_paths;
    int m_intervalMs = 2000;
    bool m_loop = true;
    bool m_playing = false;
    int m_index = 0; // the slide on air
    int m_shown = 0;
    quint64 m_generation = 0;
    int m_readyIndex = -1; // the decoded next slide, if any
    QImage m_ready;
    QImage m_current;
    bool m_due = false; // the next slide's time has come before it was decoded
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace selvane
