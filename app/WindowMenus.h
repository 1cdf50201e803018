#pragma once

// The main window's menus and their actions: File, Edit (filled by what the window edits),
// Program (Take Channel 1-4 on keys 1-4, Preview Channel 1-4 on Shift+1-4, Take on Enter, Cut
// on Space, Fade to Black on Ctrl+B, Start Outputs Ctrl+R, Stop Outputs Ctrl+Shift+R),
// View (Drawing Tools, Reset Workspace Layout, Multiview on F10), Tools and Help with the language
// choice. It makes them on the window's menu bar and gives them their keys and words; the window
// connects what they do and shares the actions with the panels' buttons.
//
// GUI thread only. Emits nothing beyond the actions' own signals.

#include <QObject>
#include <array>

class QAction;
class QActionGroup;
class QMenu;
class QMenuBar;

namespace selvane {

class WindowMenus : public QObject
{
    Q_OBJECT

public:
    WindowMenus(QMenuBar *bar, QObject *parent);

    // Every word again, in the language now chosen (`chinese` ticks the language).
    void retranslate(bool chinese);

    QMenu *file = nullptr;
    QMenu *edit = nullptr;
    QMenu *program = nullptr;
    QMenu *view = nullptr;
    QMenu *tools = nullptr;
    QMenu *help = nullptr;
    QMenu *language = nullptr;

    QAction *exportDrawing = nullptr;
    QAction *openOutputFolder = nullptr;
    QAction *exit = nullptr;
    std::array<QAction *, 4> take{};
    std::array<QAction *, 4> preview{};
    QAction *takePreview = nullptr;
    QAction *cutPreview = nullptr;
    QAction *fadeToBlack = nullptr;
    QAction *startOutputs = nullptr;
    QAction *stopOutputs = nullptr;
    QAction *drawingTools = nullptr;
    QAction *resetLayout = nullptr;
    QAction *multiview = nullptr;
    QAction *scheduling = nullptr;
    QAction *proxy = nullptr;
    QAction *english = nullptr;
    QAction *chinese = nullptr;
    QAction *about = nullptr;

private:
    QActionGroup *m_languages = nullptr;
};

} // namespace selvane
