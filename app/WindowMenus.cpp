#include "app/WindowMenus.h"

#include <QAction>
#include <QActionGroup>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>

namespace selvane {

WindowMenus::WindowMenus(QMenuBar *bar, QObject *parent) : QObject(parent)
{
    file = bar->addMenu(QString());
    exportDrawing = file->addAction(QString());
    openOutputFolder = file->addAction(QString());
    exit = file->addAction(QString());
    exit->setShortcut(QKeySequence::Quit);

    // Undo and Redo of what the window edits, added by the editors as they are made.
    edit = bar->addMenu(QString());

    // The program row: Take 1-4 (keys 1-4, as on a switcher's program row) and the outputs.
    program = bar->addMenu(QString());
    for (std::size_t c = 0; c < take.size(); ++c) {
        take[c] = program->addAction(QString());
        take[c]->setObjectName(QStringLiteral("take%1Action").arg(c + 1));
        take[c]->setShortcut(QKeySequence(Qt::Key_1 + int(c)));
    }
    program->addSeparator();
    for (std::size_t c = 0; c < preview.size(); ++c) {
        preview[c] = program->addAction(QString());
        preview[c]->setObjectName(QStringLiteral("preview%1Action").arg(c + 1));
        preview[c]->setShortcut(QKeySequence(Qt::SHIFT | (Qt::Key_1 + int(c))));
    }
    takePreview = program->addAction(QString());
    takePreview->setObjectName("takePreviewAction");
    takePreview->setShortcuts({QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)});
    cutPreview = program->addAction(QString());
    cutPreview->setObjectName("cutPreviewAction");
    cutPreview->setShortcut(QKeySequence(Qt::Key_Space));
    fadeToBlack = program->addAction(QString());
    fadeToBlack->setObjectName("fadeToBlackAction");
    fadeToBlack->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_B));
    program->addSeparator();
    startOutputs = program->addAction(QString());
    startOutputs->setObjectName("startOutputsAction");
    startOutputs->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    stopOutputs = program->addAction(QString());
    stopOutputs->setObjectName("stopOutputsAction");
    stopOutputs->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R));
    stopOutputs->setEnabled(false);

    view = bar->addMenu(QString());
    drawingTools = view->addAction(QString());
    drawingTools->setCheckable(true);
    resetLayout = view->addAction(QString());
    multiview = view->addAction(QString());
    multiview->setObjectName("multiviewAction");
    multiview->setCheckable(true);
    multiview->setShortcut(QKeySequence(Qt::Key_F10));

    tools = bar->addMenu(QString());
    scheduling = tools->addAction(QString());
    proxy = tools->addAction(QString());

    help = bar->addMenu(QString());
    language = help->addMenu(QString());
    english = language->addAction(QStringLiteral("English"));
    chinese = language->addAction(QStringLiteral("中文"));
    about = help->addAction(QString());
    m_languages = new QActionGroup(this);
    for (QAction *action : {english, chinese}) {
        action->setCheckable(true);
        m_languages->addAction(action);
    }
}

void WindowMenus::retranslate(bool chineseChosen)
{
    file->setTitle(tr("&File"));
    exportDrawing->setText(tr("Export Drawing..."));
    openOutputFolder->setText(tr("Open Output Folder"));
    exit->setText(tr("E&xit"));
    edit->setTitle(tr("&Edit"));
    program->setTitle(tr("&Program"));
    for (std::size_t c = 0; c < take.size(); ++c)
        take[c]->setText(tr("Take Channel %1").arg(c + 1));
    for (std::size_t c = 0; c < preview.size(); ++c)
        preview[c]->setText(tr("Preview Channel %1").arg(c + 1));
    takePreview->setText(tr("Take Preview"));
    cutPreview->setText(tr("Cut to Preview"));
    fadeToBlack->setText(tr("Fade to Black"));
    startOutputs->setText(tr("Start Outputs"));
    stopOutputs->setText(tr("Stop Outputs"));
    view->setTitle(tr("&View"));
    drawingTools->setText(tr("Drawing Tools"));
    resetLayout->setText(tr("Reset Workspace Layout"));
    multiview->setText(tr("Multiview"));
    tools->setTitle(tr("&Tools"));
    scheduling->setText(tr("Program Scheduling..."));
    proxy->setText(tr("Network Proxy..."));
    help->setTitle(tr("&Help"));
    language->setTitle(tr("Language"));
    about->setText(tr("About Selvane"));
    (chineseChosen ? chinese : english)->setChecked(true);
}

} // namespace selvane
