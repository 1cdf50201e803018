#include "app/MainWindow.h"

#include "Version.h"
#include "app/Language.h"
#include "app/OperatorTexts.h"
#include "engine/Engine.h"
#include "app/OutputFolder.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QDebug>
#include <QDesktopServices>
#include <QDir>
#include <QDockWidget>
#include <QEvent>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPixmap>
#include <QStatusBar>
#include <QTimer>
#include <QUrl>

MainWindow::MainWindow(QWidget *parent) : QMainWindow(parent)
{
    m_chinese = selvane::loadChineseLanguageFlag();
    selvane::installUiTranslator(m_chinese);

    // The engine: pipeline, overlays and the preview audio mixer on its own thread.
    m_engine = new selvane::Engine(this);
    m_engine->startAudio();
    connectEngine();

    setObjectName("MainWindow");
    setWindowTitle("Selvane");
    setDockOptions(QMainWindow::AnimatedDocks | QMainWindow::AllowNestedDocks |
                   QMainWindow::AllowTabbedDocks);

    // The central area is the program preview; until a program runs it shows the logo.
    m_previewArea = new QLabel(this);
    m_previewArea->setObjectName("programPreviewArea");
    m_previewArea->setAlignment(Qt::AlignCenter);
    m_previewArea->setMinimumSize(320, 180);
    m_previewArea->setPixmap(QPixmap(":/resources/images/logo.png")
                                 .scaled(160, 160, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    m_previewArea->setStyleSheet("QLabel#programPreviewArea { background: #101318; }");
    setCentralWidget(m_previewArea);

    createMenus();
    createDocks();
    showMaximized();
    resetWorkspaceLayout();
    retranslateUi();
    qApp->installEventFilter(this);
}

MainWindow::~MainWindow()
{
    // The audio thread stops within fixed limits before anything else goes.
    m_engine->shutdownAudio();
}

void MainWindow::connectEngine()
{
    using namespace selvane;
    connect(m_engine, &Engine::channelError, this,
            [this](int channel, SourceError error, const QString &) {
                statusBar()->showMessage(
                    tr("Channel %1: %2").arg(channel + 1).arg(sourceErrorText(error)), 10000);
            });
    connect(m_engine, &Engine::outputsFailed, this, [this](OutputFailure failure) {
        const QString text = outputFailureText(failure);
        qWarning().noquote() << "programOutputTransportFailed:" << text;
        statusBar()->showMessage(text, 15000);
    });
}

void MainWindow::createMenus()
{
    m_fileMenu = menuBar()->addMenu(QString());
    m_exportDrawingAction = m_fileMenu->addAction(QString());
    m_openOutputFolderAction = m_fileMenu->addAction(QString());
    m_exitAction = m_fileMenu->addAction(QString());

    m_viewMenu = menuBar()->addMenu(QString());
    m_drawingToolsAction = m_viewMenu->addAction(QString());
    m_resetLayoutAction = m_viewMenu->addAction(QString());

    m_toolsMenu = menuBar()->addMenu(QString());
    m_schedulingAction = m_toolsMenu->addAction(QString());
    m_proxyAction = m_toolsMenu->addAction(QString());

    m_helpMenu = menuBar()->addMenu(QString());
    m_languageMenu = m_helpMenu->addMenu(QString());
    m_englishAction = m_languageMenu->addAction(QString());
    m_chineseAction = m_languageMenu->addAction(QString());
    m_aboutAction = m_helpMenu->addAction(QString());

    m_languageGroup = new QActionGroup(this);
    for (QAction *action : {m_englishAction, m_chineseAction}) {
        action->setCheckable(true);
        m_languageGroup->addAction(action);
    }
    m_exitAction->setShortcut(QKeySequence::Quit);

    // The drawing canvas, the schedule window and the proxy settings are separate tools that
    // are not part of this build yet; their entries stay visible but cannot be chosen.
    for (QAction *action : {m_exportDrawingAction, m_drawingToolsAction, m_schedulingAction,
                            m_proxyAction})
        action->setEnabled(false);

    connect(m_openOutputFolderAction, &QAction::triggered, this, &MainWindow::openOutputFolder);
    connect(m_exitAction, &QAction::triggered, this, &QWidget::close);
    connect(m_resetLayoutAction, &QAction::triggered, this, &MainWindow::resetWorkspaceLayout);
    connect(m_englishAction, &QAction::triggered, this, [this] { setLanguage(false); });
    connect(m_chineseAction, &QAction::triggered, this, [this] { setLanguage(true); });
    connect(m_aboutAction, &QAction::triggered, this, &MainWindow::showAbout);
}

void MainWindow::createDocks()
{
    static const char *const kObjectNames[DockCount] = {
        "outputSettingsDock", "outputPreviewDock", "audioMixerDock",
        "textOverlayDock",    "videoOverlayDock",  "imagePlaybackDock"};
    for (int i = 0; i < DockCount; ++i) {
        auto *dockWidget = new QDockWidget(this);
        dockWidget->setObjectName(kObjectNames[i]);
        auto *body = new QWidget(dockWidget);
        body->setMinimumSize(220, 120);
        dockWidget->setWidget(body);
        m_docks[i] = dockWidget;
    }
}

QString MainWindow::dockTitle(DockId id)
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

void MainWindow::resetWorkspaceLayout()
{
    // Default workspace: output controls on the left, the output preview and the mixer on the
    // right, the overlay and playback panels tabbed along the bottom.
    const std::array<std::pair<DockId, Qt::DockWidgetArea>, DockCount> placement{{
        {OutputSettingsDock, Qt::LeftDockWidgetArea},
        {OutputPreviewDock, Qt::RightDockWidgetArea},
        {AudioMixerDock, Qt::RightDockWidgetArea},
        {TextOverlayDock, Qt::BottomDockWidgetArea},
        {VideoOverlayDock, Qt::BottomDockWidgetArea},
        {ImagePlaybackDock, Qt::BottomDockWidgetArea},
    }};
    for (const auto &[id, area] : placement) {
        QDockWidget *dockWidget = m_docks[id];
        dockWidget->setFloating(false);
        addDockWidget(area, dockWidget);
        dockWidget->show();
    }
    splitDockWidget(m_docks[OutputPreviewDock], m_docks[AudioMixerDock], Qt::Vertical);
    tabifyDockWidget(m_docks[TextOverlayDock], m_docks[VideoOverlayDock]);
    tabifyDockWidget(m_docks[VideoOverlayDock], m_docks[ImagePlaybackDock]);
    m_docks[TextOverlayDock]->raise();
}

void MainWindow::setLanguage(bool chinese)
{
    if (chinese == m_chinese)
        return;
    m_chinese = chinese;
    selvane::storeLanguageFlag(chinese);
    if (!selvane::installUiTranslator(chinese))
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
    m_fileMenu->setTitle(tr("&File"));
    m_exportDrawingAction->setText(tr("Export Drawing..."));
    m_openOutputFolderAction->setText(tr("Open Output Folder"));
    m_exitAction->setText(tr("E&xit"));
    m_viewMenu->setTitle(tr("&View"));
    m_drawingToolsAction->setText(tr("Drawing Tools"));
    m_resetLayoutAction->setText(tr("Reset Workspace Layout"));
    m_toolsMenu->setTitle(tr("&Tools"));
    m_schedulingAction->setText(tr("Program Scheduling..."));
    m_proxyAction->setText(tr("Network Proxy..."));
    m_helpMenu->setTitle(tr("&Help"));
    m_languageMenu->setTitle(tr("Language"));
    m_englishAction->setText(QStringLiteral("English"));
    m_chineseAction->setText(QStringLiteral("中文"));
    m_aboutAction->setText(tr("About Selvane"));
    (m_chinese ? m_chineseAction : m_englishAction)->setChecked(true);
    for (int i = 0; i < DockCount; ++i)
        m_docks[i]->setWindowTitle(dockTitle(static_cast<DockId>(i)));
}

void MainWindow::openOutputFolder()
{
    const QString folder = selvane::recordingDirectory();
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
