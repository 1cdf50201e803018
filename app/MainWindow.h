#pragma once

// The mixer window: the program preview in the centre, the production desk (preview monitor,
// transitions, T-bar, fade to black) beside it and the four channel panels under them,
// the panels as docks around it (output settings, output status, audio mixer), a status bar,
// and the menus. It builds them and wires them to the engine; what it decides is the window's
// own: the language, the layout, and a close that waits (without blocking) for the outputs'
// trailers. The engine decides everything about media and says why it refuses; the window shows
// its words (an output refusal in a box titled "Output").
//
// Owns: the engine, the preview scaler, every panel. GUI thread only. Emits
// programArrangementRunningChanged when the schedule starts or stops.

#include "app/WindowDocks.h"
#include "show/ShowOptions.h"

#include <QMainWindow>
#include <array>

namespace selvane {
class AudioMixerPanel;
class ChannelPanel;
class DrawingToolBar;
class ImagePlaybackPanel;
class MediaOverlayPanel;
class PreviewCanvas;
class ScheduleWindow;
class WindowDocks;
class WindowMenus;
class StatusPanel;
class Engine;
class OutputSettingsPanel;
class OutputStatusView;
class PreviewImages;
class ProgramPreview;
class ProductionPanel;
class MultiviewWindow;
struct EngineStats;
struct OutputSettings;
} // namespace selvane
class QDockWidget;
class QLabel;
class QMenu;
class QTimer;

class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    bool isChinese() const { return m_chinese; }
    // Ignores a call that does not change the language; otherwise persists `ui_language` and
    // re-reads every text of the window.
    void setLanguage(bool chinese);

    // The docks, in their fixed order.
    using DockId = selvane::DockId;
    using enum selvane::DockId;
    QDockWidget *dock(DockId id) const;
    selvane::Engine *engine() const { return m_engine; }
    selvane::ProgramPreview *programPreview() const { return m_preview; }
    selvane::ChannelPanel *channelPanel(int channel) const { return m_channels[channel]; }
    selvane::OutputSettingsPanel *outputPanel() const { return m_outputPanel; }
    selvane::AudioMixerPanel *mixerPanel() const { return m_mixerPanel; }
    selvane::MediaOverlayPanel *mediaOverlayPanel() const { return m_mediaPanel; }
    selvane::ImagePlaybackPanel *imagePlaybackPanel() const { return m_imagePanel; }
    selvane::DrawingToolBar *drawingTools() const { return m_drawingTools; }
    selvane::PreviewCanvas *previewCanvas() const { return m_canvas; }
    // Tools -> Program Scheduling: the schedule editor, made on first use and kept.
    selvane::ScheduleWindow *scheduleWindow();

    // Puts a show of the command line on the engine (channels, base, overlays, volumes, a
    // schedule) and shows its outputs in the output panel; `startOutputs` starts them at once.
    // False with the operator's reason when the show cannot be loaded.
    bool loadShow(const selvane::ShowOptions &show, bool startOutputs, QString *error);

    // Ends the outputs cleanly (trailers written) and closes without asking: SIGTERM.
    void closeForShutdown();

public slots:
    void openOutputFolder();
    // File -> Export Drawing: the drawing as a PNG at the program's size.
    void exportDrawing();
    // Writes the drawing to `path`; false with a box saying why.
    bool exportDrawingTo(const QString &path);
    void showDrawingTools(bool shown);
    void resetWorkspaceLayout();
    void showAbout();
    // The Start button: the checks, then the engine. False when refused (a box said why).
    bool startOutputs();
    void stopOutputs();
    // The panel's buttons, the tally and the Start/Stop actions follow the outputs.
    void showOutputsRunning(bool running);
    // The Choose Source button of a channel (0..3): the source dialog, the guard, the engine.
    void chooseSource(int channel);
    void take(int channel);

signals:
    void programArrangementRunningChanged(bool running);

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void createMenus();
    void createCentralArea();
    void createDocks();
    void createStatusBar();
    void connectEngine();
    void retranslateUi();
    void refreshStats();
    // Opens or closes the multiview; its pictures are made only while it is open.
    void showMultiview(bool show);
    void sizeMultiview();
    // What the mouse does on the program preview: draw, move overlay frames, or nothing.
    void updateCanvas();
    bool startOutputsWith(const selvane::OutputSettings &settings, bool fromPanel);
    void refuse(const QString &text);

    bool m_chinese = false;
    bool m_closingForShutdown = false;
    bool m_closeWhenStopped = false; // a close waits for the outputs to stop
    bool m_closeWaitOver = false;
    selvane::Engine *m_engine = nullptr;
    selvane::PreviewImages *m_previews = nullptr;
    selvane::ProgramPreview *m_preview = nullptr;
    selvane::ProductionPanel *m_production = nullptr;
    selvane::MultiviewWindow *m_multiview = nullptr;
    std::array<selvane::ChannelPanel *, 4> m_channels{};
    selvane::OutputSettingsPanel *m_outputPanel = nullptr;
    selvane::OutputStatusView *m_outputStatus = nullptr;
    selvane::AudioMixerPanel *m_mixerPanel = nullptr;
    selvane::MediaOverlayPanel *m_mediaPanel = nullptr;
    selvane::ImagePlaybackPanel *m_imagePanel = nullptr;
    selvane::DrawingToolBar *m_drawingTools = nullptr;
    selvane::PreviewCanvas *m_canvas = nullptr;
    selvane::ScheduleWindow *m_scheduleWindow = nullptr;

    QTimer *m_statsTimer = nullptr;
    int m_statsTicks = 0;
    int m_recordingFailures = 0;
    selvane::StatusPanel *m_status = nullptr;

    selvane::WindowMenus *m_menus = nullptr;
    selvane::WindowDocks *m_docks = nullptr;
};
