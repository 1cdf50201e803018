#pragma once

// The mixer window: it owns the panels (as docks around the central preview area) and wires them
// to the engine. It decides the language, the window frame and the workspace layout; media
// behaviour lives in the engine. GUI thread only.

#include <QMainWindow>

#include <array>

namespace selvane {
class Engine;
}
class QAction;
class QActionGroup;
class QDockWidget;
class QLabel;
class QMenu;

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

    // Dock identifiers in their fixed order; see dockTitle().
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
    QDockWidget *dock(DockId id) const { return m_docks[id]; }
    selvane::Engine *engine() const { return m_engine; }

public slots:
    void openOutputFolder();
    void resetWorkspaceLayout();
    void showAbout();

signals:
    void programArrangementRunningChanged(bool running);

protected:
    void changeEvent(QEvent *event) override;

private:
    void createMenus();
    void createDocks();
    void connectEngine();
    void retranslateUi();
    static QString dockTitle(DockId id);

    bool m_chinese = false;
    selvane::Engine *m_engine = nullptr;
    QLabel *m_previewArea = nullptr;
    std::array<QDockWidget *, DockCount> m_docks{};

    QMenu *m_fileMenu = nullptr;
    QMenu *m_viewMenu = nullptr;
    QMenu *m_toolsMenu = nullptr;
    QMenu *m_helpMenu = nullptr;
    QMenu *m_languageMenu = nullptr;
    QAction *m_exportDrawingAction = nullptr;
    QAction *m_openOutputFolderAction = nullptr;
    QAction *m_exitAction = nullptr;
    QAction *m_drawingToolsAction = nullptr;
    QAction *m_resetLayoutAction = nullptr;
    QAction *m_schedulingAction = nullptr;
    QAction *m_proxyAction = nullptr;
    QAction *m_englishAction = nullptr;
    QAction *m_chineseAction = nullptr;
    QAction *m_aboutAction = nullptr;
    QActionGroup *m_languageGroup = nullptr;
};
