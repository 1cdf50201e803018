#include "panels/ScheduleEdit.h"

namespace selvane {

ScheduleEdit::ScheduleEdit(const QString &text, ScheduleEditorState before,
                           ScheduleChoice beforeChoice, ScheduleEditorState after,
                           ScheduleChoice afterChoice, Apply apply, bool originOnly)
    : QUndoCommand(text), m_before(std::move(before)), m_beforeChoice(beforeChoice),
      m_after(std::move(after)), m_afterChoice(afterChoice), m_apply(std::move(apply)),
      m_originOnly(originOnly)
{
}

void ScheduleEdit::redo()
{
    m_apply(m_after, m_afterChoice);
}

void ScheduleEdit::undo()
{
    m_apply(m_before, m_beforeChoice);
}

int ScheduleEdit::id() const
{
    // Only changes of the origin merge; every other edit stands on its own.
    return m_originOnly ? 1 : -1;
}

bool ScheduleEdit::mergeWith(const QUndoCommand *other)
{
    const auto *next = static_cast<const ScheduleEdit *>(other);
    if (!m_originOnly || !next->m_originOnly)
        return false;
    m_after = next->m_after;
    m_afterChoice = next->m_afterChoice;
    return true;
}

} // namespace selvane
