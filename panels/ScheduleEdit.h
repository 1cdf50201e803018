#pragma once

// One edit of the schedule editor as an undo command: the rows of both kinds and the timeline
// origin before and after it, and the row to choose after either. Adding, editing, removing,
// moving and clearing clips, importing a file and changing the origin are each one command;
// consecutive changes of the origin merge into one.
//
// GUI thread only; pushed on the Program Schedule window's undo stack, which calls redo and
// undo. Emits nothing.

#include "panels/ClipDialogs.h"

#include <QDateTime>
#include <QList>
#include <QUndoCommand>
#include <functional>

namespace selvane {

// What the schedule editor holds.
struct ScheduleEditorState
{
    QList<ScheduleBaseRow> base;
    QList<ScheduleOverlayRow> overlay;
    QDateTime origin;
};

// The row chosen with a state: of the overlay table or the base table; -1 for none.
struct ScheduleChoice
{
    bool overlay = false;
    int row = -1;
};

class ScheduleEdit : public QUndoCommand
{
public:
    using Apply = std::function<void(const ScheduleEditorState &, ScheduleChoice)>;

    ScheduleEdit(const QString &text, ScheduleEditorState before, ScheduleChoice beforeChoice,
                 ScheduleEditorState after, ScheduleChoice afterChoice, Apply apply,
                 bool originOnly = false);

    void redo() override;
    void undo() override;
    int id() const override;
    bool mergeWith(const QUndoCommand *other) override;

private:
    ScheduleEditorState m_before;
    ScheduleChoice m_beforeChoice;
    ScheduleEditorState m_after;
    ScheduleChoice m_afterChoice;
    Apply m_apply;
    bool m_originOnly = false;
};

} // namespace selvane
