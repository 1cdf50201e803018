#include "app/WindowDocks.h"

#include <QDockWidget>
#include <QMainWindow>
#include <QScrollArea>
#include <QScrollBar>
#include <algorithm>

namespace selvane {

WindowDocks::WindowDocks(QMainWindow *window, const std::array<QWidget *, DockCount> &bodies)
    : QObject(window), m_window(window)
{
    static const char *const kObjectNames[DockCount] = {"outputSettingsDock", "outputPreviewDock",
                                                        "audioMixerDock",     "textOverlayDock",
                                                        "videoOverlayDock",   "imagePlaybackDock"};
    for (int i = 0; i < DockCount; ++i) {
        auto *dock = new QDockWidget(window);
        dock->setObjectName(kObjectNames[i]);
        QWidget *body = bodies[std::size_t(i)];
        int minimumWidth = 220;
        if (i == OutputSettingsDock) {
            auto *scroll = new QScrollArea(dock);
            scroll->setWidgetResizable(true);
            scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
            scroll->setWidget(body);
            // Wide enough for the panel's narrowest form and the scroll bar beside it.
            minimumWidth = std::max(320, body->minimumSizeHint().width() +
                                             scroll->verticalScrollBar()->sizeHint().width() +
                                             2 * scroll->frameWidth());
            body = scroll;
        }
        body->setMinimumSize(minimumWidth, 120);
        dock->setWidget(body);
        m_docks[std::size_t(i)] = dock;
    }
}

QString WindowDocks::title(DockId id)
{
    switch (id) {
    case OutputSettingsDock:
        return tr("Output Settings");
    case OutputPreviewDock:
        return tr("Output Preview");
    case AudioMixerDock:
        return tr("Audio Mixer");
    case TextOverlayDock:
        return tr("Text Overlay");
    case VideoOverlayDock:
        return tr("Video Overlay");
    case ImagePlaybackDock:
        return tr("Image Playback");
    case DockCount:
        break;
    }
    return {};
}

void WindowDocks::retranslate()
{
    for (int i = 0; i < DockCount; ++i) {
        const QString text = title(DockId(i));
        m_docks[std::size_t(i)]->setWindowTitle(text);
        m_docks[std::size_t(i)]->setAccessibleName(text);
    }
}

void WindowDocks::resetLayout()
{
    const std::array<std::pair<DockId, Qt::DockWidgetArea>, DockCount> placement{{
        {OutputSettingsDock, Qt::LeftDockWidgetArea},
        {OutputPreviewDock, Qt::RightDockWidgetArea},
        {AudioMixerDock, Qt::RightDockWidgetArea},
        {TextOverlayDock, Qt::LeftDockWidgetArea},
        {VideoOverlayDock, Qt::LeftDockWidgetArea},
        {ImagePlaybackDock, Qt::LeftDockWidgetArea},
    }};
    for (const auto &[id, area] : placement) {
        QDockWidget *dock = m_docks[id];
        dock->setFloating(false);
        m_window->addDockWidget(area, dock);
        dock->setVisible(true);
    }
    m_window->splitDockWidget(m_docks[OutputPreviewDock], m_docks[AudioMixerDock], Qt::Vertical);
    m_window->tabifyDockWidget(m_docks[OutputSettingsDock], m_docks[TextOverlayDock]);
    m_window->tabifyDockWidget(m_docks[TextOverlayDock], m_docks[VideoOverlayDock]);
    m_window->tabifyDockWidget(m_docks[VideoOverlayDock], m_docks[ImagePlaybackDock]);
    m_docks[OutputSettingsDock]->raise();
    sizeForFirstStart();
    m_window->resizeDocks({m_docks[OutputPreviewDock], m_docks[AudioMixerDock]}, {160, 420},
                          Qt::Vertical);
}

void WindowDocks::sizeForFirstStart()
{
    m_window->resizeDocks({m_docks[OutputSettingsDock], m_docks[AudioMixerDock]}, {340, 400},
                          Qt::Horizontal);
}

} // namespace selvane
