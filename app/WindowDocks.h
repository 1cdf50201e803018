#pragma once

// The main window's docks: one QDockWidget for each panel around the program preview, their
// titles in the operator's language, and the default workspace (the output controls and the
// graphics panels as tabs on the left, the output status and the mixer on the right) that
// View -> Reset Workspace Layout brings back.
//
// The docks are children of the window. GUI thread only. Emits nothing.

#include <QObject>
#include <array>

class QDockWidget;
class QMainWindow;
class QWidget;

namespace selvane {

enum DockId
{
    OutputSettingsDock,
    OutputPreviewDock,
    AudioMixerDock,
    TextOverlayDock,
    VideoOverlayDock,
    ImagePlaybackDock,
    DockCount
};

class WindowDocks : public QObject
{
    Q_OBJECT

public:
    // One dock per body, in DockId order; the output settings are given a scroll area.
    WindowDocks(QMainWindow *window, const std::array<QWidget *, DockCount> &bodies);

    QDockWidget *dock(DockId id) const { return m_docks[id]; }
    void resetLayout();
    // The docks' sizes of a first start, once the window has its own size.
    void sizeForFirstStart();
    void retranslate();
    static QString title(DockId id);

private:
    QMainWindow *m_window = nullptr;
    std::array<QDockWidget *, DockCount> m_docks{};
};

} // namespace selvane
