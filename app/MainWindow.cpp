#include "app/MainWindow.h"

#include "Version.h"
#include "app/FailoverDesk.h"
#include "app/Language.h"
#include "app/OperatorTexts.h"
#include "app/OutputTimesDesk.h"
#include "app/Theme.h"
#include "app/UpdateNotice.h"
#include "app/WindowDocks.h"
#include "app/WindowMenus.h"
#include "engine/Engine.h"
#include "engine/PreviewImages.h"
#include "media/StoredSettings.h"
#include "panels/AudioMixerPanel.h"
#include "panels/ChannelPanel.h"
#include "panels/DrawingToolBar.h"
#include "panels/FailoverBox.h"
#include "panels/ImagePlaybackPanel.h"
#include "panels/MediaOverlayPanel.h"
#include "panels/MultiviewWindow.h"
#include "panels/OutputFolder.h"
#include "panels/OutputSettingsPanel.h"
#include "panels/OutputStatusView.h"
#include "panels/OutputTimesBox.h"
#include "panels/PreviewCanvas.h"
#include "panels/ProductionPanel.h"
#include "panels/ProgramPreview.h"
#include "panels/ProxyDialog.h"
#include "panels/ScheduleWindow.h"
#include "panels/SourceDialog.h"
#include "panels/StatusPanel.h"
#include "panels/TextOverlayPanel.h"
#include "show/ShowLoader.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDateTime>
#include <QDebug>
#include <QDesktopServices>
#include <QDir>
#include <QDockWidget>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QScreen>
#include <QSettings>
#include <QSplitter>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTimer>
#include <QUndoStack>
#include <QUrl>
#include <QVBoxLayout>

using namespace selvane;

namespace {

constexpr int kProgramStream = 0;
constexpr int kPreviewBusStream = 5; // after the four channels' thumbnails
constexpr int kMultiviewStream = 10; // + the multiview's tile
constexpr int kStatsIntervalMs = 40; // meters at 25 updates a second
constexpr int kCloseWaitMs = 15000;  // the longest a close waits for the outputs' trailers
constexpr int kThumbnailsPerSecond = 5;
const QSize kThumbnailSize(256, 144);

} // namespace

MainWindow::MainWindow(QWidget *parent) : QMainWindow(parent)
{
    m_chinese = loadChineseLanguageFlag();
    installUiTranslator(m_chinese);
    applyDarkTheme(*qApp);

    // The engine: pipeline, overlays and the preview audio mixer on its own thread.
    m_engine = new Engine(this);
    m_engine->startAudio();
    m_previews = new PreviewImages(this);

    setObjectName("MainWindow");
    setWindowTitle("Selvane");
    setDockOptions(QMainWindow::AnimatedDocks | QMainWindow::AllowNestedDocks |
                   QMainWindow::AllowTabbedDocks);

    createCentralArea();
    createMenus();
    createDocks();
    createStatusBar();
    connectEngine();
    // Without a window manager (a bare X server) maximising does nothing: take the screen.
    if (QScreen *screen = QGuiApplication::primaryScreen())
        setGeometry(screen->availableGeometry());
    showMaximized();
    resetWorkspaceLayout();
    // The operator's own arrangement of the docks, from the last session.
    StoredSettings settings;
    restoreGeometry(settings.value("window/geometry").toByteArray());
    restoreState(settings.value("window/state").toByteArray());
    retranslateUi();
    // Dock sizes take once the window has its own size.
    if (settings.value("window/state").isNull())
        QTimer::singleShot(0, m_docks, &WindowDocks::sizeForFirstStart);

    m_statsTimer = new QTimer(this);
    m_statsTimer->setTimerType(Qt::PreciseTimer);
    connect(m_statsTimer, &QTimer::timeout, this, &MainWindow::refreshStats);
    m_statsTimer->start(kStatsIntervalMs);
}

MainWindow::~MainWindow()
{
    m_statsTimer->stop();
    m_engine->setProgramPictureTap({}); // the scaler goes with the window
    // Docks and tool bars are hidden as the window goes: what they tell must no longer reach it
    // (it is no MainWindow any more by then).
    disconnect(m_docks->dock(VideoOverlayDock), nullptr, this, nullptr);
    disconnect(m_drawingTools, nullptr, this, nullptr);
    disconnect(m_mediaPanel, nullptr, this, nullptr);
    // The audio thread stops within fixed limits before anything else goes.
    m_engine->shutdownAudio();
}

void MainWindow::createCentralArea()
{
    auto *central = new QSplitter(Qt::Vertical, this);
    central->setObjectName("centralSplitter");
    central->setChildrenCollapsible(false);
    // Preview on the left, program on the right, as on a desk.
    auto *monitors = new QSplitter(Qt::Horizontal, central);
    monitors->setObjectName("monitorSplitter");
    monitors->setChildrenCollapsible(false);
    m_production = new ProductionPanel(monitors);
    m_preview = new ProgramPreview(monitors);
    monitors->addWidget(m_production);
    monitors->addWidget(m_preview);
    monitors->setStretchFactor(0, 2);
    monitors->setStretchFactor(1, 3);
    QString renderer;
    if (ProgramPreview::gpuWanted(&renderer)) {
        m_preview->useGpu();
        qInfo().noquote() << "Program preview: drawn by the graphics card (" + renderer + ")";
    } else {
        qInfo().noquote() << "Program preview: scaled on the processor"
                          << (renderer.isEmpty() ? "(no GL here)" : "(" + renderer + ")");
    }
    auto *row = new QWidget(central);
    row->setObjectName("channelRow");
    auto *rowLayout = new QHBoxLayout(row);
    rowLayout->setContentsMargins(4, 4, 4, 4);
    for (int c = 0; c < kChannelCount; ++c) {
        auto *panel = new ChannelPanel(c, row);
        m_channels[std::size_t(c)] = panel;
        panel->setOnProgram(c == m_engine->programChannel());
        rowLayout->addWidget(panel);
        connect(panel, &ChannelPanel::chooseSourceRequested, this, [this, c] { chooseSource(c); });
        connect(panel, &ChannelPanel::clearRequested, this, [this, c] {
            m_engine->clearChannel(c);
            m_channels[std::size_t(c)]->setError({});
        });
        connect(panel, &ChannelPanel::pauseRequested, this, [this, c](bool pause) {
            pause ? m_engine->pauseChannel(c) : m_engine->resumeChannel(c);
        });
        connect(panel, &ChannelPanel::loopRequested, this,
                [this, c](bool loop) { m_engine->setChannelLoop(c, loop); });
        connect(panel, &ChannelPanel::seekRequested, this,
                [this, c](qint64 ms) { m_engine->seekChannel(c, ms); });
        connect(panel, &ChannelPanel::previewRequested, this,
                [this, c] { m_engine->setPreviewChannel(c); });
    }
    // The operator's mouse on the program: overlay frames and the drawing tools.
    m_canvas = new PreviewCanvas(m_preview);
    central->addWidget(monitors);
    central->addWidget(row);
    central->setStretchFactor(0, 3);
    central->setStretchFactor(1, 1);
    setCentralWidget(central);

    if (!m_preview->usesGpu()) {
        // Drawn by the processor: the picture shrunk by a whole factor to fit, no scaler.
        connect(m_preview, &ProgramPreview::displaySizeChanged, this, [this](QSize size) {
            m_previews->setSize(kProgramStream, size, 0, PreviewImages::Fit::WholeSteps);
        });
        m_previews->setSize(kProgramStream, m_preview->displaySize(), 0,
                            PreviewImages::Fit::WholeSteps);
    }
    for (int c = 0; c < kChannelCount; ++c)
        m_previews->setSize(1 + c, kThumbnailSize, kThumbnailsPerSecond);
    // The preview bus's pictures at the monitor's size, set when it changes (not per picture).
    connect(m_production, &ProductionPanel::monitorResized, this,
            [this](QSize size) { m_previews->setSize(kPreviewBusStream, size); });
    m_previews->setSize(kPreviewBusStream, m_production->monitorSize());
    m_engine->setChannelPreviewRate(kThumbnailsPerSecond);
    connect(m_previews, &PreviewImages::ready, this, [this](int stream) {
        const QImage image = m_previews->take(stream);
        if (stream == kProgramStream)
            m_preview->showImage(image);
        else if (stream >= 1 && stream <= kChannelCount)
            m_channels[std::size_t(stream - 1)]->setThumbnail(image);
        else if (stream == kPreviewBusStream)
            m_production->setPreviewImage(image);
        else if (stream >= kMultiviewStream && m_multiview)
            m_multiview->setImage(stream - kMultiviewStream, image);
    });
}

void MainWindow::connectEngine()
{
    if (m_preview->usesGpu()) {
        connect(m_engine, &Engine::programFrame, this, [this](const FrameTokenPtr &frame, int) {
            m_preview->showFrame(frame);
            m_previews->submit(kMultiviewStream + MultiviewWindow::ProgramTile, frame);
        });
    } else {
        // Straight from the program thread to the scaler: the window thread sees only images.
        PreviewImages *previews = m_previews;
        m_engine->setProgramPictureTap([previews](const FrameTokenPtr &frame) {
            previews->submit(kProgramStream, frame);
            // Nothing is made for the multiview while it is closed (its size is then empty).
            previews->submit(kMultiviewStream + MultiviewWindow::ProgramTile, frame);
        });
    }
    connect(m_engine, &Engine::channelPreview, this, [this](int c, const FrameTokenPtr &frame) {
        m_previews->submit(1 + c, frame);
        m_previews->submit(kMultiviewStream + MultiviewWindow::FirstChannelTile + c, frame);
        if (c == m_engine->previewChannel()) {
            m_previews->submit(kPreviewBusStream, frame);
            m_previews->submit(kMultiviewStream + MultiviewWindow::PreviewTile, frame);
        }
    });
    // The production desk shows what the engine says, whoever changed it.
    connect(m_engine, &Engine::previewChannelChanged, this, [this](int channel) {
        m_production->setPreviewChannel(channel);
        for (int c = 0; c < kChannelCount; ++c)
            m_channels[std::size_t(c)]->setOnPreview(c == channel);
    });
    connect(m_engine, &Engine::transitionChanged, m_production, &ProductionPanel::setTransition);
    const auto showStinger = [this] {
        const Transition transition = m_engine->transition();
        m_production->setStingerInfo(
            m_engine->stingerInfo(transition.stingerFile, transition.cutMs));
    };
    connect(m_engine, &Engine::transitionChanged, this, showStinger);
    connect(m_engine, &Engine::stingerLoaded, this, showStinger);
    connect(m_engine, &Engine::stingerFailed, this, showStinger);
    connect(m_engine, &Engine::tbarChanged, m_production, &ProductionPanel::setTBar);
    connect(m_engine, &Engine::fadeToBlackChanged, m_production, &ProductionPanel::setFadedToBlack);
    connect(m_production, &ProductionPanel::transitionChosen, m_engine, &Engine::setTransition);
    connect(m_production, &ProductionPanel::directTakesChosen, m_engine,
            &Engine::setDirectTakesUseTransition);
    connect(m_production, &ProductionPanel::tbarMoved, m_engine, &Engine::setTBar);
    connect(m_engine, &Engine::channelError, this,
            [this](int channel, SourceError error, const QString &) {
                const QString text = sourceErrorText(error);
                if (channel >= 0 && channel < kChannelCount)
                    m_channels[std::size_t(channel)]->setError(text);
                statusBar()->showMessage(tr("Channel %1: %2").arg(channel + 1).arg(text), 10000);
            });
    connect(m_engine, &Engine::programChannelChanged, this, [this](int channel) {
        for (int c = 0; c < kChannelCount; ++c)
            m_channels[std::size_t(c)]->setOnProgram(c == channel);
    });
    connect(m_engine, &Engine::outputsStarted, this, [this](QSize) { showOutputsRunning(true); });
    connect(m_engine, &Engine::outputsStopped, this, [this] { showOutputsRunning(false); });
    connect(m_engine, &Engine::outputsFailed, this, [this](const Problem &problem) {
        qWarning().noquote() << "programOutputTransportFailed:"
                             << problemText(problem, ProblemLanguage::English);
        showOutputsRunning(false);
        refuse(problemText(problem));
    });
    connect(m_engine, &Engine::streamStatusChanged, this, [this](int index, const QString &status) {
        m_outputPanel->setTargetStatus(index, status);
    });
    connect(m_engine, &Engine::scheduleRunningChanged, this,
            &MainWindow::programArrangementRunningChanged);
}

void MainWindow::createMenus()
{
    m_menus = new WindowMenus(menuBar(), this);
    // One action each for the menu, the panels' buttons and the key.
    for (int c = 0; c < kChannelCount; ++c) {
        QAction *take = m_menus->take[std::size_t(c)];
        connect(take, &QAction::triggered, this, [this, c] { this->take(c); });
        connect(m_channels[std::size_t(c)], &ChannelPanel::takeRequested, take, &QAction::trigger);
    }
    for (int c = 0; c < kChannelCount; ++c)
        connect(m_menus->preview[std::size_t(c)], &QAction::triggered, this,
                [this, c] { m_engine->setPreviewChannel(c); });
    connect(m_menus->takePreview, &QAction::triggered, m_engine, &Engine::take);
    connect(m_menus->cutPreview, &QAction::triggered, m_engine, &Engine::cutToPreview);
    connect(m_menus->fadeToBlack, &QAction::triggered, m_engine, &Engine::toggleFadeToBlack);
    m_production->useActions(m_menus->takePreview, m_menus->cutPreview, m_menus->fadeToBlack);
    connect(m_menus->multiview, &QAction::toggled, this, &MainWindow::showMultiview);
    connect(m_menus->startOutputs, &QAction::triggered, this, &MainWindow::startOutputs);
    connect(m_menus->stopOutputs, &QAction::triggered, this, &MainWindow::stopOutputs);
    connect(m_menus->exportDrawing, &QAction::triggered, this, &MainWindow::exportDrawing);
    connect(m_menus->proxy, &QAction::triggered, this, [this] {
        ProxyDialog dialog(this);
        dialog.exec();
    });
    connect(m_menus->scheduling, &QAction::triggered, this, [this] {
        ScheduleWindow *window = scheduleWindow();
        window->show();
        window->raise();
        window->activateWindow();
    });
    connect(m_menus->drawingTools, &QAction::toggled, this, &MainWindow::showDrawingTools);
    connect(m_menus->openOutputFolder, &QAction::triggered, this, &MainWindow::openOutputFolder);
    connect(m_menus->exit, &QAction::triggered, this, &QWidget::close);
    connect(m_menus->resetLayout, &QAction::triggered, this, &MainWindow::resetWorkspaceLayout);
    connect(m_menus->english, &QAction::triggered, this, [this] { setLanguage(false); });
    connect(m_menus->chinese, &QAction::triggered, this, [this] { setLanguage(true); });
    connect(m_menus->about, &QAction::triggered, this, &MainWindow::showAbout);
}

void MainWindow::createDocks()
{
    m_outputPanel = new OutputSettingsPanel(this);
    m_outputStatus = new OutputStatusView(this);
    m_mixerPanel = new AudioMixerPanel(m_engine, this);
    m_mediaPanel = new MediaOverlayPanel(m_engine, this);
    m_imagePanel = new ImagePlaybackPanel(m_engine, this);
    connect(m_outputPanel, &OutputSettingsPanel::startOutputsRequested, m_menus->startOutputs,
            &QAction::trigger);
    connect(m_outputPanel, &OutputSettingsPanel::stopOutputsRequested, m_menus->stopOutputs,
            &QAction::trigger);
    connect(m_outputPanel, &OutputSettingsPanel::programGainChanged, this,
            [this](float gain) { m_engine->setProgramGain(gain); });
    m_engine->setProgramGain(float(m_outputPanel->gainPercent() / 100.0));
    // What the panel shows is what the next start uses: the engine checks sources against it,
    // and the remote control starts with it.
    const auto prepare = [this] {
        m_engine->setPreparedOutputs(m_outputPanel->settings());
    };
    connect(m_outputPanel, &OutputSettingsPanel::settingsChanged, this, prepare);
    prepare();
    // Failover: its settings beside the outputs, the backups on the channel panels.
    auto *failover = new FailoverBox(m_outputPanel);
    m_outputPanel->addSection(failover);
    new FailoverDesk(*m_engine, m_channels, failover, m_production, this);
    auto *times = new OutputTimesBox(m_outputPanel);
    m_outputPanel->addSection(times);
    new OutputTimesDesk(*m_engine, times, this);

    m_docks =
        new WindowDocks(this, {m_outputPanel, m_outputStatus, m_mixerPanel,
                               new TextOverlayPanel(m_engine, this), m_mediaPanel, m_imagePanel});
    connect(m_docks->dock(VideoOverlayDock), &QDockWidget::visibilityChanged, this,
            &MainWindow::updateCanvas);

    // The drawing tools: a tool bar above the preview, shown from the View menu.
    m_drawingTools = new DrawingToolBar(m_engine, this);
    m_menus->edit->addAction(m_drawingTools->undoAction());
    m_menus->edit->addAction(m_drawingTools->redoAction());
    addToolBar(Qt::TopToolBarArea, m_drawingTools);
    m_drawingTools->hide();
    connect(m_drawingTools, &DrawingToolBar::toolChanged, this, &MainWindow::updateCanvas);
    connect(m_drawingTools, &DrawingToolBar::penChanged, this, &MainWindow::updateCanvas);
    connect(m_drawingTools, &QToolBar::visibilityChanged, this, [this](bool shown) {
        const QSignalBlocker block(m_menus->drawingTools);
        m_menus->drawingTools->setChecked(shown);
        updateCanvas();
    });
    connect(m_canvas, &PreviewCanvas::strokeDrawn, m_drawingTools, &DrawingToolBar::addStroke);
    connect(m_canvas, &PreviewCanvas::erased, m_drawingTools, &DrawingToolBar::eraseAt);
    connect(m_canvas, &PreviewCanvas::frameChanged, m_mediaPanel, &MediaOverlayPanel::moveOverlay);
    connect(m_canvas, &PreviewCanvas::frameSelected, m_mediaPanel, &MediaOverlayPanel::select);
    connect(m_mediaPanel, &MediaOverlayPanel::framesChanged, this, &MainWindow::updateCanvas);
}

void MainWindow::updateCanvas()
{
    if (m_drawingTools->isVisible() && m_drawingTools->tool() != DrawingToolBar::Tool::None) {
        m_canvas->setPen(m_drawingTools->penColour(), m_drawingTools->penWidth());
        m_canvas->setEraserWidth(m_drawingTools->eraserWidth());
        m_canvas->setMode(m_drawingTools->tool() == DrawingToolBar::Tool::Pen
                              ? PreviewCanvas::Mode::Pen
                              : PreviewCanvas::Mode::Eraser);
        return;
    }
    // The overlays' frames while their panel is in view.
    QList<PreviewCanvas::Frame> frames;
    if (!m_docks->dock(VideoOverlayDock)->visibleRegion().isEmpty())
        for (const MediaOverlayRecord &record : m_mediaPanel->editableOverlays())
            frames.append({record.id, record.rect, QFileInfo(record.filePath).fileName()});
    m_canvas->setFrames(frames, m_mediaPanel->selectedId());
    m_canvas->setMode(frames.isEmpty() ? PreviewCanvas::Mode::Off : PreviewCanvas::Mode::Frames);
}

ScheduleWindow *MainWindow::scheduleWindow()
{
    if (!m_scheduleWindow) {
        // A window of its own, deleted with the main window.
        m_scheduleWindow = new ScheduleWindow(m_engine, this);
        m_scheduleWindow->resize(960, 680);
        // Its history in the Edit menu as well; its keys work in its own window.
        QUndoStack *history = m_scheduleWindow->undoStack();
        QMenu *edit = m_menus->edit;
        edit->addSeparator();
        edit->addAction(history->createUndoAction(edit, tr("Schedule: Undo")));
        edit->addAction(history->createRedoAction(edit, tr("Schedule: Redo")));
    }
    return m_scheduleWindow;
}

void MainWindow::showDrawingTools(bool shown)
{
    m_drawingTools->setVisible(shown);
    if (shown && m_drawingTools->tool() == DrawingToolBar::Tool::None)
        m_drawingTools->setTool(DrawingToolBar::Tool::Pen);
    updateCanvas();
}

void MainWindow::exportDrawing()
{
    if (m_drawingTools->strokes().isEmpty()) {
        QMessageBox::information(this, tr("Export Drawing"),
                                 tr("There is no drawing to export yet. Draw on the program "
                                    "preview with View -> Drawing Tools."));
        return;
    }
    const QString path = QFileDialog::getSaveFileName(
        this, tr("Export Drawing"), QDir(recordingDirectory()).filePath("drawing.png"),
        tr("PNG image (*.png)"));
    if (!path.isEmpty())
        exportDrawingTo(path);
}

bool MainWindow::exportDrawingTo(const QString &path)
{
    const QSize size =
        m_engine->programSize().isValid() ? m_engine->programSize() : QSize(1920, 1080);
    QString error;
    if (!m_drawingTools->exportPng(path, size, &error)) {
        QMessageBox::warning(this, tr("Export Drawing"),
                             tr("Unable to write the file.") + "\n" + error);
        return false;
    }
    statusBar()->showMessage(tr("Drawing exported to %1").arg(path), 8000);
    return true;
}

void MainWindow::createStatusBar()
{
    m_status = new StatusPanel(this);
    statusBar()->addPermanentWidget(m_status);

    // A newer version is looked for once, when the window starts, where the settings say.
    const QString manifest =
        StoredSettings().value(UpdateCheck::kManifestUrlKey).toString().trimmed();
    if (!manifest.isEmpty()) {
        auto *updates = new UpdateCheck(QStringLiteral(SELVANE_VERSION_STRING), this);
        QString folder = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
        if (folder.isEmpty())
            folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
        statusBar()->addWidget(new UpdateNotice(updates, folder, this));
        updates->check(QUrl(manifest));
    }
}

QDockWidget *MainWindow::dock(DockId id) const
{
    return m_docks->dock(id);
}

void MainWindow::resetWorkspaceLayout()
{
    m_docks->resetLayout();
}

void MainWindow::setLanguage(bool chinese)
{
    if (chinese == m_chinese)
        return;
    m_chinese = chinese;
    storeLanguageFlag(chinese);
    if (!installUiTranslator(chinese))
        qWarning() << "MainWindow: Chinese translation could not be loaded";
    retranslateUi();
}

void MainWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslateUi();
    QMainWindow::changeEvent(event);
}

void MainWindow::retranslateUi()
{
    m_menus->retranslate(m_chinese);
    m_docks->retranslate();
    refreshStats();
}

// ---- stats: meters 25 times a second, panels 4 times, the status bar once ----

void MainWindow::showMultiview(bool show)
{
    if (!show) {
        if (m_multiview)
            m_multiview->close(); // its closed() lets go of its pictures
        return;
    }
    if (!m_multiview) {
        m_multiview = new MultiviewWindow(this);
        connect(m_multiview, &MultiviewWindow::tilesResized, this, &MainWindow::sizeMultiview);
        connect(m_multiview, &MultiviewWindow::closed, this, [this] {
            for (int t = 0; t < MultiviewWindow::kTiles; ++t)
                m_previews->setSize(kMultiviewStream + t, {});
            const QSignalBlocker block(m_menus->multiview);
            m_menus->multiview->setChecked(false);
        });
    }
    m_multiview->show();
    m_multiview->raise();
    sizeMultiview();
    const EngineStats stats = m_engine->stats();
    m_multiview->setTally(stats.program.channel, stats.program.preview);
    for (int c = 0; c < kChannelCount; ++c)
        m_multiview->setSource(c, stats.channels[std::size_t(c)].source);
}

void MainWindow::sizeMultiview()
{
    if (!m_multiview || !m_multiview->isVisible())
        return;
    for (int t = 0; t < MultiviewWindow::kTiles; ++t) {
        // Program and preview at their own rate, the channels as often as the thumbnails.
        const int rate = t == MultiviewWindow::ProgramTile || t == MultiviewWindow::PreviewTile
                             ? 0
                             : kThumbnailsPerSecond;
        m_previews->setSize(kMultiviewStream + t, m_multiview->tileSize(t), rate);
    }
}

void MainWindow::refreshStats()
{
    const EngineStats stats = m_engine->stats();
    m_mixerPanel->showStats(stats);
    const int tick = m_statsTicks++;
    if (tick % 6 != 0)
        return;
    // Words and figures twice a second: a text that changes lays out its panel again, too
    // dear to do for every meter update.
    const bool texts = tick % 12 == 0;
    for (int c = 0; c < kChannelCount && texts; ++c) {
        ChannelPanel *panel = m_channels[std::size_t(c)];
        panel->showStats(stats.channels[std::size_t(c)]);
    }
    if (m_multiview && m_multiview->isVisible()) {
        m_multiview->setProgramLevel(stats.program.audio.peak, stats.program.audio.rms);
        m_multiview->setTally(stats.program.channel, stats.program.preview);
        for (int c = 0; c < kChannelCount && texts; ++c)
            m_multiview->setSource(c, stats.channels[std::size_t(c)].source);
    }
    const int onAir = stats.program.channel;
    const bool noSource =
        onAir >= 0 && (stats.channels[std::size_t(onAir)].state == ChannelState::Idle ||
                       stats.channels[std::size_t(onAir)].state == ChannelState::Failed);
    if ((onAir < 0 && !stats.program.still) || noSource)
        m_preview->showNoSignal();
    m_preview->setTally(stats.output.running);
    // A recording that stops writing is told at once; the streams go on meanwhile.
    const int failures = stats.output.running ? stats.output.file.failures : 0;
    if (failures > m_recordingFailures && stats.output.file.failed)
        refuse(tr("The recording failed: %1\n\nThe streams go on. A new file is tried every "
                  "second and the recording goes on there as soon as writing works.")
                   .arg(stats.output.file.failureReason));
    m_recordingFailures = failures;
    if (!texts)
        return;
    m_outputPanel->showStats(stats.output);
    m_imagePanel->showProgram(stats.program);
    m_outputStatus->showStats(stats.output, stats.program.size, stats.program.fps);
    if (tick % 24 == 0)
        m_status->showStats(stats);
}

// ---- sources and cuts ----

void MainWindow::chooseSource(int channel)
{
    if (channel < 0 || channel >= kChannelCount)
        return;
    SourceDialog dialog(this, channel + 1);
    dialog.setAddress(m_engine->stats().channels[std::size_t(channel)].source);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const SourceChoice choice = dialog.choice();
    if (const Problem problem =
            m_engine->setChannelSource(channel, choice.address, choice.audioSource)) {
        QMessageBox::warning(this, tr("Source"), problemText(problem));
        return;
    }
    m_channels[std::size_t(channel)]->setError({});
}

void MainWindow::take(int channel)
{
    if (channel < 0 || channel >= kChannelCount)
        return;
    m_engine->cutTo(channel);
}

// ---- outputs ----

void MainWindow::refuse(const QString &text)
{
    // Window-modal but not blocking: the meters and previews go on while it is open.
    auto *box = new QMessageBox(QMessageBox::Warning, tr("Output"), text, QMessageBox::Ok, this);
    box->setObjectName("outputMessage");
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

bool MainWindow::startOutputs()
{
    return startOutputsWith(m_outputPanel->settings(), true);
}

bool MainWindow::startOutputsWith(const OutputSettings &requested, bool fromPanel)
{
    if (fromPanel) {
        // An entry made as RTMP must hold an rtmp:// address: what the dialog's kind promised.
        for (const OutputSettingsPanel::TargetEntry &target : m_outputPanel->targets()) {
            if (!target.enabled || (target.kind != "RTMP" && target.kind != "RTMPS"))
                continue;
            const QString scheme = target.kind.toLower();
            if (!target.url().trimmed().startsWith(scheme + "://", Qt::CaseInsensitive)) {
                refuse(tr("Stream %1 expects a %2:// URL.").arg(target.kind, scheme));
                return false;
            }
        }
    }
    OutputSettings settings = requested;
    // A recording folder the operator typed is made, as a file manager would.
    settings.makeRecordingFolder = true;
    if (const Problem problem = m_engine->startOutputs(settings)) {
        refuse(problemText(problem));
        return false;
    }
    showOutputsRunning(true);
    return true;
}

void MainWindow::stopOutputs()
{
    m_engine->stopOutputs();
    if (!m_engine->outputsActive())
        showOutputsRunning(false);
}

void MainWindow::showOutputsRunning(bool running)
{
    m_outputPanel->setOutputsRunning(running);
    m_preview->setTally(running);
    m_menus->startOutputs->setEnabled(!running);
    m_menus->stopOutputs->setEnabled(running);
}

bool MainWindow::loadShow(const ShowOptions &show, bool startOutputs, QString *error)
{
    QStringList warnings;
    const bool loaded = selvane::loadShow(*m_engine, show, &warnings, error);
    for (const QString &warning : warnings)
        qWarning().noquote() << "MainWindow: schedule:" << warning;
    if (!loaded)
        return false;
    if (show.output.fileEnabled)
        m_outputPanel->setRecording(true, show.output.filePath);
    if (!show.output.profiles.isEmpty())
        m_outputPanel->setProfiles(show.output.profiles);
    if (!show.output.streamTargets.isEmpty()) {
        QList<OutputSettingsPanel::TargetEntry> targets;
        for (const StreamTarget &target : show.output.streamTargets) {
            OutputSettingsPanel::TargetEntry entry;
            const QString scheme = QUrl(target.url).scheme().toLower();
            const bool hls = isHlsTarget(target);
            entry.kind = hls                 ? "HLS folder"
                         : scheme == "rtmp"  ? "RTMP"
                         : scheme == "rtmps" ? "RTMPS"
                         : scheme == "srt"   ? "SRT"
                                             : "Custom";
            entry.server = hls || target.formatName.isEmpty()
                               ? target.url
                               : target.url + "#" + target.formatName;
            entry.profile = target.profile;
            entry.hlsSegmentSeconds = target.hlsSegmentSeconds;
            entry.hlsWindow = target.hlsWindow;
            targets << entry;
        }
        m_outputPanel->setTargets(targets);
    }
    if (startOutputs && show.hasOutputs())
        startOutputsWith({show.output, {show.outputSize.isValid(), show.outputSize}}, false);
    return true;
}

// ---- closing ----

void MainWindow::closeForShutdown()
{
    m_closingForShutdown = true;
    close();
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (m_engine->outputsActive() && !m_closingForShutdown && !m_closeWhenStopped) {
        const auto answer = QMessageBox::question(
            this, tr("Outputs are running"),
            tr("Recording or streaming is running. Stop the outputs and close Selvane?"),
            QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
        if (answer != QMessageBox::Yes) {
            event->ignore();
            return;
        }
    }
    if (!m_closeWhenStopped) {
        m_closeWhenStopped = true;
        StoredSettings settings;
        settings.setValue("window/geometry", saveGeometry());
        settings.setValue("window/state", saveState());
        // Trailers are written before the window goes, so that the files stay playable: the
        // window closes again once the outputs have stopped, or after kCloseWaitMs whatever
        // they do, and the event loop runs on meanwhile.
        if (m_engine->outputsActive()) {
            connect(m_engine, &Engine::outputsStopped, this, &QWidget::close, Qt::QueuedConnection);
            connect(m_engine, &Engine::outputsFailed, this, &QWidget::close, Qt::QueuedConnection);
            QTimer::singleShot(kCloseWaitMs, this, [this] {
                m_closeWaitOver = true;
                close();
            });
            m_engine->stopOutputs();
        }
    }
    if (m_engine->outputsActive() && !m_closeWaitOver) {
        event->ignore();
        return;
    }
    showOutputsRunning(false);
    event->accept();
}

void MainWindow::openOutputFolder()
{
    const QString folder = recordingDirectory();
    QDir().mkpath(folder);
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(folder)))
        QMessageBox::warning(this, tr("Output Folder"), tr("Unable to open the output folder."));
}

void MainWindow::showAbout()
{
    QMessageBox::about(this, tr("About Selvane"),
                       tr("Selvane %1\nLive video mixer: four input channels, overlays, audio "
                          "mixing, recording and live streaming.")
                           .arg(SELVANE_VERSION_STRING));
}
