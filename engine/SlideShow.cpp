#include "engine/SlideShow.h"

#include <QCoreApplication>
#include <QDebug>
#include <QImageReader>
#include <QPointer>
#include <QThreadPool>
#include <QTimer>

namespace selvane {

SlideShow::SlideShow(QObject *parent) : QObject(parent)
{
    m_timer = new QTimer(this);
    m_timer->setTimerType(Qt::PreciseTimer);
    connect(m_timer, &QTimer::timeout, this, &SlideShow::advance);
}

SlideShow::~SlideShow()
{
    *m_alive = false;
}

void SlideShow::play(const QStringList &paths, int intervalMs, bool loop)
{
    stop();
    m_paths = paths;
    m_intervalMs = std::max(1, intervalMs);
    m_loop = loop;
    m_playing = true;
    m_index = 0;
    m_shown = 0;
    m_due = true; // the first slide goes on air as soon as it is decoded
    if (m_paths.isEmpty()) {
        emit slide(QImage(), 0);
        return;
    }
    load(0);
    m_timer->start(m_intervalMs);
}

void SlideShow::stop()
{
    m_timer->stop();
    m_playing = false;
    ++m_generation;
    m_ready = QImage();
    m_current = QImage();
    m_readyIndex = -1;
    m_due = false;
}

void SlideShow::load(int index)
{
    const quint64 generation = m_generation;
    const QString path = m_paths.value(index);
    const std::weak_ptr<bool> alive = m_alive;
    QPointer<SlideShow> self(this);
    QThreadPool::globalInstance()->start([generation, index, path, alive, self] {
        QImageReader reader(path);
        reader.setAutoTransform(true);
        const QImage image = reader.read();
        if (image.isNull())
            qWarning().noquote() << "SlideShow: cannot read image" << path << "-"
                                 << reader.errorString();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [generation, index, image, alive, self] {
                if (!alive.expired() && self)
                    self->onLoaded(generation, index, image);
            },
            Qt::QueuedConnection);
    });
}

void SlideShow::onLoaded(quint64 generation, int index, QImage image)
{
    if (generation != m_generation || !m_playing)
        return;
    m_readyIndex = index;
    m_ready = image;
    if (m_due) {
        m_due = false;
        putReadyOnAir();
    }
}

void SlideShow::putReadyOnAir()
{
    const int index = m_readyIndex;
    m_index = index;
    m_readyIndex = -1;
    // A picture that could not be read keeps the previous one (black for the first).
    if (!m_ready.isNull() || m_shown == 0) {
        m_current = m_ready;
        emit slide(m_current, m_shown);
    }
    // Decode the one after it while this one shows.
    const int next = index + 1 < m_paths.size() ? index + 1 : (m_loop ? 0 : -1);
    if (next >= 0 && next != index)
        load(next);
}

void SlideShow::advance()
{
    int next = m_index + 1;
    if (next >= m_paths.size()) {
        if (!m_loop) {
            m_timer->stop(); // the last picture stays
            return;
        }
        next = 0;
    }
    ++m_shown;
    if (m_readyIndex == next)
        putReadyOnAir();
    else if (m_paths.size() == 1)
        emit slide(m_current, m_shown); // the one picture stays; its time still counts
    else
        m_due = true;
}

} // namespace selvane
