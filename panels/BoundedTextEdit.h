#pragma once

// A plain text field that holds at most a set number of characters, as a line edit's maximum
// length does: a paste is cut to the room left before it is laid out (a pasted book never
// reaches the layout), and typing stops at the limit. `whenCut` hears how many characters were
// left out. GUI thread.

#include <QMimeData>
#include <QPlainTextEdit>
#include <functional>

namespace selvane {

class BoundedTextEdit : public QPlainTextEdit
{
public:
    BoundedTextEdit(qsizetype maxLength, QWidget *parent)
        : QPlainTextEdit(parent), m_maxLength(maxLength)
    {
        connect(this, &QPlainTextEdit::textChanged, this, [this] {
            const QString text = toPlainText();
            if (text.size() <= m_maxLength)
                return;
            QTextCursor cursor(document());
            cursor.setPosition(int(m_maxLength));
            cursor.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
            cursor.removeSelectedText();
            if (whenCut)
                whenCut(text.size() - m_maxLength);
        });
    }

    std::function<void(qsizetype leftOut)> whenCut;

protected:
    void insertFromMimeData(const QMimeData *source) override
    {
        if (!source->hasText())
            return QPlainTextEdit::insertFromMimeData(source);
        const qsizetype room = std::max<qsizetype>(
            0, m_maxLength - (toPlainText().size() - textCursor().selectedText().size()));
        QString text = source->text();
        if (text.size() <= room)
            return QPlainTextEdit::insertFromMimeData(source);
        const qsizetype leftOut = text.size() - room;
        text.truncate(room);
        insertPlainText(text);
        if (whenCut)
            whenCut(leftOut);
    }

private:
    const qsizetype m_maxLength;
};

} // namespace selvane
